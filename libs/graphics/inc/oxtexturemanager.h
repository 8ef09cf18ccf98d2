#pragma once
// textureManager: the factory through which the renderer obtains GPU resources and assembles
// framebuffer objects from descriptions. The OpenGL implementation is glTextureManager
// (oxgltexturemanager.h).
#include "oxgraphics_export.h"
#include "oxrefptr.h"
#include "oxtexture.h"

#include <cstdint>
#include <vector>

namespace oxGraphics {

/// One texture of a framebuffer description. Depth-format textures become the depth
/// attachment; any other texture becomes colour attachment `colorIndex`.
struct texAttachment_t {
    ox::refPtr<iTexture> texture;
    std::uint8_t colorIndex = 0;
};

/// Operations in slot order: destructor, createTexture, createRenderbuffer, createFramebuffer,
/// currentContext.
class OX_GRAPHICS_API textureManager {
public:
    virtual ~textureManager();
    virtual ox::refPtr<iTexture> createTexture(const texDesc_t& desc) = 0;
    virtual ox::refPtr<iRenderbuffer> createRenderbuffer(const rbDesc_t& desc) = 0;
    /// A complete framebuffer with the textures attached (in list order) and `depthRenderbuffer`,
    /// when given, as its depth attachment; unbound, with the bindings found before. Empty when
    /// the attachments do not make a complete framebuffer.
    virtual ox::refPtr<iFbo> createFramebuffer(const std::vector<texAttachment_t>& textures,
                                               const ox::refPtr<iRenderbuffer>& depthRenderbuffer) = 0;
    /// The native rendering context current on the calling thread; null when none is.
    virtual void* currentContext() const = 0;

protected:
    textureManager() = default;
    textureManager(const textureManager&) = default;
    textureManager& operator=(const textureManager&) = default;
};

} // namespace oxGraphics
