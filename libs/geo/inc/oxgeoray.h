#pragma once
// oxGeo::ray: an origin and a direction, in 2D or 3D, selected by a space tag.
#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeovector.h"

namespace oxGeo {

struct _space2d {};
struct _space3d {};

template <class Space>
class ray;

/// A 3D ray. The direction is kept as given (not normalised), so pointAt(t) moves t direction
/// lengths from the origin.
template <>
class ray<_space3d> {
public:
    ray() = default;
    ray(const point3d& origin, const vector3d& direction) : mOrigin(origin), mDirection(direction) {}

    const point3d& origin() const { return mOrigin; }
    const vector3d& direction() const { return mDirection; }
    void setOrigin(const point3d& p) { mOrigin = p; }
    void setDirection(const vector3d& d) { mDirection = d; }
    point3d pointAt(double t) const { return mOrigin + mDirection * t; }
    /// The origin with translation, the direction without.
    ray& transformBy(const matrix3d& m) {
        mOrigin = m * mOrigin;
        mDirection = m * mDirection;
        return *this;
    }

private:
    point3d mOrigin;
    vector3d mDirection{0.0, 0.0, 1.0};
};

/// A 2D ray, for work inside a plane.
template <>
class ray<_space2d> {
public:
    ray() = default;
    ray(const point2d& origin, const vector2d& direction) : mOrigin(origin), mDirection(direction) {}

    const point2d& origin() const { return mOrigin; }
    const vector2d& direction() const { return mDirection; }
    point2d pointAt(double t) const { return mOrigin + mDirection * t; }

private:
    point2d mOrigin;
    vector2d mDirection{1.0, 0.0};
};

using ray3d = ray<_space3d>;
using ray2d = ray<_space2d>;

} // namespace oxGeo
