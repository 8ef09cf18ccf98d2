#pragma once
// The first step of a frame: clears colour and depth, then paints the background: a vertical
// gradient between the scene's top and bottom colours and, over it, the background image (the
// temporary one while it is set). The gradient is drawn by the background program when there is
// one, otherwise fixed-function; the image is always drawn fixed-function.
//
// GL state afterwards: as before the call, except the clear colour.
#include "glstate/globjectname.h"
#include "oxcolor.h"
#include "resources/oxglscreenquad.h"
#include "oxshader.h"

#include <memory>
#include <vector>

namespace oxGraphics::openGL {

class glBackgroundPainter {
public:
    glBackgroundPainter() = default;
    glBackgroundPainter(const glBackgroundPainter&) = delete;
    glBackgroundPainter& operator=(const glBackgroundPainter&) = delete;

    /// Black with alpha 0 instead of the colours; an image is still drawn.
    void setTransparent(bool transparent) { mTransparent = transparent; }
    /// `format` is the number of bytes per pixel, 3 (RGB) or 4 (RGBA); rows packed, top row
    /// first. Pixels that cannot be an image (null with a size, a size of 0, another format)
    /// switch the image off rather than show garbage; null pixels only change `use`.
    void setImage(bool use, const unsigned char* pixels, int width, int height, int format);
    void setTemporaryImage(bool use, const unsigned char* pixels, int width, int height, int format);
    bool temporaryImageUsed() const { return mTemporary.used && !mTemporary.pixels.empty(); }
    /// 0 opaque .. 1 invisible (clamped).
    void setImageTransparency(double transparency);
    /// 0 stretches over the viewport, 1 fits inside keeping the aspect, 2 keeps the pixel size.
    void setImageSizing(int sizing) { mSizing = sizing; }
    /// For sizing 1 and 2: 0 centre, 1 top-left, 2 top-right, 3 bottom-left, 4 bottom-right.
    void setImageAlignment(int alignment) { mAlignment = alignment; }

    /// Clears and paints a width × height viewport; `program` is the background program or null.
    void paint(const ox::rgbColor& top, const ox::rgbColor& bottom, int width, int height, shaderProgram* program);
    /// Deletes the image textures and the quad; the owning context must be current.
    void release();
    /// Forgets them without GL calls: their context is gone and took them along.
    void abandon();

private:
    struct image_t {
        bool used = false;
        std::vector<unsigned char> pixels;  // tightly packed rows, top row first
        int width = 0, height = 0, channels = 0;
        glTextureName texture;              // uploaded on first paint
        bool dirty = false;
    };

    static void assign(image_t& image, bool use, const unsigned char* pixels, int width, int height, int format);
    void paintGradient(const ox::rgbColor& top, const ox::rgbColor& bottom, shaderProgram* program);
    void paintImage(image_t& image, int width, int height) const;

    bool mTransparent = false;
    image_t mImage;
    image_t mTemporary;
    double mImageTransparency = 0.0;
    int mSizing = 0;
    int mAlignment = 0;
    std::unique_ptr<glScreenQuad> mQuad;  // vertex arrays are not shared: made in the scene's context
};

} // namespace oxGraphics::openGL
