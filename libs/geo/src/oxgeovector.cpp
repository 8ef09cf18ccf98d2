#include "oxgeovector.h"

#include "oxgeomatrix.h"

#include <cmath>

namespace oxGeo {

vector3d& vector3d::transformBy(const matrix3d& m) { return *this = m * *this; }

ox::angle vector3d::angleTo(const vector3d& other) const {
    // atan2 of sine and cosine parts stays accurate near 0 and π, where acos of the dot loses
    // half its digits.
    const double s = cross(other).length();
    const double c = dot(other);
    if (s == 0.0 && c == 0.0) return ox::angle();
    return ox::angle::fromRadians(std::atan2(s, c));
}

ox::angle vector3d::angleTo(const vector3d& other, const vector3d& referenceNormal) const {
    const vector3d n = referenceNormal.norm();
    const vector3d a = *this - n * dot(n);
    const vector3d b = other - n * other.dot(n);
    const double s = a.cross(b).dot(n);
    const double c = a.dot(b);
    if (s == 0.0 && c == 0.0) return ox::angle();
    double r = std::atan2(s, c);
    if (r < 0.0) {
        r += 2.0 * ox::angle::kPi;
        // A tiny negative angle would round up to exactly 2π, outside the half-open range.
        if (r >= 2.0 * ox::angle::kPi) r = 0.0;
    }
    return ox::angle::fromRadians(r);
}

} // namespace oxGeo
