#include "oxgeoboundbox.h"

#include <cmath>

namespace oxGeo {

point2d boundBox2d::center() const {
    if (!isValid()) return {};
    return {0.5 * (mMin.x() + mMax.x()), 0.5 * (mMin.y() + mMax.y())};
}

vector2d boundBox2d::size() const {
    if (!isValid()) return {};
    return mMax - mMin;
}

bool boundBox2d::contains(const point2d& p, double tolerance) const {
    return isValid() && p.x() >= mMin.x() - tolerance && p.x() <= mMax.x() + tolerance &&
           p.y() >= mMin.y() - tolerance && p.y() <= mMax.y() + tolerance;
}

bool boundBox2d::isEqualTo(const boundBox2d& other, double tolerance) const {
    if (!isValid() || !other.isValid()) return isValid() == other.isValid();
    return mMin.isEqualTo(other.mMin, tolerance) && mMax.isEqualTo(other.mMax, tolerance);
}

boundBox2d& boundBox2d::transformBy(const matrix3d& m) {
    if (!isValid()) return *this;
    boundBox2d result;
    for (int i = 0; i < 4; ++i) {
        const point3d corner(i & 1 ? mMax.x() : mMin.x(), i & 2 ? mMax.y() : mMin.y(), 0.0);
        result.grow((m * corner).asPoint2d());
    }
    return *this = result;
}

point3d boundBox3d::center() const {
    if (!isValid()) return {};
    return {0.5 * (mMin.x() + mMax.x()), 0.5 * (mMin.y() + mMax.y()), 0.5 * (mMin.z() + mMax.z())};
}

vector3d boundBox3d::size() const {
    if (!isValid()) return {};
    return mMax - mMin;
}

bool boundBox3d::contains(const point3d& p, double tolerance) const {
    return isValid() && p.x() >= mMin.x() - tolerance && p.x() <= mMax.x() + tolerance &&
           p.y() >= mMin.y() - tolerance && p.y() <= mMax.y() + tolerance && p.z() >= mMin.z() - tolerance &&
           p.z() <= mMax.z() + tolerance;
}

bool boundBox3d::isEqualTo(const boundBox3d& other, double tolerance) const {
    if (!isValid() || !other.isValid()) return isValid() == other.isValid();
    return mMin.isEqualTo(other.mMin, tolerance) && mMax.isEqualTo(other.mMax, tolerance);
}

boundBox3d& boundBox3d::transformBy(const matrix3d& m) {
    if (!isValid()) return *this;
    boundBox3d result;
    for (int i = 0; i < 8; ++i) {
        const point3d corner(i & 1 ? mMax.x() : mMin.x(), i & 2 ? mMax.y() : mMin.y(), i & 4 ? mMax.z() : mMin.z());
        result.grow(m * corner);
    }
    return *this = result;
}

} // namespace oxGeo
