#pragma once
// The texture manager on OpenGL objects (glTexture, glRenderbuffer, glFbo). It keeps no state:
// every resource belongs to the context current when it is created.
#include "oxgraphics_export.h"
#include "oxtexturemanager.h"

namespace oxGraphics::openGL {

class OX_GRAPHICS_API glTextureManager : public oxGraphics::textureManager {
public:
    glTextureManager() = default;
    ~glTextureManager() override;

    ox::refPtr<iTexture> createTexture(const texDesc_t& desc) override;
    ox::refPtr<iRenderbuffer> createRenderbuffer(const rbDesc_t& desc) override;
    /// Without a colour texture in the list the framebuffer gets draw and read buffers GL_NONE.
    /// More than one depth texture raises the assertion "numDepthTextures <= 1" (each replaces
    /// the previous one) and the framebuffer is still checked and returned when complete.
    /// When no framebuffer can be generated (no context current) the empty pointer is
    /// dereferenced: the assertion "m_p != NULL" is raised and `false` thrown.
    ox::refPtr<iFbo> createFramebuffer(const std::vector<texAttachment_t>& textures,
                                       const ox::refPtr<iRenderbuffer>& depthRenderbuffer) override;
    void* currentContext() const override;
};

} // namespace oxGraphics::openGL
