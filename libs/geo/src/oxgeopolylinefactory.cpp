#include "oxgeopolylinefactory.h"

#include <algorithm>
#include <cmath>

namespace oxGeo::polylinefactory {
namespace {

constexpr double kTwoPi = 2.0 * ox::angle::kPi;
constexpr double kMinSegmentsPerCircle = 8.0;
constexpr double kMaxSegmentsPerCircle = 65536.0;
// Arcs of many turns are bounded as a whole, so no angle can ask for unbounded memory.
constexpr double kMaxSegments = 1 << 20;

/// r(1 − cos(φ/2)) for segments of angle φ, written as 2r·sin²(φ/4) to stay exact for the tiny
/// angles a fine precision asks for (1 − cos cancels there).
double sagitta(double radius, double segmentAngle) {
    const double s = std::sin(0.25 * segmentAngle);
    return 2.0 * radius * s * s;
}

void generate(double radius, double sweep, double precision, const point3d& centre, polyline3d& out) {
    out.clear();
    const double r = std::fabs(radius);
    const int n = segmentCount(r, sweep, precision);
    out.reserve(static_cast<std::size_t>(n) + 1);
    for (int k = 0; k <= n; ++k) {
        // k / n is exactly 1 for the last point, so an arc ends exactly at its angle.
        const double a = n == 0 ? 0.0 : sweep * (static_cast<double>(k) / n);
        out.addPoint({centre.x() + r * std::cos(a), centre.y() + r * std::sin(a), centre.z()});
    }
}

} // namespace

int segmentCount(double radius, double sweepRadians, double precision) {
    const double sweep = std::fabs(sweepRadians);
    if (!(sweep > 0.0) || !std::isfinite(sweep)) return 0;
    const double fraction = sweep / kTwoPi;
    const int minN = static_cast<int>(std::clamp(std::ceil(kMinSegmentsPerCircle * fraction - 1e-9), 1.0, kMaxSegments));
    const int maxN =
        static_cast<int>(std::clamp(std::ceil(kMaxSegmentsPerCircle * fraction), static_cast<double>(minN), kMaxSegments));
    const double r = std::fabs(radius);
    if (!(r > 0.0) || !std::isfinite(r)) return minN;
    if (!(precision > 0.0)) return maxN;
    if (precision >= 2.0 * r) return minN;

    // Largest segment angle whose sagitta is within the precision: 1 − cos(φ/2) = p/r.
    const double maxSegmentAngle = 4.0 * std::asin(std::sqrt(0.5 * precision / r));
    const double estimate = std::ceil(sweep / maxSegmentAngle);
    int n = static_cast<int>(std::clamp(estimate, static_cast<double>(minN), static_cast<double>(maxN)));
    // The estimate can be one off through rounding; settle on the exact smallest count.
    while (n > minN && sagitta(r, sweep / (n - 1)) <= precision) --n;
    while (n < maxN && sagitta(r, sweep / n) > precision) ++n;
    return n;
}

void generateCircularPolyline(double radius, double precision, const point3d& centre, polyline3d& out) {
    generate(radius, kTwoPi, precision, centre, out);
    // Close exactly: the computed end point differs from the start in the last bits.
    if (out.size() > 1) out[out.size() - 1] = out[0];
}

void generateArcPolyline(double radius, ox::angle angle, double precision, const point3d& centre, polyline3d& out) {
    generate(radius, angle.radians(), precision, centre, out);
}

} // namespace oxGeo::polylinefactory
