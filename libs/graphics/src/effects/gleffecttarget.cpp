#include "gleffecttarget.h"

#include "glstate/glscopedstate.h"

#include <string>

namespace oxGraphics::openGL {
namespace {

void label(GLenum identifier, GLuint name, const std::string& text) {
    if (name != 0 && GLEW_KHR_debug) glObjectLabel(identifier, name, -1, text.c_str());
}

// On the texture bound to GL_TEXTURE_2D of the active unit: one texel per pixel, never wrapped.
void setNearestClamped() {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

} // namespace

glEffectTarget::glEffectTarget(const char* label, eFormat format, bool withDepth)
    : mLabel(label), mFormat(format), mWithDepth(withDepth) {}

bool glEffectTarget::bringTo(int width, int height) {
    if (mFramebuffer && width == mWidth && height == mHeight) return mComplete;
    release();
    mWidth = width;
    mHeight = height;
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    // A size the driver cannot make would only raise GL errors; the effect is left out instead.
    if (width <= 0 || height <= 0 || width > largest || height > largest) return false;

    const glPixelStore unpack(glPixelStore::eDirection::unpack);  // a host's unpack buffer would be read
    mTexture = glTextureName::generate();
    {
        const glTextureBindingScope bound(GL_TEXTURE0, GL_TEXTURE_2D, mTexture.get());
        const GLenum internalFormat = mFormat == eFormat::coverage ? GL_R8 : GL_RGBA8;
        const GLenum format = mFormat == eFormat::coverage ? GL_RED : GL_RGBA;
        glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(internalFormat), width, height, 0, format, GL_UNSIGNED_BYTE,
                     nullptr);
        setNearestClamped();
    }
    if (mWithDepth) {
        mDepth = glTextureName::generate();
        const glTextureBindingScope bound(GL_TEXTURE0, GL_TEXTURE_2D, mDepth.get());
        glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH24_STENCIL8, width, height, 0, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8,
                     nullptr);
        setNearestClamped();
    }
    mFramebuffer = glFramebufferName::generate();
    const glFramebufferBindingScope bound(GL_DRAW_FRAMEBUFFER, mFramebuffer.get());
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mTexture.get(), 0);
    if (mWithDepth)
        glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_TEXTURE_2D, mDepth.get(), 0);
    mComplete = glCheckFramebufferStatus(GL_DRAW_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    label(GL_FRAMEBUFFER, mFramebuffer.get(), mLabel);
    label(GL_TEXTURE, mTexture.get(), std::string(mLabel) + "Tex");
    return mComplete;
}

void glEffectTarget::release() {
    mFramebuffer.reset();
    mDepth.reset();
    mTexture.reset();
    mComplete = false;
}

void glEffectTarget::abandon() {
    mFramebuffer.abandon();
    mDepth.abandon();
    mTexture.abandon();
    mComplete = false;
}

} // namespace oxGraphics::openGL
