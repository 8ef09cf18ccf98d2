#include "oxglframebuffer.h"

#include "glpixelreadback.h"
#include "oxglscene.h"
#include "oxscene.h"

#include <GL/glew.h>


namespace oxGraphics::openGL {

ox::refPtr<glFrameBuffer> glFrameBuffer::create(const ox::refPtr<glScene>& scene, int width, int height) {
    return ox::refPtr<glFrameBuffer>(new glFrameBuffer(scene, width, height));
}

ox::refPtr<glFrameBuffer> glFrameBuffer::create(const ox::refPtr<oxGraphics::scene>& scene, int width, int height) {
    ox::refPtr<glScene> renderer;
    if (scene) renderer = ox::dynamicRefCast<glScene>(scene->implementation());
    return create(renderer, width, height);
}

glFrameBuffer::glFrameBuffer(const ox::refPtr<glScene>& scene, int width, int height)
    : mScene(scene), mWidth(width), mHeight(height) {
    if (!makeCurrent() || width <= 0 || height <= 0) return;
    if (mScene->offscreenTargets().multisampledFramebuffer != 0) return; // the scene's targets serve

    GLint previousFramebuffer = 0, previousRenderbuffer = 0, previousTexture = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previousFramebuffer);
    glGetIntegerv(GL_RENDERBUFFER_BINDING, &previousRenderbuffer);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &previousTexture);

    glGenFramebuffers(1, &mFramebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, mFramebuffer);
    glGenRenderbuffers(1, &mDepthStencil);
    glBindRenderbuffer(GL_RENDERBUFFER, mDepthStencil);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, mDepthStencil);
    glGenTextures(1, &mColorTexture);
    glBindTexture(GL_TEXTURE_2D, mColorTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mColorTexture, 0);

    // Creation leaves the caller's bindings as they were.
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(previousTexture));
    glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(previousRenderbuffer));
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previousFramebuffer));
}

glFrameBuffer::~glFrameBuffer() {
    if (!makeCurrent()) return;
    if (mColorTexture != 0) glDeleteTextures(1, &mColorTexture);
    if (mDepthStencil != 0) glDeleteRenderbuffers(1, &mDepthStencil);
    if (mFramebuffer != 0) glDeleteFramebuffers(1, &mFramebuffer);
}

bool glFrameBuffer::makeCurrent() const {
    return mScene && mScene->glContext() && mScene->glContext()->makeCurrent();
}

void glFrameBuffer::renderBefore() const {
    if (!makeCurrent()) return;
    const offscreenTargets_t targets = mScene->offscreenTargets();
    glBindFramebuffer(GL_FRAMEBUFFER, targets.multisampledFramebuffer != 0 ? targets.multisampledFramebuffer : mFramebuffer);
    glPushAttrib(GL_VIEWPORT_BIT);
    glViewport(0, 0, mWidth, mHeight);
}

void glFrameBuffer::renderAfter() const {
    if (!makeCurrent()) return;
    glPopAttrib();
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    const offscreenTargets_t targets = mScene->offscreenTargets();
    if (targets.width > 0 && targets.height > 0) {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, targets.multisampledFramebuffer);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, targets.resolveFramebuffer);
        glBlitFramebuffer(0, 0, mWidth, mHeight, 0, 0, mWidth, mHeight, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }
}

char* glFrameBuffer::writeToBuffer() const {
    if (!makeCurrent() || mWidth <= 0 || mHeight <= 0) return nullptr;
    const offscreenTargets_t targets = mScene->offscreenTargets();
    if (targets.resolveFramebuffer != 0)
        return readBgraPixels(targets.resolveFramebuffer, mWidth, mHeight, targets.width, targets.height);
    return readBgraPixels(mFramebuffer, mWidth, mHeight, mWidth, mHeight);
}

} // namespace oxGraphics::openGL
