#include "oxgeomatrix.h"
#include "oxgeoquaternion.h"

#include "assertRecorder.h"

#include <gtest/gtest.h>

#include <random>

using namespace oxGeo;

namespace {

constexpr double kPi = ox::angle::kPi;

vector3d randomUnit(std::mt19937& rng) {
    std::normal_distribution<double> n;
    vector3d v;
    do v = {n(rng), n(rng), n(rng)};
    while (v.length() < 1e-3);
    return v.norm();
}

matrix3d randomRotation(std::mt19937& rng) {
    std::uniform_real_distribution<double> a(-kPi, kPi);
    return matrix3d().setToRotation(ox::angle::fromRadians(a(rng)), randomUnit(rng), point3d());
}

/// Rotation · non-uniform scale · rotation plus translation: every element non-trivial.
matrix3d randomAffine(std::mt19937& rng) {
    std::uniform_real_distribution<double> s(0.1, 10.0), t(-100.0, 100.0);
    matrix3d scale;
    scale(0, 0) = s(rng);
    scale(1, 1) = s(rng);
    scale(2, 2) = -s(rng); // mirroring too
    matrix3d m = randomRotation(rng) * scale * randomRotation(rng);
    return m.setTranslation({t(rng), t(rng), t(rng)});
}

} // namespace

TEST(matrix3d, inverseOfRandomAffineTransforms) {
    std::mt19937 rng(20240611);
    for (int i = 0; i < 200; ++i) {
        const matrix3d m = randomAffine(rng);
        matrix3d inv;
        ASSERT_TRUE(m.inverse(inv));
        EXPECT_TRUE((m * inv).isIdentity(1e-9)) << i;
        EXPECT_TRUE((inv * m).isIdentity(1e-9)) << i;
        EXPECT_TRUE(inv.isEqualTo(m.inverse(), 0.0));
        const point3d p(1.5, -2.0, 3.25);
        EXPECT_TRUE((inv * (m * p)).isEqualTo(p, 1e-9));
    }
    // A general (non-affine) bottom row takes the elimination path.
    matrix3d m = randomAffine(rng);
    m(3, 0) = 0.25;
    m(3, 2) = -0.5;
    EXPECT_TRUE((m * m.inverse()).isIdentity(1e-9));
}

TEST(matrix3d, singularInverse) {
    matrix3d flat;
    flat(2, 2) = 0.0; // projection onto XY
    matrix3d parallel;
    parallel(0, 1) = 1.0;
    parallel(1, 1) = 0.0; // Y column equals X column
    matrix3d zero = matrix3d().setToScale(0.0);
    for (const matrix3d& m : {flat, parallel, zero}) {
        oxtest::assertRecorder asserts;
        matrix3d out = matrix3d().setToScale(7.0);
        EXPECT_FALSE(m.inverse(out));
        EXPECT_TRUE(out.isEqualTo(matrix3d().setToScale(7.0), 0.0)) << "untouched on failure";
        EXPECT_EQ(asserts.count(), 0u);
        EXPECT_TRUE(m.inverse().isIdentity(0.0));
        EXPECT_EQ(asserts.count(), 1u);
    }
    // Tiny but regular: singularity is judged independently of scale.
    const matrix3d tiny = matrix3d().setToScale(1e-9);
    matrix3d inv;
    ASSERT_TRUE(tiny.inverse(inv));
    EXPECT_NEAR(inv(1, 1), 1e9, 1e-3);
}

TEST(matrix3d, rotationAboutCentre) {
    struct testCase {
        double degrees;
        vector3d axis;
        point3d centre, from, to;
    };
    const testCase cases[] = {
        {90, {0, 0, 1}, {1, 0, 0}, {2, 0, 0}, {1, 1, 0}},
        {90, {0, 0, 5}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, // axis need not be unit length
        {-90, {0, 0, 1}, {0, 0, 0}, {1, 0, 0}, {0, -1, 0}},
        {90, {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {90, {0, 1, 0}, {0, 0, 0}, {0, 0, 1}, {1, 0, 0}},
        {180, {0, 0, 1}, {1, 1, 0}, {0, 0, 5}, {2, 2, 5}},
        {120, {1, 1, 1}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
        {90, {0, 0, -1}, {3, 4, 5}, {3, 4, 5}, {3, 4, 5}}, // the centre stays
    };
    for (const auto& c : cases) {
        const matrix3d m = matrix3d().setToRotation(ox::angle::fromDegree(c.degrees), c.axis, c.centre);
        EXPECT_TRUE((m * c.from).isEqualTo(c.to, 1e-12)) << c.degrees;
        EXPECT_NEAR(m.determinant(), 1.0, 1e-12);
    }
    oxtest::assertRecorder asserts;
    EXPECT_TRUE(matrix3d().setToRotation(ox::angle::fromDegree(30), vector3d(), point3d()).isIdentity(0.0));
    EXPECT_EQ(asserts.count(), 1u);
}

TEST(matrix3d, coordSystemRoundTripAndPlanes) {
    std::mt19937 rng(7);
    for (int i = 0; i < 50; ++i) {
        const matrix3d r = randomRotation(rng);
        const vector3d x = r * vector3d::kXAxis, y = r * vector3d::kYAxis, z = r * vector3d::kZAxis;
        const point3d origin(i, -2.0 * i, 0.5);
        matrix3d m;
        m.setCoordSystem(origin, x, y, z);
        point3d o2;
        vector3d x2, y2, z2;
        m.getCoordSystem(o2, x2, y2, z2);
        EXPECT_TRUE(o2 == origin && x2 == x && y2 == y && z2 == z);
        EXPECT_TRUE((m * point3d(1, 0, 0)).isEqualTo(origin + x, 1e-12));
        EXPECT_TRUE((m * vector3d(0, 0, 1)).isEqualTo(z, 1e-12));
        EXPECT_TRUE(m.xyPlane().normal().isEqualTo(z, 1e-12));
        EXPECT_TRUE(m.xzPlane().normal().isEqualTo(y, 1e-12));
        EXPECT_EQ(m.xyPlane().origin(), origin);
    }
}

TEST(matrix3d, arbitraryAxisFrames) {
    std::mt19937 rng(99);
    std::vector<vector3d> axes = {{0, 0, 1}, {0, 0, -3}, {1, 0, 0}, {0.015, 0, 1}, {0.016, 0, 1}};
    for (int i = 0; i < 30; ++i) axes.push_back(randomUnit(rng));
    for (const vector3d& a : axes) {
        const matrix3d m = matrix3d().setFromArbitraryAxis(a);
        point3d o;
        vector3d x, y, z;
        m.getCoordSystem(o, x, y, z);
        EXPECT_TRUE(z.isEqualTo(a.norm(), 1e-12));
        EXPECT_NEAR(x.length(), 1.0, 1e-12);
        EXPECT_NEAR(x.dot(z), 0.0, 1e-12);
        EXPECT_TRUE(x.cross(y).isEqualTo(z, 1e-12)) << "right-handed";
    }
    // The rule switches at 1/64: below it X is perpendicular to world Y, above it to world Z.
    EXPECT_EQ(matrix3d().setFromArbitraryAxis({0.015, 0, 1})(1, 0), 0.0);
    EXPECT_EQ(matrix3d().setFromArbitraryAxis({0.016, 0, 1})(2, 0), 0.0);
    EXPECT_NE(matrix3d().setFromArbitraryAxis({0.016, 0, 1})(1, 0), 0.0);
    EXPECT_TRUE(matrix3d().setFromArbitraryAxis({0, 0, 2}).isIdentity(1e-15));
}

TEST(matrix3d, normItTransposeAndArrays) {
    std::mt19937 rng(3);
    const matrix3d r = randomRotation(rng);
    matrix3d drifted = r;
    drifted(0, 0) += 1e-4;
    drifted(2, 1) -= 2e-4;
    drifted.setTranslation({1, 2, 3});
    drifted.normIt();
    matrix3d t = drifted;
    t.setTranslation({});
    EXPECT_TRUE((t * matrix3d(t).transposeIt()).isIdentity(1e-12)) << "orthonormal";
    EXPECT_TRUE(t.isEqualTo(r, 1e-3));
    EXPECT_EQ(drifted.translation(), vector3d(1, 2, 3));
    matrix3d mirror = r;
    for (int row = 0; row < 3; ++row) mirror(row, 2) *= -1.0;
    EXPECT_NEAR(mirror.normIt().determinant(), -1.0, 1e-12) << "handedness kept";

    matrix3d m;
    for (int row = 0; row < 4; ++row)
        for (int col = 0; col < 4; ++col) m(row, col) = row * 4 + col;
    float f[16];
    double d[16];
    m.asFloatArray(f);
    m.asDoubleArrayColumnMajor(d);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(f[i], static_cast<float>(i)) << "row by row";
        EXPECT_EQ(d[i], (i % 4) * 4 + i / 4) << "column-major";
    }
}

TEST(quaternion, matrixRoundTrips) {
    std::mt19937 rng(1234);
    std::vector<matrix3d> rotations;
    // Half turns and near half turns exercise every branch of the conversion.
    for (const vector3d& axis : {vector3d(1, 0, 0), vector3d(0, 1, 0), vector3d(0, 0, 1), vector3d(1, 1, 0),
                                 vector3d(0, 1, -1)})
        for (double deg : {180.0, 179.999, -179.9, 0.0, 1e-6})
            rotations.push_back(matrix3d().setToRotation(ox::angle::fromDegree(deg), axis, point3d()));
    for (int i = 0; i < 200; ++i) rotations.push_back(randomRotation(rng));

    for (const matrix3d& m : rotations) {
        const quaternion q(m);
        EXPECT_NEAR(q.length(), 1.0, 1e-12);
        EXPECT_GE(q.w(), 0.0);
        EXPECT_TRUE(q.matrixRotation().isEqualTo(m, 1e-12));
        // Scale and translation are not part of the rotation.
        matrix3d scaled = m * matrix3d().setToScale(3.5);
        scaled.setTranslation({5, 6, 7});
        EXPECT_TRUE(quaternion(scaled).isEqualTo(q, 1e-12));
    }
    for (int i = 0; i < 100; ++i) {
        const vector3d axis = randomUnit(rng);
        const ox::angle a = ox::angle::fromRadians(std::uniform_real_distribution<double>(-kPi, kPi)(rng));
        const quaternion q(axis, a);
        // Row-vector layout: the transpose of the column-vector rotation by the same angle.
        matrix3d columnForm = matrix3d().setToRotation(a, axis, point3d());
        EXPECT_TRUE(q.matrixRotation().isEqualTo(columnForm.transposeIt(), 1e-12));
        const vector3d v = randomUnit(rng);
        EXPECT_TRUE(q.rotate(v).isEqualTo(matrix3d().setToRotation(a, axis, point3d()) * v, 1e-12));
        EXPECT_TRUE(quaternion(q.matrixRotation()).isEqualTo(q.w() < 0 ? q * -1.0 : q, 1e-12));
        // q1·q2 applies q2 first; in row-vector layout that is the matrix product the other way round.
        const matrix3d m2 = randomRotation(rng);
        EXPECT_TRUE(q.mult(quaternion(m2)).matrixRotation().isEqualTo(m2 * q.matrixRotation(), 1e-12));
        EXPECT_TRUE(q.mult(q.conjugate()).isEqualTo(quaternion(), 1e-12));
        // Interpolated sums need not be unit length.
        EXPECT_TRUE((q * 3.0).matrixRotation().isEqualTo(q.matrixRotation(), 1e-12));
    }
    EXPECT_TRUE(quaternion(0, 0, 0, 0).matrixRotation().isIdentity(0.0));
    EXPECT_TRUE(quaternion(vector3d(), ox::angle::fromDegree(40)).isEqualTo(quaternion(), 0.0));
}
