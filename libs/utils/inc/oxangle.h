#pragma once
// ox::angle: an angle value stored in radians.
#include "oxutils_export.h"

namespace ox {

class OX_UTILS_API angle {
public:
    static constexpr double kPi = 3.14159265358979323846;

    constexpr angle() = default;
    static constexpr angle fromDegree(double degrees) { return angle(degrees * kPi / 180.0); }
    static constexpr angle fromRadians(double radians) { return angle(radians); }

    constexpr double degree() const { return mRadians * 180.0 / kPi; }
    constexpr double radians() const { return mRadians; }
    constexpr void setValue(const angle& other) { mRadians = other.mRadians; }

    /// Normalises in place into (-180°, 180°]: 450° becomes 90°, 270° becomes -90°, -180° becomes 180°.
    angle& normIt();
    /// The angle in degrees in [0°, 360°).
    double degreeBetweenZeroAndTwoPi() const;

    angle& operator/=(double divisor) { mRadians /= divisor; return *this; }
    friend constexpr angle operator-(const angle& a, const angle& b) { return angle(a.mRadians - b.mRadians); }
    friend constexpr angle operator+(const angle& a, const angle& b) { return angle(a.mRadians + b.mRadians); }
    friend constexpr angle operator-(const angle& a) { return angle(-a.mRadians); }
    friend constexpr bool operator==(const angle& a, const angle& b) { return a.mRadians == b.mRadians; }
    friend constexpr bool operator<(const angle& a, const angle& b) { return a.mRadians < b.mRadians; }

private:
    constexpr explicit angle(double radians) : mRadians(radians) {}
    double mRadians = 0.0;
};

} // namespace ox
