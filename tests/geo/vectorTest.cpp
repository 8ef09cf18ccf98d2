#include "oxgeodtconvert.h"
#include "oxgeomatrix.h"
#include "oxgeovector.h"

#include <gtest/gtest.h>

using namespace oxGeo;

TEST(vector3d, angles) {
    struct testCase {
        vector3d a, b;
        double unsignedDeg;
        vector3d reference;
        double aroundDeg;
    };
    const vector3d x = vector3d::kXAxis, y = vector3d::kYAxis, z = vector3d::kZAxis;
    const testCase cases[] = {
        {x, y, 90, z, 90},
        {x, -y, 90, z, 270},
        {x, y, 90, -z, 270},          // seen from the other side
        {x, -x, 180, z, 180},
        {x, x * 4.0, 0, z, 0},
        {x, {1, -1e-17, 0}, 0, z, 0}, // just below a full turn rounds to 0, never to 360
        {{1, 0, 5}, {0, 1, -3}, 158.47546, z, 90}, // projected onto the reference plane first
        {{0, 1, 0}, {0, 0, 1}, 90, x, 90},
        {x, {}, 0, z, 0},             // a zero vector has no angle
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(c.a.angleTo(c.b).degree(), c.unsignedDeg, 1e-4);
        EXPECT_NEAR(c.a.angleTo(c.b, c.reference).degree(), c.aroundDeg, 1e-9);
        EXPECT_LT(c.a.angleTo(c.b, c.reference).radians(), 2 * ox::angle::kPi);
    }
    // Small angles keep their digits (an acos of the dot product would give 0 here).
    EXPECT_NEAR(x.angleTo({1, 1e-9, 0}).radians(), 1e-9, 1e-20);
    EXPECT_NEAR(x.angleTo({-1, 1e-9, 0}).radians(), ox::angle::kPi - 1e-9, 1e-15);
}

TEST(vector3d, transformsAndDegenerateNorm) {
    matrix3d m = matrix3d().setToRotation(ox::angle::fromDegree(90), vector3d::kZAxis, point3d());
    m.setTranslation({10, 0, 0});
    EXPECT_TRUE(point3d(1, 0, 0).transformBy(m).isEqualTo({10, 1, 0}, 1e-12)) << "points translate";
    EXPECT_TRUE(vector3d(1, 0, 0).transformBy(m).isEqualTo({0, 1, 0}, 1e-12)) << "vectors do not";
    EXPECT_EQ(vector3d().norm(), vector3d()) << "zero stays zero, no NaN";
}

TEST(dtconvert, text) {
    EXPECT_EQ(dtconvert<ox::string>(vector3d(1, 0.5, -2e-7)), L"(1, 0.5, -2e-07)");
    EXPECT_EQ(dtconvert<ox::string>(vector3d(-0.0, 123456789, 1.0 / 3)), L"(0, 1.23457e+08, 0.333333)");
    EXPECT_EQ(dtconvert<ox::string>(4294967295u), L"4294967295");
}
