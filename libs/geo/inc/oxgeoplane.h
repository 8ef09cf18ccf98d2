#pragma once
// oxGeo::plane3d: an infinite plane given by a point on it and its normal.
#include "oxgeo_export.h"
#include "oxgeopoint.h"
#include "oxgeovector.h"

namespace oxGeo {

struct _space3d;
template <class Space>
class ray;

class OX_GEO_API plane3d {
public:
    /// The XY plane through the origin.
    plane3d() = default;
    /// The normal is stored normalised. A zero normal is a programming error: it asserts and
    /// the plane keeps the Z axis as its normal.
    plane3d(const point3d& origin, const vector3d& normal);

    const point3d& origin() const { return mOrigin; }
    /// Unit length.
    const vector3d& normal() const { return mNormal; }

    /// Signed distance: positive on the side the normal points to.
    double distanceTo(const point3d& p) const { return (p - mOrigin).dot(mNormal); }
    /// The foot of the perpendicular from `p`.
    point3d projectPoint(const point3d& p) const { return p - mNormal * distanceTo(p); }

    /// Intersects the line carried by the ray (hits behind its origin count too, as view rays
    /// may start anywhere along the view direction). False, `out` untouched, when the direction
    /// is parallel to the plane within 1e-12 relative to its length, or is zero.
    bool getIntersection(const ray<_space3d>& r, point3d& out) const;
    /// Intersects the segment a–b. False, `out` untouched, when the segment is parallel to the
    /// plane (within 1e-12 relative to its length, or of zero length), or when the hit lies
    /// beyond either end by more than `tolerance` (a distance along the segment's line). A hit
    /// just outside an end but within `tolerance` is reported where the line meets the plane.
    bool getIntersection(const point3d& a, const point3d& b, point3d& out, double tolerance) const;

private:
    point3d mOrigin;
    vector3d mNormal{0.0, 0.0, 1.0};
};

} // namespace oxGeo

// getIntersection takes a ray; make it usable from here.
#include "oxgeoray.h"
