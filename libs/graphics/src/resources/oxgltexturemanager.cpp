#include "oxgltexturemanager.h"

#include "oxassert.h"
#include "oxglcontext.h"
#include "oxgltexture.h"

#include <GL/glew.h>

#include <algorithm>

namespace oxGraphics {

textureManager::~textureManager() = default;

namespace openGL {

glTextureManager::~glTextureManager() = default;

ox::refPtr<iTexture> glTextureManager::createTexture(const texDesc_t& desc) { return glTexture::createTexture(desc); }

ox::refPtr<iRenderbuffer> glTextureManager::createRenderbuffer(const rbDesc_t& desc) {
    return glRenderbuffer::createRenderbuffer(desc);
}

ox::refPtr<iFbo> glTextureManager::createFramebuffer(const std::vector<texAttachment_t>& textures,
                                                     const ox::refPtr<iRenderbuffer>& depthRenderbuffer) {
    const bool noColorTexture = std::none_of(textures.begin(), textures.end(), [](const texAttachment_t& entry) {
        return entry.texture && !isDepthFormat(entry.texture->desc().format);
    });
    // The new framebuffer is bound, ready for its attachments.
    ox::refPtr<iFbo> fbo = glFbo::createFbo(noColorTexture);

    if (depthRenderbuffer) fbo->attachDepthRenderbuffer(depthRenderbuffer);

    int numDepthTextures = 0;
    for (const texAttachment_t& entry : textures) {
        if (!entry.texture) {
            OX_ASSERT(entry.texture);
            continue;
        }
        if (isDepthFormat(entry.texture->desc().format)) {
            fbo->attachDepthTexture(entry.texture);
            ++numDepthTextures;
        } else {
            fbo->attachColorTexture(entry.texture, entry.colorIndex);
        }
    }
    OX_ASSERT(numDepthTextures <= 1);

    if (noColorTexture) {
        glDrawBuffer(GL_NONE);
        glReadBuffer(GL_NONE);
    }

    const bool complete = fbo->isComplete();
    fbo->unbind();
    if (!complete) return {};
    return fbo;
}

void* glTextureManager::currentContext() const { return currentNativeContext(); }

} // namespace openGL
} // namespace oxGraphics
