#pragma once
// oxGeo::point2d, oxGeo::point3d: positions in double precision, with the point/vector arithmetic.
#include "oxgeo_export.h"
#include "oxgeovector.h"

#include <cmath>

namespace oxGeo {

class matrix3d;

/// A 2D position.
class point2d {
public:
    constexpr point2d() = default;
    constexpr point2d(double x, double y) : mX(x), mY(y) {}

    constexpr double x() const { return mX; }
    constexpr double y() const { return mY; }
    constexpr void setX(double x) { mX = x; }
    constexpr void setY(double y) { mY = y; }
    constexpr void set(double x, double y) { mX = x; mY = y; }

    bool isEqualTo(const point2d& o, double tolerance = 1e-10) const {
        return std::fabs(mX - o.mX) <= tolerance && std::fabs(mY - o.mY) <= tolerance;
    }
    double distanceTo(const point2d& o) const { return std::hypot(mX - o.mX, mY - o.mY); }
    constexpr vector2d asVector() const { return {mX, mY}; }

    constexpr point2d& operator+=(const vector2d& v) { mX += v.x(); mY += v.y(); return *this; }
    constexpr point2d& operator-=(const vector2d& v) { mX -= v.x(); mY -= v.y(); return *this; }
    friend constexpr vector2d operator-(const point2d& a, const point2d& b) { return {a.mX - b.mX, a.mY - b.mY}; }
    friend constexpr point2d operator+(const point2d& p, const vector2d& v) { return {p.mX + v.x(), p.mY + v.y()}; }
    friend constexpr point2d operator-(const point2d& p, const vector2d& v) { return {p.mX - v.x(), p.mY - v.y()}; }
    friend constexpr point2d operator*(const point2d& p, double s) { return {p.mX * s, p.mY * s}; }
    friend constexpr point2d operator/(const point2d& p, double s) { return {p.mX / s, p.mY / s}; }
    friend constexpr bool operator==(const point2d&, const point2d&) = default;

private:
    double mX = 0.0;
    double mY = 0.0;
};

/// A 3D position. Transformations apply with translation.
class OX_GEO_API point3d {
public:
    /// The origin.
    constexpr point3d() = default;
    constexpr point3d(double x, double y, double z) : mX(x), mY(y), mZ(z) {}
    /// z = 0.
    constexpr explicit point3d(const point2d& p) : mX(p.x()), mY(p.y()) {}

    constexpr double x() const { return mX; }
    constexpr double y() const { return mY; }
    constexpr double z() const { return mZ; }
    constexpr void setX(double x) { mX = x; }
    constexpr void setY(double y) { mY = y; }
    constexpr void setZ(double z) { mZ = z; }
    constexpr void set(double x, double y, double z) { mX = x; mY = y; mZ = z; }
    constexpr double operator[](int i) const { return i == 0 ? mX : (i == 1 ? mY : mZ); }

    /// True when every coordinate differs by no more than `tolerance`.
    bool isEqualTo(const point3d& o, double tolerance = 1e-10) const {
        return std::fabs(mX - o.mX) <= tolerance && std::fabs(mY - o.mY) <= tolerance &&
               std::fabs(mZ - o.mZ) <= tolerance;
    }
    double distanceTo(const point3d& o) const {
        const double dx = mX - o.mX, dy = mY - o.mY, dz = mZ - o.mZ;
        return std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    /// Applies `m` including its translation, in place.
    point3d& transformBy(const matrix3d& m);

    constexpr vector3d asVector() const { return {mX, mY, mZ}; }
    constexpr point2d asPoint2d() const { return {mX, mY}; }

    constexpr point3d& operator+=(const vector3d& v) { mX += v.x(); mY += v.y(); mZ += v.z(); return *this; }
    constexpr point3d& operator-=(const vector3d& v) { mX -= v.x(); mY -= v.y(); mZ -= v.z(); return *this; }
    constexpr point3d& operator*=(double s) { mX *= s; mY *= s; mZ *= s; return *this; }
    constexpr point3d& operator/=(double s) { mX /= s; mY /= s; mZ /= s; return *this; }
    friend constexpr vector3d operator-(const point3d& a, const point3d& b) { return {a.mX - b.mX, a.mY - b.mY, a.mZ - b.mZ}; }
    friend constexpr point3d operator+(const point3d& p, const vector3d& v) { return {p.mX + v.x(), p.mY + v.y(), p.mZ + v.z()}; }
    friend constexpr point3d operator-(const point3d& p, const vector3d& v) { return {p.mX - v.x(), p.mY - v.y(), p.mZ - v.z()}; }
    /// Scales the position vector (used for interpolation and centroids).
    friend constexpr point3d operator*(const point3d& p, double s) { return {p.mX * s, p.mY * s, p.mZ * s}; }
    friend constexpr point3d operator*(double s, const point3d& p) { return {p.mX * s, p.mY * s, p.mZ * s}; }
    friend constexpr point3d operator/(const point3d& p, double s) { return {p.mX / s, p.mY / s, p.mZ / s}; }
    friend constexpr bool operator==(const point3d&, const point3d&) = default;

private:
    double mX = 0.0;
    double mY = 0.0;
    double mZ = 0.0;
};

inline vector2d::vector2d(const point2d& p) : mX(p.x()), mY(p.y()) {}
inline point2d vector2d::asPoint() const { return {mX, mY}; }
inline vector3d::vector3d(const point3d& p) : mX(p.x()), mY(p.y()), mZ(p.z()) {}
inline point3d vector3d::asPoint() const { return {mX, mY, mZ}; }

} // namespace oxGeo
