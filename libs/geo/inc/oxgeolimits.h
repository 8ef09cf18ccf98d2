#pragma once
// Which numbers count as geometry. Hosts hand the library coordinates from files and from their
// own arithmetic; NaN, infinities and magnitudes no drawing can resolve are bad data, and every
// place that takes geometry in asks these functions before it keeps a value.
#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeoquaternion.h"
#include "oxgeovector.h"

#include <cmath>

namespace oxGeo {

/// The largest coordinate magnitude treated as geometry. GL draws in single precision, whose step
/// at 1e15 is already over 10^8 units, and products of larger coordinates (boxes, fits, matrix
/// products) head for overflow.
inline constexpr double kMaxCoordinate = 1e15;

inline bool isUsableCoordinate(double v) { return std::isfinite(v) && std::fabs(v) <= kMaxCoordinate; }
inline bool isUsable(const point3d& p) {
    return isUsableCoordinate(p.x()) && isUsableCoordinate(p.y()) && isUsableCoordinate(p.z());
}
inline bool isUsable(const vector3d& v) {
    return isUsableCoordinate(v.x()) && isUsableCoordinate(v.y()) && isUsableCoordinate(v.z());
}

/// Every element finite (a placement or camera matrix may scale freely, but not to NaN).
inline bool isFinite(const matrix3d& m) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (!std::isfinite(m(r, c))) return false;
    return true;
}
inline bool isFinite(const vector3d& v) { return std::isfinite(v.x()) && std::isfinite(v.y()) && std::isfinite(v.z()); }
inline bool isFinite(const point3d& p) { return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z()); }
inline bool isFinite(const quaternion& q) {
    return std::isfinite(q.w()) && std::isfinite(q.x()) && std::isfinite(q.y()) && std::isfinite(q.z());
}

} // namespace oxGeo
