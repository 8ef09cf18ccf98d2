#pragma once
// Where the background painter puts its image in the viewport. Kept apart from the GL drawing so
// the sizing and alignment are checked on their own.
//
// Pure arithmetic: no GL.
#include <algorithm>

namespace oxGraphics::openGL {

/// A rectangle in viewport pixels, measured from the bottom-left corner (GL's window y).
struct imageRect_t {
    double left = 0, bottom = 0, width = 0, height = 0;
    bool operator==(const imageRect_t&) const = default;
};

/// The rectangle an image of imageWidth × imageHeight pixels covers in a viewport of
/// viewportWidth × viewportHeight; a viewport side below one pixel counts as one.
/// `sizing`: 0 stretches over the viewport, 1 fits inside keeping the aspect, 2 keeps the pixel
/// size (others stretch). `alignment`, for sizing other than 0: 0 centre, 1 top-left, 2 top-right,
/// 3 bottom-left, 4 bottom-right (others centre). An image larger than the viewport overhangs it.
inline imageRect_t backgroundImageRect(int imageWidth, int imageHeight, int viewportWidth, int viewportHeight,
                                       int sizing, int alignment) {
    const double vw = std::max(viewportWidth, 1), vh = std::max(viewportHeight, 1);
    double w = vw, h = vh;
    if (sizing == 1) {
        const double scale = std::min(vw / imageWidth, vh / imageHeight);
        w = imageWidth * scale;
        h = imageHeight * scale;
    } else if (sizing == 2) {
        w = imageWidth;
        h = imageHeight;
    }
    double left = (vw - w) / 2, bottom = (vh - h) / 2;
    if (sizing != 0) {
        if (alignment == 1 || alignment == 3) left = 0;
        if (alignment == 2 || alignment == 4) left = vw - w;
        if (alignment == 1 || alignment == 2) bottom = vh - h;
        if (alignment == 3 || alignment == 4) bottom = 0;
    }
    return {left, bottom, w, h};
}

} // namespace oxGraphics::openGL
