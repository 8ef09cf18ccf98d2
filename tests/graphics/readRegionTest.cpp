// The GL fixture's read-back, which every reference comparison starts from: rows top first, the
// caller's pack state kept.
#include "glTestFixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

class readRegionTest : public oxtest::glTest {};

TEST_F(readRegionTest, regionsAreTopRowFirstAndPackStateIsKept) {
    oxtest::clearTo(0, 0, 1, 1);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 4, 1);   // bottom row of the 4x2 region
    oxtest::clearTo(1, 0, 0, 1);
    glDisable(GL_SCISSOR_TEST);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);

    const oxtest::rgbaImage region = oxtest::readRegion(0, 0, 4, 2);
    EXPECT_EQ((std::vector<std::uint8_t>(region.at(3, 0), region.at(3, 0) + 4)), (std::vector<std::uint8_t>{0, 0, 255, 255}));
    EXPECT_EQ((std::vector<std::uint8_t>(region.at(3, 1), region.at(3, 1) + 4)), (std::vector<std::uint8_t>{255, 0, 0, 255}));
    EXPECT_EQ(oxtest::readPixel(0, 0), (oxtest::rgba8{255, 0, 0, 255}));
    EXPECT_EQ(oxtest::readGlInteger(GL_PACK_ALIGNMENT), 8);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
}

} // namespace
