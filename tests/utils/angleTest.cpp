#include "oxangle.h"
#include "oxnumeric.h"

#include <gtest/gtest.h>

namespace {

TEST(angle, normItTable) {
    const struct {
        double in, out;
    } cases[] = {
        {450, 90}, {-450, -90}, {180, 180}, {-180, 180}, {0, 0}, {540, 180}, {-540, 180},
        {181, -179}, {-181, 179}, {359, -1}, {720, 0}, {-90, -90},
    };
    for (const auto& c : cases) {
        ox::angle a = ox::angle::fromDegree(c.in);
        EXPECT_NEAR(a.normIt().degree(), c.out, 1e-9) << c.in;
    }
}

TEST(angle, degreeBetweenZeroAndTwoPi) {
    const struct {
        double in, out;
    } cases[] = {
        {0, 0}, {-90, 270}, {360, 0}, {-360, 0}, {720, 0}, {359.5, 359.5}, {450, 90}, {-1e-15, 0},
    };
    for (const auto& c : cases) {
        const double d = ox::angle::fromDegree(c.in).degreeBetweenZeroAndTwoPi();
        EXPECT_NEAR(d, c.out, 1e-9) << c.in;
        EXPECT_GE(d, 0.0) << c.in;
        EXPECT_LT(d, 360.0) << c.in;
    }
    EXPECT_NEAR(ox::angle::fromRadians(-ox::angle::kPi / 2).degreeBetweenZeroAndTwoPi(), 270.0, 1e-9);
}

TEST(dblEq, toleranceBoundary) {
    // Values exactly representable in binary so the boundary itself is exact.
    EXPECT_TRUE(ox::dblEq(1.0, 1.5, 0.5));
    EXPECT_TRUE(ox::dblEq(1.5, 1.0, 0.5));
    EXPECT_FALSE(ox::dblEq(1.0, 1.5, 0.4999999));
    EXPECT_FALSE(ox::dblEq(-1.0, 1.0, 1.9999999));
    EXPECT_TRUE(ox::dblEq(0.0, -0.0, 0.0));
}

} // namespace
