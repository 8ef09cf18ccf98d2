// Where the background image goes for each sizing and alignment, in viewport pixels from the
// bottom-left corner (no GL).
#include "scene/backgroundimagelayout.h"

#include <gtest/gtest.h>

namespace {

using oxGraphics::openGL::backgroundImageRect;
using oxGraphics::openGL::imageRect_t;

TEST(backgroundImageLayoutTest, sizingAndAlignmentPlaceTheImage) {
    enum { stretch, fit, pixels };
    enum { centre, topLeft, topRight, bottomLeft, bottomRight };
    const struct {
        int imageWidth, imageHeight, viewportWidth, viewportHeight, sizing, alignment;
        imageRect_t rect;
    } cases[] = {
        {100, 50, 400, 300, stretch, topLeft, {0, 0, 400, 300}},  // stretching ignores the alignment
        {100, 50, 400, 300, fit, centre, {0, 50, 400, 200}},      // as wide as the viewport
        {100, 50, 400, 300, fit, topLeft, {0, 100, 400, 200}},
        {100, 50, 400, 300, fit, bottomRight, {0, 0, 400, 200}},
        {50, 100, 400, 300, fit, centre, {125, 0, 150, 300}},      // as high as the viewport
        {50, 100, 400, 300, fit, topRight, {250, 0, 150, 300}},
        {50, 100, 400, 300, fit, bottomLeft, {0, 0, 150, 300}},
        {100, 50, 400, 300, pixels, centre, {150, 125, 100, 50}},
        {100, 50, 400, 300, pixels, topLeft, {0, 250, 100, 50}},
        {100, 50, 400, 300, pixels, topRight, {300, 250, 100, 50}},
        {100, 50, 400, 300, pixels, bottomLeft, {0, 0, 100, 50}},
        {100, 50, 400, 300, pixels, bottomRight, {300, 0, 100, 50}},
        {100, 50, 400, 300, pixels, 9, {150, 125, 100, 50}},       // an unknown alignment centres
        {500, 400, 400, 300, pixels, centre, {-50, -50, 500, 400}}, // larger than the viewport: overhangs
        {100, 50, 400, 300, 7, bottomRight, {0, 0, 400, 300}},     // an unknown sizing stretches
        {100, 50, 0, -3, fit, centre, {0, 0.25, 1, 0.5}},          // an empty viewport counts as one pixel
    };
    for (const auto& c : cases) {
        const imageRect_t rect = backgroundImageRect(c.imageWidth, c.imageHeight, c.viewportWidth, c.viewportHeight,
                                                     c.sizing, c.alignment);
        EXPECT_EQ(rect, c.rect) << c.imageWidth << "x" << c.imageHeight << " in " << c.viewportWidth << "x"
                                << c.viewportHeight << ", sizing " << c.sizing << ", alignment " << c.alignment
                                << ": got " << rect.left << ", " << rect.bottom << ", " << rect.width << " x "
                                << rect.height;
    }
}

} // namespace
