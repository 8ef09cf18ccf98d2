#pragma once
// oxGeo::vector2d, oxGeo::vector3d: directions and displacements in double precision.
// Including this header also gives the point types (points and vectors convert into each other).
#include "oxgeo_export.h"

#include "oxangle.h"

#include <cmath>

namespace oxGeo {

class point2d;
class point3d;
class matrix3d;

/// A 2D direction.
class vector2d {
public:
    constexpr vector2d() = default;
    constexpr vector2d(double x, double y) : mX(x), mY(y) {}
    explicit vector2d(const point2d& p);

    constexpr double x() const { return mX; }
    constexpr double y() const { return mY; }
    constexpr void setX(double x) { mX = x; }
    constexpr void setY(double y) { mY = y; }
    constexpr void set(double x, double y) { mX = x; mY = y; }

    double length() const { return std::hypot(mX, mY); }
    constexpr double dot(const vector2d& o) const { return mX * o.mX + mY * o.mY; }
    /// The z component of the 3D cross product: positive when `o` lies counter-clockwise of this.
    constexpr double cross(const vector2d& o) const { return mX * o.mY - mY * o.mX; }
    /// A unit-length copy; the zero vector stays zero.
    vector2d norm() const { vector2d v(*this); v.normIt(); return v; }
    vector2d& normIt() {
        const double l = length();
        if (l > 0.0) { mX /= l; mY /= l; }
        return *this;
    }
    point2d asPoint() const;

    constexpr vector2d& operator+=(const vector2d& o) { mX += o.mX; mY += o.mY; return *this; }
    constexpr vector2d& operator-=(const vector2d& o) { mX -= o.mX; mY -= o.mY; return *this; }
    constexpr vector2d& operator*=(double s) { mX *= s; mY *= s; return *this; }
    constexpr vector2d& operator/=(double s) { mX /= s; mY /= s; return *this; }
    friend constexpr vector2d operator+(const vector2d& a, const vector2d& b) { return {a.mX + b.mX, a.mY + b.mY}; }
    friend constexpr vector2d operator-(const vector2d& a, const vector2d& b) { return {a.mX - b.mX, a.mY - b.mY}; }
    friend constexpr vector2d operator-(const vector2d& a) { return {-a.mX, -a.mY}; }
    friend constexpr vector2d operator*(const vector2d& a, double s) { return {a.mX * s, a.mY * s}; }
    friend constexpr vector2d operator*(double s, const vector2d& a) { return {a.mX * s, a.mY * s}; }
    friend constexpr vector2d operator/(const vector2d& a, double s) { return {a.mX / s, a.mY / s}; }
    friend constexpr bool operator==(const vector2d&, const vector2d&) = default;

private:
    double mX = 0.0;
    double mY = 0.0;
};

/// A 3D direction. Transformations apply without translation.
/// Only the out-of-line members are exported: on Windows the members of an exported class are
/// imported, and the inline constants below could then not be defined in this header.
class vector3d {
public:
    static const vector3d kXAxis;
    static const vector3d kYAxis;
    static const vector3d kZAxis;
    static constexpr vector3d xAxis() { return {1.0, 0.0, 0.0}; }
    static constexpr vector3d yAxis() { return {0.0, 1.0, 0.0}; }
    static constexpr vector3d zAxis() { return {0.0, 0.0, 1.0}; }

    constexpr vector3d() = default;
    constexpr vector3d(double x, double y, double z) : mX(x), mY(y), mZ(z) {}
    /// The vector from the origin to `p`.
    OX_GEO_API explicit vector3d(const point3d& p);
    /// z = 0.
    constexpr explicit vector3d(const vector2d& v) : mX(v.x()), mY(v.y()) {}

    constexpr double x() const { return mX; }
    constexpr double y() const { return mY; }
    constexpr double z() const { return mZ; }
    constexpr void setX(double x) { mX = x; }
    constexpr void setY(double y) { mY = y; }
    constexpr void setZ(double z) { mZ = z; }
    constexpr void set(double x, double y, double z) { mX = x; mY = y; mZ = z; }
    constexpr double operator[](int i) const { return i == 0 ? mX : (i == 1 ? mY : mZ); }

    double length() const { return std::sqrt(lengthSqrd()); }
    constexpr double lengthSqrd() const { return mX * mX + mY * mY + mZ * mZ; }
    constexpr double dot(const vector3d& o) const { return mX * o.mX + mY * o.mY + mZ * o.mZ; }
    constexpr vector3d cross(const vector3d& o) const {
        return {mY * o.mZ - mZ * o.mY, mZ * o.mX - mX * o.mZ, mX * o.mY - mY * o.mX};
    }
    /// A unit-length copy; the zero vector stays zero (degenerate geometry must not produce NaN).
    vector3d norm() const { vector3d v(*this); v.normIt(); return v; }
    vector3d& normIt() {
        const double l = length();
        if (l > 0.0) { mX /= l; mY /= l; mZ /= l; }
        return *this;
    }
    constexpr bool isZeroLength() const { return mX == 0.0 && mY == 0.0 && mZ == 0.0; }
    /// True when every component differs by no more than `tolerance`.
    bool isEqualTo(const vector3d& o, double tolerance = 1e-10) const {
        return std::fabs(mX - o.mX) <= tolerance && std::fabs(mY - o.mY) <= tolerance &&
               std::fabs(mZ - o.mZ) <= tolerance;
    }

    /// Applies the linear part of `m` (no translation), in place.
    OX_GEO_API vector3d& transformBy(const matrix3d& m);

    /// The unsigned angle between the two vectors, in [0, π]; 0 when either is zero.
    OX_GEO_API ox::angle angleTo(const vector3d& other) const;
    /// The angle from this vector to `other`, counter-clockwise when looking against
    /// `referenceNormal` (right-handed about it), in [0, 2π). Both vectors are first projected
    /// onto the plane perpendicular to the reference; 0 when a projection vanishes.
    OX_GEO_API ox::angle angleTo(const vector3d& other, const vector3d& referenceNormal) const;

    OX_GEO_API point3d asPoint() const;

    constexpr vector3d& operator+=(const vector3d& o) { mX += o.mX; mY += o.mY; mZ += o.mZ; return *this; }
    constexpr vector3d& operator-=(const vector3d& o) { mX -= o.mX; mY -= o.mY; mZ -= o.mZ; return *this; }
    constexpr vector3d& operator*=(double s) { mX *= s; mY *= s; mZ *= s; return *this; }
    constexpr vector3d& operator/=(double s) { mX /= s; mY /= s; mZ /= s; return *this; }
    friend constexpr vector3d operator+(const vector3d& a, const vector3d& b) { return {a.mX + b.mX, a.mY + b.mY, a.mZ + b.mZ}; }
    friend constexpr vector3d operator-(const vector3d& a, const vector3d& b) { return {a.mX - b.mX, a.mY - b.mY, a.mZ - b.mZ}; }
    friend constexpr vector3d operator-(const vector3d& a) { return {-a.mX, -a.mY, -a.mZ}; }
    friend constexpr vector3d operator*(const vector3d& a, double s) { return {a.mX * s, a.mY * s, a.mZ * s}; }
    friend constexpr vector3d operator*(double s, const vector3d& a) { return {a.mX * s, a.mY * s, a.mZ * s}; }
    friend constexpr vector3d operator/(const vector3d& a, double s) { return {a.mX / s, a.mY / s, a.mZ / s}; }
    friend constexpr bool operator==(const vector3d&, const vector3d&) = default;

private:
    double mX = 0.0;
    double mY = 0.0;
    double mZ = 0.0;
};

inline constexpr vector3d vector3d::kXAxis{1.0, 0.0, 0.0};
inline constexpr vector3d vector3d::kYAxis{0.0, 1.0, 0.0};
inline constexpr vector3d vector3d::kZAxis{0.0, 0.0, 1.0};

} // namespace oxGeo

// Points and vectors are defined against each other; the cross operations live in oxgeopoint.h.
#include "oxgeopoint.h"
