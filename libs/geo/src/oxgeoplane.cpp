#include "oxgeoplane.h"

#include "oxgeoray.h"

#include "oxassert.h"

#include <cmath>

namespace oxGeo {

plane3d::plane3d(const point3d& origin, const vector3d& normal) : mOrigin(origin) {
    if (normal.isZeroLength()) {
        OX_ASSERT(!normal.isZeroLength());
        return;
    }
    mNormal = normal.norm();
}

bool plane3d::getIntersection(const ray<_space3d>& r, point3d& out) const {
    const vector3d& d = r.direction();
    const double denom = mNormal.dot(d);
    // Parallel when the direction's component along the normal is negligible against its length.
    if (!(std::fabs(denom) > 1e-12 * d.length())) return false;
    const double t = mNormal.dot(mOrigin - r.origin()) / denom;
    out = r.pointAt(t);
    return true;
}

bool plane3d::getIntersection(const point3d& a, const point3d& b, point3d& out, double tolerance) const {
    const vector3d d = b - a;
    const double length = d.length();
    const double denom = mNormal.dot(d);
    if (!(std::fabs(denom) > 1e-12 * length)) return false;
    const double t = mNormal.dot(mOrigin - a) / denom;
    // Distance of the hit beyond the nearer end, measured along the segment.
    const double beyond = t < 0.0 ? -t * length : (t > 1.0 ? (t - 1.0) * length : 0.0);
    if (beyond > tolerance) return false;
    out = a + d * t;
    return true;
}

} // namespace oxGeo
