#include "oxgeopolyline.h"

#include <algorithm>
#include <cmath>

namespace oxGeo {
namespace {

double distanceToSegment(const point2d& p, const point2d& a, const point2d& b) {
    const vector2d ab = b - a;
    const double len2 = ab.dot(ab);
    double t = len2 > 0.0 ? (p - a).dot(ab) / len2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return p.distanceTo(a + ab * t);
}

} // namespace

polyline2d& polyline2d::transformBy(const matrix3d& m) {
    for (point2d& p : mPoints) p = (m * point3d(p)).asPoint2d();
    return *this;
}

bool polyline2d::isPointInside(const point2d& p) const {
    const std::size_t n = mPoints.size();
    if (n < 3) return false;
    const boundBox2d box = boundingBox();
    const double tolerance = 1e-9 * box.size().length();
    if (!box.contains(p, tolerance)) return false;

    bool inside = false;
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
        const point2d& a = mPoints[j];
        const point2d& b = mPoints[i];
        if (distanceToSegment(p, a, b) <= tolerance) return true;
        // Crossing test of a ray towards +x. The half-open comparison counts a vertex the ray
        // passes through exactly once, and never counts horizontal edges.
        if ((a.y() > p.y()) != (b.y() > p.y())) {
            const double x = a.x() + (p.y() - a.y()) * (b.x() - a.x()) / (b.y() - a.y());
            if (p.x() < x) inside = !inside;
        }
    }
    return inside;
}

double polyline2d::length() const {
    double sum = 0.0;
    for (std::size_t i = 1; i < mPoints.size(); ++i) sum += mPoints[i - 1].distanceTo(mPoints[i]);
    return sum;
}

boundBox2d polyline2d::boundingBox() const {
    boundBox2d box;
    for (const point2d& p : mPoints) box.grow(p);
    return box;
}

void polyline3d::addPolyline2d(const polyline2d& p) {
    mPoints.reserve(mPoints.size() + p.size());
    for (const point2d& q : p.points()) mPoints.emplace_back(q);
}

polyline3d& polyline3d::setZComponent(double z) {
    for (point3d& p : mPoints) p.setZ(z);
    return *this;
}

polyline3d& polyline3d::transformBy(const matrix3d& m) {
    for (point3d& p : mPoints) p = m * p;
    return *this;
}

double polyline3d::length() const {
    double sum = 0.0;
    for (std::size_t i = 1; i < mPoints.size(); ++i) sum += mPoints[i - 1].distanceTo(mPoints[i]);
    return sum;
}

boundBox3d polyline3d::boundingBox() const {
    boundBox3d box;
    for (const point3d& p : mPoints) box.grow(p);
    return box;
}

} // namespace oxGeo
