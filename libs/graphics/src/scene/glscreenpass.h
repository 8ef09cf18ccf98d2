#pragma once
// The frame's work in window pixels: the resolved frame shown over the whole viewport, and the
// rubber rectangles of rectangle selection.
#include "glstate/globjectname.h"

#include <array>
#include <vector>

namespace oxGraphics::openGL {

class glScreenPass {
public:
    /// Corners in window pixels, y counted downwards from the top: x1, y1, x2, y2.
    using rectangle_t = std::array<unsigned int, 4>;

    glScreenPass() = default;
    glScreenPass(const glScreenPass&) = delete;
    glScreenPass& operator=(const glScreenPass&) = delete;

    /// Clears, then draws the rectangle texture over the viewport with a textured quad compiled
    /// into a new display list and executed. The list alternates between two names of this
    /// pass, so the list of the frame before stays intact until the frame after.
    void showFrame(unsigned int rectangleTexture, int width, int height);
    /// The list the last frame was shown with (0 before the first).
    unsigned int lastList() const { return mLastList; }

    /// White outlines 2 pixels wide into the current draw buffer, lighting and depth test off
    /// for the duration; the polygon mode and draw buffer are not touched. Nothing at all
    /// happens for an empty list.
    static void drawRectangles(const std::vector<rectangle_t>& rectangles, int width, int height);
    /// One rectangle into the front buffer with XOR, so that drawing it again erases it.
    static void drawRectangleXor(const rectangle_t& rectangle, int width, int height);

    /// Deletes the lists (owning context current); abandon() forgets them without GL calls.
    void release();
    void abandon();

private:
    glDisplayListRange mQuadLists;  // two names the quads take turns in
    unsigned int mLastList = 0;
};

} // namespace oxGraphics::openGL
