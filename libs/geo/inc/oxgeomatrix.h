#pragma once
// oxGeo::matrix3d: a 4x4 affine transformation in double precision.
//
// Stored row-major and applied to column vectors: p' = M * p. The translation sits in column 3,
// elements (0,3), (1,3), (2,3); the columns 0..2 are the images of the X, Y and Z axes. A product
// A * B applies B first. Points and vectors are transformed by the upper three rows; the bottom
// row is kept (0, 0, 0, 1) by every operation here and is not used to divide.
#include "oxgeo_export.h"
#include "oxgeopoint.h"
#include "oxgeovector.h"

#include "oxangle.h"

namespace oxGeo {

class plane3d;

class OX_GEO_API matrix3d {
public:
    /// The identity.
    constexpr matrix3d() = default;

    constexpr double operator()(int row, int col) const { return mM[row][col]; }
    constexpr double& operator()(int row, int col) { return mM[row][col]; }

    // --- setters (each replaces the whole matrix unless it says otherwise) -------------------
    matrix3d& setToIdentity();
    matrix3d& setToTranslation(const vector3d& v);
    /// Replaces the translation column only.
    matrix3d& setTranslation(const vector3d& v);
    vector3d translation() const { return {mM[0][3], mM[1][3], mM[2][3]}; }
    /// Uniform scale about the origin.
    matrix3d& setToScale(double factor);
    /// Rotation by `a` about the line through `centre` along `axis`: right-handed, so a positive
    /// angle turns counter-clockwise when looking down the axis towards its origin. A zero axis
    /// is a programming error: it asserts and yields the identity.
    matrix3d& setToRotation(ox::angle a, const vector3d& axis, const point3d& centre = point3d());
    /// A frame whose Z axis is `axis` (normalised), with X and Y chosen by the 1/64 rule: when
    /// the axis is within 1/64 of the world Z axis in x and y, X = worldY × axis, otherwise
    /// X = worldZ × axis; Y = axis × X. No translation. A zero axis asserts and gives the identity.
    matrix3d& setFromArbitraryAxis(const vector3d& axis);
    /// The axes become the columns 0..2, the origin the translation.
    matrix3d& setCoordSystem(const point3d& origin, const vector3d& xAxis, const vector3d& yAxis,
                             const vector3d& zAxis);
    void getCoordSystem(point3d& origin, vector3d& xAxis, vector3d& yAxis, vector3d& zAxis) const;

    /// The plane through the matrix origin spanned by its X and Y axes (normal X × Y).
    plane3d xyPlane() const;
    /// The plane through the matrix origin spanned by its X and Z axes (normal Z × X).
    plane3d xzPlane() const;

    // --- whole-matrix operations --------------------------------------------------------------
    /// The inverse. A singular matrix is a programming error here: it asserts and yields the
    /// identity. Use the other overload where singularity is an expected outcome.
    matrix3d inverse() const;
    /// Writes the inverse to `out` and returns true; returns false (out untouched) when the
    /// matrix is singular. Never asserts.
    bool inverse(matrix3d& out) const;
    matrix3d& transposeIt();
    /// Orthonormalises the rotation part (Gram-Schmidt on the columns, X kept in direction,
    /// handedness kept); the translation is unchanged. Removes drift after many products.
    matrix3d& normIt();
    double determinant() const;
    /// True when every element differs by no more than `tolerance`.
    bool isEqualTo(const matrix3d& other, double tolerance = 1e-10) const;
    bool isIdentity(double tolerance = 1e-10) const { return isEqualTo(matrix3d(), tolerance); }

    /// The 16 elements as floats, row by row: (0,0), (0,1), ..., (3,3).
    void asFloatArray(float* out16) const;
    /// The 16 elements column-major, element (r, c) at c * 4 + r, as glMultMatrixd expects.
    void asDoubleArrayColumnMajor(double* out16) const;

    matrix3d& operator*=(const matrix3d& b) { return *this = *this * b; }
    friend matrix3d operator*(const matrix3d& a, const matrix3d& b) {
        matrix3d r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                r.mM[i][j] = a.mM[i][0] * b.mM[0][j] + a.mM[i][1] * b.mM[1][j] + a.mM[i][2] * b.mM[2][j] +
                             a.mM[i][3] * b.mM[3][j];
        return r;
    }
    /// With translation.
    friend point3d operator*(const matrix3d& m, const point3d& p) {
        const auto& e = m.mM;
        return {e[0][0] * p.x() + e[0][1] * p.y() + e[0][2] * p.z() + e[0][3],
                e[1][0] * p.x() + e[1][1] * p.y() + e[1][2] * p.z() + e[1][3],
                e[2][0] * p.x() + e[2][1] * p.y() + e[2][2] * p.z() + e[2][3]};
    }
    /// Without translation.
    friend vector3d operator*(const matrix3d& m, const vector3d& v) {
        const auto& e = m.mM;
        return {e[0][0] * v.x() + e[0][1] * v.y() + e[0][2] * v.z(),
                e[1][0] * v.x() + e[1][1] * v.y() + e[1][2] * v.z(),
                e[2][0] * v.x() + e[2][1] * v.y() + e[2][2] * v.z()};
    }
    friend bool operator==(const matrix3d&, const matrix3d&) = default;

private:
    double mM[4][4] = {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
};

} // namespace oxGeo

// xyPlane()/xzPlane() return planes by value; give every user of the matrix the complete type.
#include "oxgeoplane.h"
