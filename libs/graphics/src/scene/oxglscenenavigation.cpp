// glScene: view rays, window conversions, pans, zooms, fits and camera drags.
//
// All of it is camera arithmetic on the CPU, consistent with what the frame loads into GL: the
// orthographic projection of glViewProjection and the camera's model-view matrix. None of it
// needs the context current, so the animated view transfer can call it from its thread.
#include "oxglscene.h"

#include <algorithm>
#include <cmath>

namespace oxGraphics::openGL {
namespace {

constexpr double kWheelStep = 1.25;
constexpr double kDegreesPerWindowHeight = 180.0;

} // namespace

oxGeo::point2d glScene::worldToWinCoordinates(const oxGeo::point3d& world) const {
    if (!contextAlive()) return {};
    return mProjection.worldToWindow(world, modelView());
}

bool glScene::getViewRayAt(int x, int y, oxGeo::ray3d& out) const {
    if (!contextAlive()) return false;
    return mProjection.viewRayAt(x, y, modelView(), out);
}

bool glScene::getViewRayAt(int x, int y, oxGeo::ray3d& ray, int /*flags*/) const { return getViewRayAt(x, y, ray); }

void glScene::getViewVectors(int, int, oxGeo::vector3d& viewDirection, oxGeo::vector3d& upDirection) const {
    if (!contextAlive()) return;
    oxGeo::matrix3d eyeToWorld;
    if (!modelView().inverse(eyeToWorld)) return;
    viewDirection = (eyeToWorld * oxGeo::vector3d(0, 0, -1)).norm();
    upDirection = (eyeToWorld * oxGeo::vector3d(0, 1, 0)).norm();
}

double glScene::viewSize() const { return mProjection.viewSize(); }

void glScene::setViewSize(double viewSize) {
    if (!contextAlive() || !(viewSize > 0.0) || !std::isfinite(viewSize)) return;
    mProjection.resize(mViewportWidth, mViewportHeight, viewSize);
}

oxGeo::point2d glScene::usableViewCentre() const {
    return {mViewportWidth / 2.0 - mOffsetFocus[2] + mOffsetFocus[0],
            mViewportHeight / 2.0 - mOffsetFocus[3] + mOffsetFocus[1]};
}

void glScene::saveView(iSavedView** out) {
    if (!contextAlive() || out == nullptr) return;
    if (*out != nullptr) {
        (*out)->release();
        *out = nullptr;
    }
    mCamera->clone(out);
}

void glScene::restoreView(iSavedView* view) {
    if (contextAlive()) mCamera->assign(view);
}

ox::refPtr<iCamera> glScene::camera() const { return mCamera; }

void glScene::setCameraAnglesMode(bool anglesMode) {
    if (contextAlive()) mCamera->setAnglesMode(anglesMode);
}

cameraModelState_t glScene::cameraModelState() const { return mCamera->modelState(); }

void glScene::setCameraModelState(const cameraModelState_t& state) {
    if (contextAlive()) mCamera->setModelState(state);
}

void glScene::setCameraInterpolation(const cameraModelState_t& from, const cameraModelState_t& to, double f) {
    if (contextAlive()) mCamera->setModelState(interpolateModelState(from, to, f));
}

// Shifts what is shown by `delta` in eye space (x right, y up).
void glScene::panEye(const oxGeo::vector3d& delta) {
    if (mCamera->anglesMode()) {
        const double k = 1.0 / mCamera->eye().z();
        const oxGeo::point3d eye = mCamera->eye();
        mCamera->setEye(oxGeo::point3d(eye.x() - delta.x() / k, eye.y() - delta.y() / k, eye.z()));
        return;
    }
    // Eye coordinates are R_L·(x - eye) with rows s, u, -f: moving the eye by d shifts them by
    // (-s·d, -u·d, f·d).
    const oxGeo::vector3d f = (mCamera->centre() - oxGeo::vector3d(mCamera->eye())).norm();
    const oxGeo::vector3d s = f.cross(mCamera->up()).norm();
    const oxGeo::vector3d u = s.cross(f);
    mCamera->pan(-(s * delta.x() + u * delta.y()) + f * delta.z());
}

void glScene::moveCamera(int x1, int y1, int x2, int y2) {
    if (!contextAlive() || !mProjection.hasExtents()) return;
    panEye(mProjection.windowToEye(x2, y2, 0) - mProjection.windowToEye(x1, y1, 0));
}

void glScene::zoomAbout(double x, double y, double factor) {
    if (!mProjection.hasExtents() || !(factor > 0.0) || !std::isfinite(factor)) return;
    const oxGeo::point3d before = mProjection.windowToEye(x, y, 0);
    mProjection.resize(mViewportWidth, mViewportHeight, mProjection.viewSize() / factor);
    const oxGeo::point3d after = mProjection.windowToEye(x, y, 0);
    panEye(after - before); // the eye point that was under (x, y) is there again
}

void glScene::zoomDynamic(int x, int y, double factor) {
    if (contextAlive()) zoomAbout(x, y, factor);
}

void glScene::zoomWheel(int x, int y, bool zoomIn) {
    if (contextAlive()) zoomAbout(x, y, zoomIn ? kWheelStep : 1.0 / kWheelStep);
}

void glScene::zoom(int x1, int y1, int x2, int y2) {
    if (!contextAlive() || !mProjection.hasExtents()) return;
    const oxGeo::point3d a = mProjection.windowToEye(x1, y1, 0);
    const oxGeo::point3d b = mProjection.windowToEye(x2, y2, 0);
    oxGeo::boundBox3d eyeBox;
    eyeBox.grow(a);
    eyeBox.grow(b);
    fitEyeBox(eyeBox, 0.0);
}

void glScene::fitBox(const oxGeo::boundBox3d& box, double margin) {
    if (!contextAlive() || !box.isValid() || !mProjection.hasExtents()) return;
    oxGeo::matrix3d mv = modelView(), eyeToWorld;
    if (!mv.inverse(eyeToWorld)) {
        // A zero scale or rotation shows nothing; a fit is the host's way back to the content.
        mCamera->normalize();
        mv = modelView();
    }
    const oxGeo::point3d lo = box.min(), hi = box.max();
    oxGeo::boundBox3d eyeBox;
    for (int corner = 0; corner < 8; ++corner)
        eyeBox.grow(mv * oxGeo::point3d(corner & 1 ? hi.x() : lo.x(), corner & 2 ? hi.y() : lo.y(),
                                        corner & 4 ? hi.z() : lo.z()));
    fitEyeBox(eyeBox, margin);
}

// Zooms so the eye-space box fills the usable view area less `margin`, then centres it there.
// The usable area is centred on usableViewCentre() and reaches, symmetrically, as far as the
// nearer of the two offset margins on each axis.
void glScene::fitEyeBox(const oxGeo::boundBox3d& eyeBox, double margin) {
    const oxGeo::point2d centre = usableViewCentre();
    const double halfWidth = std::min(centre.x() - mOffsetFocus[0], mViewportWidth - mOffsetFocus[2] - centre.x());
    const double halfHeight = std::min(centre.y() - mOffsetFocus[1], mViewportHeight - mOffsetFocus[3] - centre.y());
    const double usableWidth = std::max(1.0, 2.0 * halfWidth);
    const double usableHeight = std::max(1.0, 2.0 * halfHeight);
    const double free = std::clamp(1.0 - margin, 0.05, 1.0);
    const double longerSide = std::max(mViewportWidth, mViewportHeight);
    const oxGeo::vector3d size = eyeBox.max() - eyeBox.min();
    // Eye units per pixel are viewSize / longer side; the box must fit the usable pixels.
    const double needed = std::max(size.x() / (usableWidth * free), size.y() / (usableHeight * free)) * longerSide;
    if (needed > 0.0 && std::isfinite(needed)) mProjection.resize(mViewportWidth, mViewportHeight, needed);
    const oxGeo::point3d target = mProjection.windowToEye(centre.x(), centre.y(), 0);
    const oxGeo::point3d boxCentre = eyeBox.center();
    // The depth range is ±100 view sizes about the eye: a fit to a small part far from the eye
    // would clip it, so the box centre is also brought to the middle of that range.
    panEye(oxGeo::vector3d(target.x() - boxCentre.x(), target.y() - boxCentre.y(), -boxCentre.z()));
}

void glScene::centreOn(const oxGeo::point3d& world) {
    if (!contextAlive() || !mProjection.hasExtents()) return;
    const oxGeo::point3d eye = modelView() * world;
    const oxGeo::point2d centre = usableViewCentre();
    const oxGeo::point3d target = mProjection.windowToEye(centre.x(), centre.y(), 0);
    panEye(oxGeo::vector3d(target.x() - eye.x(), target.y() - eye.y(), 0));
}

oxGeo::point3d glScene::viewCentreNear(const oxGeo::point3d& reference) const {
    const oxGeo::point2d centre = usableViewCentre();
    oxGeo::ray3d ray;
    if (!mProjection.viewRayAt(centre.x(), centre.y(), modelView(), ray)) return reference;
    const double t = (reference - ray.origin()).dot(ray.direction());
    return ray.pointAt(t);
}

void glScene::turnModel(const oxGeo::quaternion& eyeTurn, const oxGeo::point3d& pivot) {
    // An eye-space turn is a world-space turn about the axis seen through the look-at matrix.
    const oxGeo::matrix3d mv = modelView();
    oxGeo::matrix3d lookAtRotation = mv * mCamera->modelTransform().inverse();
    lookAtRotation.setTranslation(oxGeo::vector3d());
    const oxGeo::quaternion eyeToWorldTurn(lookAtRotation); // row layout: the inverse of the look-at rotation
    const oxGeo::quaternion worldTurn = eyeToWorldTurn.mult(eyeTurn).mult(eyeToWorldTurn.conjugate());
    cameraModelState_t state = mCamera->modelState();
    const oxGeo::quaternion from = state.rotation;
    const oxGeo::quaternion to = worldTurn.mult(from).norm();
    state.translation = translationKeepingPivot(state, from, to, pivot);
    state.rotation = to;
    mCamera->setModelState(state);
}

void glScene::rotateCamera(int x1, int y1, int x2, int y2) {
    if (!contextAlive()) return;
    const oxGeo::boundBox3d box = providersBoundingBox(false);
    rotateCamera(x1, y1, x2, y2, viewCentreNear(box.isValid() ? box.center() : oxGeo::point3d()));
}

void glScene::rotateCamera(int x1, int y1, int x2, int y2, const oxGeo::point3d& pivot) {
    if (!contextAlive() || mViewportHeight <= 0) return;
    const double perPixel = kDegreesPerWindowHeight / mViewportHeight;
    // Differences in double: positions far apart would overflow an int subtraction.
    const double aboutUp = (static_cast<double>(x2) - x1) * perPixel;    // drag right: the front turns right
    const double aboutRight = (static_cast<double>(y2) - y1) * perPixel; // drag down: the top tips towards the viewer
    if (mCamera->anglesMode()) {
        // The planar mode turns about its own axes: azimuth about Z, elevation about X.
        mCamera->setAzimuth(ox::angle::fromDegree(mCamera->azimuth().degree() - aboutUp));
        mCamera->setElevation(ox::angle::fromDegree(mCamera->elevation().degree() - aboutRight));
        return;
    }
    const oxGeo::quaternion turn = oxGeo::quaternion(oxGeo::vector3d(0, 1, 0), ox::angle::fromDegree(aboutUp))
                                       .mult(oxGeo::quaternion(oxGeo::vector3d(1, 0, 0), ox::angle::fromDegree(aboutRight)));
    turnModel(turn, pivot);
}

} // namespace oxGraphics::openGL
