#pragma once
// What the manipulator suites share: an orthographic view without GL (the scene's own projection
// and camera arithmetic), views to look from, placements to put the handle at, and matrix checks.
#include "manipulator/viewrays.h"
#include "scene/glcamera.h"
#include "scene/glviewprojection.h"

#include "oxgeomatrix.h"
#include "oxgeoquaternion.h"

#include <gtest/gtest.h>

#include <cmath>

namespace oxtest {

inline oxGeo::matrix3d translation(const oxGeo::vector3d& v) { return oxGeo::matrix3d().setToTranslation(v); }
inline oxGeo::matrix3d rotation(double degrees, const oxGeo::vector3d& axis, const oxGeo::point3d& centre = {}) {
    return oxGeo::matrix3d().setToRotation(ox::angle::fromDegree(degrees), axis, centre);
}
inline oxGeo::quaternion turn(const oxGeo::vector3d& axis, double degrees) {
    return oxGeo::quaternion(axis, ox::angle::fromDegree(degrees));
}

/// Camera model rotations: looking down -Z (top), from the front and above (oblique), and from
/// the side along world Y (the XY plane edge-on).
inline oxGeo::quaternion topView() { return {}; }
inline oxGeo::quaternion obliqueView() {
    return turn({1, 0, 0}, -60).mult(turn({0, 0, 1}, -120));
}
inline oxGeo::quaternion sideView() { return turn({1, 0, 0}, -90); }

/// A tilted, moved handle: every conjugation shows.
inline oxGeo::matrix3d tiltedPlacement() {
    return translation({2, -1, 0.5}) * rotation(35, {0.2, 0.3, 1});
}

/// 200 x 200 pixels showing 30 units (0.15 a pixel), the camera as a fresh scene has it with the
/// given model rotation.
class orthoRays final : public oxGraphics::iViewRays, public ox::refObj {
public:
    explicit orthoRays(const oxGeo::quaternion& view = {}, double viewSize = 30.0) {
        mProjection.resize(200, 200, viewSize);
        look(view);
    }
    void look(const oxGeo::quaternion& view) {
        ox::refPtr<oxGraphics::openGL::glCamera> camera(new oxGraphics::openGL::glCamera());
        camera->setRotation(view);
        mModelView = camera->modelViewMatrix();
    }
    bool viewRayAt(double x, double y, oxGeo::ray3d& out) const override {
        return mProjection.viewRayAt(x, y, mModelView, out);
    }
    oxGeo::point2d pixelOf(const oxGeo::point3d& world) const { return mProjection.worldToWindow(world, mModelView); }
    /// The view's right, up and towards-the-viewer directions in world space.
    oxGeo::vector3d axis(int i) const {
        oxGeo::matrix3d r;
        oxGraphics::viewRotation(*this, r);
        return {r(0, i), r(1, i), r(2, i)};
    }

private:
    oxGraphics::openGL::glViewProjection mProjection;
    oxGeo::matrix3d mModelView;
};

inline ::testing::AssertionResult matricesNear(const oxGeo::matrix3d& actual, const oxGeo::matrix3d& expected,
                                               double tolerance) {
    if (actual.isEqualTo(expected, tolerance)) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure();
    failure << "matrices differ by more than " << tolerance << "\n actual / expected rows:";
    for (int r = 0; r < 3; ++r) {
        failure << "\n  ";
        for (int c = 0; c < 4; ++c) failure << actual(r, c) << ' ';
        failure << " |  ";
        for (int c = 0; c < 4; ++c) failure << expected(r, c) << ' ';
    }
    return failure;
}

inline oxGeo::vector3d column(const oxGeo::matrix3d& m, int c) { return {m(0, c), m(1, c), m(2, c)}; }
inline oxGeo::point3d originOf(const oxGeo::matrix3d& m) { return m.translation().asPoint(); }

} // namespace oxtest
