#include "viewrays.h"

#include "oxscene.h"

#include <cmath>

namespace oxGraphics {

bool viewRotation(const iViewRays& views, oxGeo::matrix3d& out) {
    oxGeo::ray3d at, right, below;
    if (!views.viewRayAt(0, 0, at) || !views.viewRayAt(1, 0, right) || !views.viewRayAt(0, 1, below)) return false;
    const oxGeo::vector3d x = (right.origin() - at.origin()).norm();
    const oxGeo::vector3d y = (at.origin() - below.origin()).norm();
    const oxGeo::vector3d z = -at.direction().norm();
    if (x.isZeroLength() || y.isZeroLength() || z.isZeroLength()) return false;
    out.setCoordSystem(oxGeo::point3d(), x, y, z);
    return true;
}

double pixelSizeIn(const iViewRays& views, const oxGeo::matrix3d& worldToFrame) {
    oxGeo::ray3d at, right;
    if (!views.viewRayAt(0, 0, at) || !views.viewRayAt(1, 0, right)) return 0.0;
    return (worldToFrame * (right.origin() - at.origin())).length();
}

ox::refPtr<sceneViewRays> sceneViewRays::create(const ox::refPtr<scene>& view) {
    return ox::refPtr<sceneViewRays>(new sceneViewRays(view));
}

sceneViewRays::sceneViewRays(const ox::refPtr<scene>& view) : mScene(view) {}
sceneViewRays::~sceneViewRays() = default;

bool sceneViewRays::viewRayAt(double x, double y, oxGeo::ray3d& out) const {
    if (!mScene || !std::isfinite(x) || !std::isfinite(y)) return false;
    const double fx = std::floor(x), fy = std::floor(y);
    // Whole pixels far outside any window would overflow an int; nothing is picked out there.
    if (std::fabs(fx) > 1e8 || std::fabs(fy) > 1e8) return false;
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    // The scene leaves the ray as given when it has none: a zero direction marks that.
    oxGeo::ray3d at{oxGeo::point3d(), oxGeo::vector3d()};
    mScene->getViewRayAt(ix, iy, at);
    if (at.direction().isZeroLength()) return false;
    if (fx == x && fy == y) {
        out = at;
        return true;
    }
    oxGeo::ray3d right, below;
    mScene->getViewRayAt(ix + 1, iy, right);
    mScene->getViewRayAt(ix, iy + 1, below);
    const oxGeo::point3d origin =
        at.origin() + (right.origin() - at.origin()) * (x - fx) + (below.origin() - at.origin()) * (y - fy);
    out = oxGeo::ray3d(origin, at.direction());
    return true;
}

} // namespace oxGraphics
