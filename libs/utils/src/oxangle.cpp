#include "oxangle.h"

#include <cmath>

namespace ox {

angle& angle::normIt() {
    // Work in degrees so that whole-degree inputs (450°) land exactly on whole degrees (90°).
    double d = std::fmod(degree(), 360.0);
    if (d <= -180.0) d += 360.0;
    else if (d > 180.0) d -= 360.0;
    mRadians = d * kPi / 180.0;
    return *this;
}

double angle::degreeBetweenZeroAndTwoPi() const {
    double d = std::fmod(degree(), 360.0);
    if (d < 0.0) d += 360.0;
    return d >= 360.0 ? 0.0 : d;
}

} // namespace ox
