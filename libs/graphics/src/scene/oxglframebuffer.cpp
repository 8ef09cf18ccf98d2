#include "oxglframebuffer.h"

#include "glpixelreadback.h"
#include "glstate/globjectname.h"
#include "glstate/glscopedstate.h"
#include "oxglscene.h"
#include "oxscene.h"

#include <GL/glew.h>


namespace oxGraphics::openGL {

// Members die in reverse order: the attachments first, then the framebuffer that holds them.
struct glFrameBuffer::ownedTargets {
    glFramebufferName framebuffer = glFramebufferName::generate();
    glRenderbufferName depthStencil = glRenderbufferName::generate();
    glTextureName colorTexture = glTextureName::generate();

    void abandon() {
        colorTexture.abandon();
        depthStencil.abandon();
        framebuffer.abandon();
    }
};

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

    // Creation leaves the caller's bindings as they were.
    const glFramebufferBindingScope framebuffers;
    const glRenderbufferBindingScope renderbuffers;
    const glTextureBindingScope textures(GL_TEXTURE0, GL_TEXTURE_2D);
    const glBufferBindingScope noUnpackBuffer(GL_PIXEL_UNPACK_BUFFER, 0);   // else null would address it

    mOwned = std::make_unique<ownedTargets>();
    glBindFramebuffer(GL_FRAMEBUFFER, mOwned->framebuffer.get());
    glBindRenderbuffer(GL_RENDERBUFFER, mOwned->depthStencil.get());
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, mOwned->depthStencil.get());
    glBindTexture(GL_TEXTURE_2D, mOwned->colorTexture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mOwned->colorTexture.get(), 0);
}

glFrameBuffer::~glFrameBuffer() {
    // The owners delete in whichever context is current: ours, or, when ours is gone and took its
    // names along, none at all.
    if (mOwned && !makeCurrent()) mOwned->abandon();
}

bool glFrameBuffer::ownsTargets() const { return mOwned != nullptr; }

GLuint glFrameBuffer::ownFramebuffer() const { return mOwned ? mOwned->framebuffer.get() : 0; }

bool glFrameBuffer::makeCurrent() const {
    return mScene && mScene->glContext() && mScene->glContext()->makeCurrent();
}

void glFrameBuffer::renderBefore() const {
    if (!makeCurrent()) return;
    const offscreenTargets_t targets = mScene->offscreenTargets();
    glBindFramebuffer(GL_FRAMEBUFFER, targets.multisampledFramebuffer != 0 ? targets.multisampledFramebuffer : ownFramebuffer());
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
    return readBgraPixels(ownFramebuffer(), mWidth, mHeight, mWidth, mHeight);
}

} // namespace oxGraphics::openGL
