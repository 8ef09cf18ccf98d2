#pragma once
// oxGeo::boundBox2d, oxGeo::boundBox3d: axis-aligned boxes. A default box is empty (invalid)
// and becomes valid with the first point it grows by.
#include "oxgeo_export.h"
#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeovector.h"

#include <algorithm>
#include <limits>

namespace oxGeo {

class OX_GEO_API boundBox2d {
public:
    boundBox2d() = default;
    boundBox2d(const point2d& a, const point2d& b) { setPoints(a, b); }

    bool isValid() const { return mMin.x() <= mMax.x() && mMin.y() <= mMax.y(); }
    void reset() { *this = boundBox2d(); }
    /// Takes any two opposite corners; the box is ordered.
    void setPoints(const point2d& a, const point2d& b) {
        mMin = {std::min(a.x(), b.x()), std::min(a.y(), b.y())};
        mMax = {std::max(a.x(), b.x()), std::max(a.y(), b.y())};
    }
    void grow(const point2d& p) {
        mMin = {std::min(mMin.x(), p.x()), std::min(mMin.y(), p.y())};
        mMax = {std::max(mMax.x(), p.x()), std::max(mMax.y(), p.y())};
    }
    /// An invalid box adds nothing.
    void grow(const boundBox2d& b) {
        if (b.isValid()) { grow(b.mMin); grow(b.mMax); }
    }
    const point2d& min() const { return mMin; }
    const point2d& max() const { return mMax; }
    /// The origin for an invalid box.
    point2d center() const;
    /// The zero vector for an invalid box.
    vector2d size() const;
    bool contains(const point2d& p, double tolerance = 0.0) const;
    /// Two invalid boxes are equal; an invalid and a valid one are not.
    bool isEqualTo(const boundBox2d& other, double tolerance = 1e-10) const;
    /// The box of the four corners transformed in the plane z = 0; an invalid box stays invalid.
    boundBox2d& transformBy(const matrix3d& m);

private:
    point2d mMin{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    point2d mMax{-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()};
};

class OX_GEO_API boundBox3d {
public:
    boundBox3d() = default;
    boundBox3d(const point3d& a, const point3d& b) { setPoints(a, b); }

    bool isValid() const { return mMin.x() <= mMax.x() && mMin.y() <= mMax.y() && mMin.z() <= mMax.z(); }
    void reset() { *this = boundBox3d(); }
    /// Takes any two opposite corners; the box is ordered.
    void setPoints(const point3d& a, const point3d& b) {
        mMin = {std::min(a.x(), b.x()), std::min(a.y(), b.y()), std::min(a.z(), b.z())};
        mMax = {std::max(a.x(), b.x()), std::max(a.y(), b.y()), std::max(a.z(), b.z())};
    }
    void grow(const point3d& p) {
        mMin = {std::min(mMin.x(), p.x()), std::min(mMin.y(), p.y()), std::min(mMin.z(), p.z())};
        mMax = {std::max(mMax.x(), p.x()), std::max(mMax.y(), p.y()), std::max(mMax.z(), p.z())};
    }
    /// An invalid box adds nothing.
    void grow(const boundBox3d& b) {
        if (b.isValid()) { grow(b.mMin); grow(b.mMax); }
    }
    const point3d& min() const { return mMin; }
    const point3d& max() const { return mMax; }
    /// The origin for an invalid box.
    point3d center() const;
    /// The zero vector for an invalid box.
    vector3d size() const;
    bool contains(const point3d& p, double tolerance = 0.0) const;
    /// Two invalid boxes are equal; an invalid and a valid one are not.
    bool isEqualTo(const boundBox3d& other, double tolerance = 1e-10) const;
    /// The box of the eight transformed corners; an invalid box stays invalid.
    boundBox3d& transformBy(const matrix3d& m);

private:
    point3d mMin{std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                 std::numeric_limits<double>::max()};
    point3d mMax{-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max(),
                 -std::numeric_limits<double>::max()};
};

} // namespace oxGeo
