#include "gloffscreentargets.h"

#include "glstate/glscopedstate.h"

#include <GL/glew.h>

#include <algorithm>

namespace oxGraphics::openGL {

glOffscreenTargets::buildResult_t glOffscreenTargets::build(int width, int height, int samples,
                                                             const completenessCheck& check) {
    release(); // built twice without a release in between, the old targets would leak
    buildResult_t result;

    // Resolve target: a rectangle texture. A pixel buffer the host left bound would otherwise be
    // read as the texture's data.
    {
        const glPixelStore noUpload(glPixelStore::eDirection::unpack);
        mResolveTexture = glTextureName::generate();
        glBindTexture(GL_TEXTURE_RECTANGLE, mResolveTexture.get());
        glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_RECTANGLE, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glBindTexture(GL_TEXTURE_RECTANGLE, 0);
    }
    mResolveFbo = glFramebufferName::generate();
    glBindFramebufferEXT(GL_FRAMEBUFFER, mResolveFbo.get());
    glFramebufferTexture2DEXT(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, mResolveTexture.get(), 0);
    result.resolveComplete = check();

    // A count above what the driver can store would leave the target incomplete and every frame
    // black; the driver may grant fewer samples than asked, so ask for at most its maximum.
    GLint maxSamples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &maxSamples);
    const GLsizei storedSamples = std::clamp(samples, 0, std::max(maxSamples, 0));
    mMultisampledFbo = glFramebufferName::generate();
    glBindFramebufferEXT(GL_FRAMEBUFFER, mMultisampledFbo.get());
    mColorRenderbuffer = glRenderbufferName::generate();
    glBindRenderbufferEXT(GL_RENDERBUFFER, mColorRenderbuffer.get());
    glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, storedSamples, GL_RGBA8, width, height);
    glGetRenderbufferParameterivEXT(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &mActualSamples);
    glFramebufferRenderbufferEXT(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mColorRenderbuffer.get());
    mDepthStencilRenderbuffer = glRenderbufferName::generate();
    glBindRenderbufferEXT(GL_RENDERBUFFER, mDepthStencilRenderbuffer.get());
    glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, storedSamples, GL_DEPTH24_STENCIL8, width, height);
    glGetRenderbufferParameterivEXT(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &mActualSamples);
    glFramebufferRenderbufferEXT(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                                 mDepthStencilRenderbuffer.get());
    glBindRenderbufferEXT(GL_RENDERBUFFER, 0);
    result.multisampledComplete = check();

    glBindFramebufferEXT(GL_FRAMEBUFFER, 0);
    mWidth = width;
    mHeight = height;
    return result;
}

void glOffscreenTargets::release() {
    // In the order the targets are released in: framebuffers, renderbuffers, then the texture.
    mMultisampledFbo.reset();
    mResolveFbo.reset();
    mColorRenderbuffer.reset();
    mDepthStencilRenderbuffer.reset();
    mResolveTexture.reset();
    mActualSamples = 0; // nothing is left to have samples
    mWidth = mHeight = 0;
}

void glOffscreenTargets::abandon() {
    mMultisampledFbo.abandon();
    mResolveFbo.abandon();
    mColorRenderbuffer.abandon();
    mDepthStencilRenderbuffer.abandon();
    mResolveTexture.abandon();
}

void glOffscreenTargets::resolve(int width, int height) const {
    glBindFramebufferEXT(GL_READ_FRAMEBUFFER, mMultisampledFbo.get());
    glBindFramebufferEXT(GL_DRAW_FRAMEBUFFER, mResolveFbo.get());
    glBlitFramebufferEXT(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebufferEXT(GL_FRAMEBUFFER, 0);
}

} // namespace oxGraphics::openGL
