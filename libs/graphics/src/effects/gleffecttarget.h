#pragma once
// One single-sampled offscreen target of the effect passes: a colour texture (one texel per
// pixel of the viewport) in a framebuffer, with a depth-stencil texture when asked for (a texture
// rather than a renderbuffer, so a window's depth can be copied into it whatever its format).
// Storage is made on first use and remade only when the size changes, so a scene that never uses
// an effect never pays for its target. Each object carries a label for GL debuggers.
#include "glstate/globjectname.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {

class glEffectTarget {
public:
    enum class eFormat { coverage, color };  ///< GL_R8, GL_RGBA8

    /// `label` names the framebuffer ("maskFbo", ...); the texture gets it with "Tex" appended.
    glEffectTarget(const char* label, eFormat format, bool withDepth);

    /// Storage for width × height; false when the driver could not make a complete framebuffer
    /// (zero or too large a size). Needs the owning context current.
    bool bringTo(int width, int height);
    GLuint framebuffer() const { return mFramebuffer.get(); }
    GLuint texture() const { return mTexture.get(); }
    GLuint depthTexture() const { return mDepth.get(); }
    int width() const { return mWidth; }
    int height() const { return mHeight; }
    /// Deletes the names; the owning context must be current.
    void release();
    /// Forgets them: their context is gone and took them along.
    void abandon();

private:
    const char* mLabel;
    eFormat mFormat;
    bool mWithDepth;
    int mWidth = 0;
    int mHeight = 0;
    bool mComplete = false;
    glTextureName mTexture;
    glTextureName mDepth;
    glFramebufferName mFramebuffer;
};

} // namespace oxGraphics::openGL
