#pragma once
// oxGeo::quaternion: a rotation as w + xi + yj + zk (Hamilton convention); q1.mult(q2) applies q2
// first, and quaternion(axis, a) turns by a counter-clockwise about axis, as
// matrix3d::setToRotation does.
//
// Matrices exchanged with a quaternion are in ROW-VECTOR layout: matrixRotation() is the
// transpose of the matrix3d that rotates column vectors (p' = p · M), and quaternion(matrix3d)
// reads that layout, so the two round-trip. This is the layout the camera hands to OpenGL row by
// row, which GL then reads as the column-vector rotation. Use rotate() to turn a vector, or
// transpose matrixRotation() to combine it with other matrix3d transforms. A placement matrix
// (column-vector, as everywhere else) given to quaternion(matrix3d) therefore yields the inverse
// of its rotation — what the view code wants when it turns a model back to a standard view.
#include "oxgeo_export.h"
#include "oxgeomatrix.h"
#include "oxgeovector.h"

#include "oxangle.h"

#include <cmath>

namespace oxGeo {

class OX_GEO_API quaternion {
public:
    /// The identity rotation.
    constexpr quaternion() = default;
    constexpr quaternion(double w, double x, double y, double z) : mW(w), mX(x), mY(y), mZ(z) {}
    /// The rotation part of `m`. Axis scales are divided out first; the result is a unit
    /// quaternion with w >= 0.
    explicit quaternion(const matrix3d& m);
    /// Rotation by `a` about `axis` (right-handed). A zero axis gives the identity.
    quaternion(const vector3d& axis, ox::angle a);

    constexpr double w() const { return mW; }
    constexpr double x() const { return mX; }
    constexpr double y() const { return mY; }
    constexpr double z() const { return mZ; }

    /// The Hamilton product this · other.
    constexpr quaternion mult(const quaternion& o) const {
        return {mW * o.mW - mX * o.mX - mY * o.mY - mZ * o.mZ, mW * o.mX + mX * o.mW + mY * o.mZ - mZ * o.mY,
                mW * o.mY - mX * o.mZ + mY * o.mW + mZ * o.mX, mW * o.mZ + mX * o.mY - mY * o.mX + mZ * o.mW};
    }
    constexpr double dot(const quaternion& o) const { return mW * o.mW + mX * o.mX + mY * o.mY + mZ * o.mZ; }
    double length() const { return std::sqrt(dot(*this)); }
    /// A unit-length copy; the zero quaternion becomes the identity.
    quaternion norm() const { quaternion q(*this); q.normIt(); return q; }
    quaternion& normIt();
    constexpr quaternion conjugate() const { return {mW, -mX, -mY, -mZ}; }
    /// The vector turned by this rotation (a non-unit quaternion acts as its normalised form).
    vector3d rotate(const vector3d& v) const;
    /// The rotation matrix in row-vector layout (see above). A quaternion that is not of unit length is treated as its
    /// normalised form (interpolated sums need not be normalised first); zero gives the identity.
    matrix3d matrixRotation() const;
    /// True when every component differs by no more than `tolerance` (q and −q are the same
    /// rotation but not equal here).
    bool isEqualTo(const quaternion& o, double tolerance = 1e-10) const {
        return std::fabs(mW - o.mW) <= tolerance && std::fabs(mX - o.mX) <= tolerance &&
               std::fabs(mY - o.mY) <= tolerance && std::fabs(mZ - o.mZ) <= tolerance;
    }

    friend constexpr quaternion operator+(const quaternion& a, const quaternion& b) {
        return {a.mW + b.mW, a.mX + b.mX, a.mY + b.mY, a.mZ + b.mZ};
    }
    friend constexpr quaternion operator-(const quaternion& a, const quaternion& b) {
        return {a.mW - b.mW, a.mX - b.mX, a.mY - b.mY, a.mZ - b.mZ};
    }
    friend constexpr quaternion operator*(const quaternion& q, double s) { return {q.mW * s, q.mX * s, q.mY * s, q.mZ * s}; }
    friend constexpr quaternion operator*(double s, const quaternion& q) { return q * s; }
    friend constexpr bool operator==(const quaternion&, const quaternion&) = default;

private:
    double mW = 1.0;
    double mX = 0.0;
    double mY = 0.0;
    double mZ = 0.0;
};

} // namespace oxGeo
