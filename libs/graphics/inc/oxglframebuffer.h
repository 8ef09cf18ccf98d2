#pragma once
// Rendering a scene into an offscreen image of a chosen size and reading the pixels back
// (thumbnails, screenshots, headless rendering).
//
//     auto target = oxGraphics::openGL::glFrameBuffer::create(view, 800, 600);
//     target->renderBefore();
//     view->draw();
//     target->renderAfter();
//     std::unique_ptr<char[]> bgra(target->writeToBuffer());  // 800 * 600 * 4 bytes, bottom row first
#include "oxgraphics_export.h"

#include "oxrefobj.h"
#include "oxrefptr.h"

#include <memory>

namespace oxGraphics {

class scene;

/// An offscreen image a scene can be drawn into and read back from.
class OX_GRAPHICS_API iFrameBuffer : public virtual ox::iRefObj {
public:
    virtual void renderBefore() const = 0;
    virtual void renderAfter() const = 0;
    /// width·height·4 bytes B, G, R, A, rows from the bottom of the image upward, in a new array
    /// the caller frees with delete[]; null when the object is inert.
    virtual char* writeToBuffer() const = 0;
    virtual int width() const = 0;
    virtual int height() const = 0;
};

namespace openGL {

class glScene;

/// When the scene renders into its own offscreen targets it reuses them; otherwise it makes a
/// framebuffer with an RGBA8 texture and a depth-stencil renderbuffer of its own. Without a scene
/// or a context that can be made current the object is inert.
class OX_GRAPHICS_API glFrameBuffer final : public iFrameBuffer, public ox::refObj {
public:
    static ox::refPtr<glFrameBuffer> create(const ox::refPtr<glScene>& scene, int width, int height);
    static ox::refPtr<glFrameBuffer> create(const ox::refPtr<oxGraphics::scene>& scene, int width, int height);

    void renderBefore() const override;
    void renderAfter() const override;
    char* writeToBuffer() const override;
    int width() const override { return mWidth; }
    int height() const override { return mHeight; }
    /// Whether it made a framebuffer of its own (false when it reuses the scene's or is inert).
    bool ownsTargets() const;

private:
    glFrameBuffer(const ox::refPtr<glScene>& scene, int width, int height);
    ~glFrameBuffer() override;
    bool makeCurrent() const;
    unsigned int ownFramebuffer() const;   // 0 without one

    ox::refPtr<glScene> mScene;
    int mWidth;
    int mHeight;
    struct ownedTargets;   // the GL names of its own framebuffer, when it made one
    std::unique_ptr<ownedTargets> mOwned;
};

} // namespace openGL
} // namespace oxGraphics
