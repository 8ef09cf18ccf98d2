#include "oxgeoboundbox.h"
#include "oxgeoplane.h"
#include "oxgeoray.h"

#include "assertRecorder.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace oxGeo;

TEST(plane3d, rayIntersections) {
    const plane3d plane({0, 0, 1}, {0, 0, 2});
    EXPECT_EQ(plane.normal(), vector3d(0, 0, 1));
    EXPECT_EQ(plane.distanceTo({5, 5, 4}), 3.0);
    EXPECT_EQ(plane.distanceTo({5, 5, -1}), -2.0);

    struct testCase {
        point3d origin;
        vector3d direction;
        bool hits;
        point3d expected;
    };
    const testCase cases[] = {
        {{0, 0, 0}, {1, 1, 1}, true, {1, 1, 1}},
        {{0, 0, 5}, {0, 0, 1}, true, {0, 0, 1}},     // behind the origin: rays are lines here
        {{0, 0, 0}, {1, 0, 0}, false, {}},           // parallel
        {{0, 0, 1}, {0, 1, 0}, false, {}},           // lying in the plane
        {{0, 0, 0}, {1, 0, 1e-13}, false, {}},       // parallel within 1e-12 of its length
        {{0, 0, 0}, {1e-3, 0, 1e-16}, false, {}},
        {{0, 0, 0}, {1e-20, 0, 1e-20}, true, {1, 0, 1}}, // relative: a short direction still hits
        {{0, 0, 0}, {1, 0, 1e-11}, true, {1e11, 0, 1}},
        {{0, 0, 0}, {}, false, {}},                  // no direction
    };
    for (const auto& c : cases) {
        point3d out(-7, -7, -7);
        EXPECT_EQ(plane.getIntersection(ray<_space3d>(c.origin, c.direction), out), c.hits);
        EXPECT_TRUE(out.isEqualTo(c.hits ? c.expected : point3d(-7, -7, -7), 1e-3)) << c.direction.z();
    }

    // A ray transformed into another frame: the origin moves, the direction only turns.
    matrix3d m = matrix3d().setToRotation(ox::angle::fromDegree(90), vector3d::kXAxis, point3d());
    m.setTranslation({0, 0, 3});
    const ray<_space3d> r = ray<_space3d>({0, 0, 0}, {0, 1, 0}).transformBy(m);
    EXPECT_TRUE(r.origin().isEqualTo({0, 0, 3}, 1e-12));
    EXPECT_TRUE(r.direction().isEqualTo({0, 0, 1}, 1e-12));
    point3d hit;
    EXPECT_FALSE(m.xyPlane().getIntersection(ray<_space3d>({2, 5, 0}, {0, 0, 1}), hit));
    ASSERT_TRUE(m.xyPlane().getIntersection(ray<_space3d>({2, 5, 7}, {0, -2, 0}), hit));
    EXPECT_TRUE(hit.isEqualTo({2, 0, 7}, 1e-12)) << "the turned XY plane is y = 0";
}

TEST(plane3d, segmentIntersectionsAtTheEnds) {
    const plane3d plane({0, 0, 0}, {0, 0, 1});
    struct testCase {
        point3d a, b;
        double tolerance;
        bool hits;
    };
    const testCase cases[] = {
        {{0, 0, 1}, {0, 0, -1}, 0.0, true},
        {{1, 1, 1}, {1, 1, 0}, 0.0, true},          // ends on the plane
        {{0, 0, 2}, {0, 0, 1e-9}, 1e-8, true},      // stops short, within tolerance
        {{0, 0, 2}, {0, 0, 1e-7}, 1e-8, false},     // stops short, beyond tolerance
        {{0, 0, 1e-9}, {0, 0, 2}, 1e-8, true},      // the same at the start
        {{0, 0, 1e-7}, {0, 0, 2}, 1e-8, false},
        {{0, 0, 1000}, {0, 0, 1e-9}, 1e-8, true},   // a distance, not a fraction of the length
        {{0, 0, -2}, {0, 0, -1e-9}, 1e-8, true},    // from below
        {{0, 0, 0}, {5, 0, 0}, 1.0, false},         // in the plane: parallel
        {{3, 3, 3}, {3, 3, 3}, 1.0, false},         // no length
    };
    for (const auto& c : cases) {
        point3d out(9, 9, 9);
        EXPECT_EQ(plane.getIntersection(c.a, c.b, out, c.tolerance), c.hits) << c.a.z() << " " << c.b.z();
        EXPECT_TRUE(c.hits ? std::fabs(out.z()) < 1e-12 : out == point3d(9, 9, 9));
    }
    oxtest::assertRecorder asserts;
    EXPECT_EQ(plane3d({}, {}).normal(), vector3d(0, 0, 1));
    EXPECT_EQ(asserts.count(), 1u);
}

TEST(boundBox3d, growTransformAndEmptiness) {
    boundBox3d empty;
    EXPECT_FALSE(empty.isValid());
    EXPECT_FALSE(boundBox3d(empty).transformBy(matrix3d().setToScale(2)).isValid());
    EXPECT_TRUE(empty.isEqualTo(boundBox3d()));
    EXPECT_EQ(empty.center(), point3d());
    EXPECT_EQ(empty.size(), vector3d());

    boundBox3d box;
    box.grow(point3d(1, 2, 3));
    EXPECT_TRUE(box.isValid());
    EXPECT_EQ(box.size(), vector3d());
    box.grow(boundBox3d({-1, 0, 5}, {0, 4, 3})); // corners in any order
    EXPECT_EQ(box.min(), point3d(-1, 0, 3));
    EXPECT_EQ(box.max(), point3d(1, 4, 5));
    EXPECT_EQ(box.center(), point3d(0, 2, 4));
    EXPECT_FALSE(box.isEqualTo(empty));

    // A unit square turned by 45° about Z grows to the square around its turned corners.
    boundBox3d unit({0, 0, 0}, {1, 1, 1});
    unit.transformBy(matrix3d().setToRotation(ox::angle::fromDegree(45), vector3d::kZAxis, point3d()));
    const double h = std::sqrt(0.5);
    EXPECT_TRUE(unit.isEqualTo(boundBox3d({-h, 0, 0}, {h, 2 * h, 1}), 1e-12));

    boundBox2d flat({2, 1}, {0, 0});
    flat.transformBy(matrix3d().setToTranslation({1, 1, 9}));
    EXPECT_TRUE(flat.isEqualTo(boundBox2d({1, 1}, {3, 2})));
}
