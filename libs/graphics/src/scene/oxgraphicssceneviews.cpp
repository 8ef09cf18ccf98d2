// The scene facade: view corrections, standard views and the animated view transfer.
#include "oxscene.h"

#include "glcamera.h"
#include "iscene.h"

#include "oxgeolimits.h"
#include "oxlog.h"

#include <algorithm>
#include <cmath>

namespace oxGraphics {
namespace {

// A correction that is no number would turn every later standard view into nothing.
bool refusedViewCorrection(const oxGeo::vector3d& axis, double angleDeg, const char* logger) {
    if (oxGeo::isFinite(axis) && std::isfinite(angleDeg)) return false;
    OX_LOG_WARN(logger, L"ignored a view correction that is not finite; the previous one stays");
    return true;
}

constexpr double kPi = ox::angle::kPi;
constexpr int kTransferSteps = 15;
constexpr double kTransferStep = 0.067;

oxGeo::quaternion rotationAbout(const oxGeo::vector3d& axis, double radians) {
    return oxGeo::quaternion(axis, ox::angle::fromRadians(radians));
}

// The rotation by `angleDeg` about `axis` through the origin; the identity for a zero axis.
oxGeo::matrix3d correctionMatrix(const oxGeo::vector3d& axis, double angleDeg) {
    oxGeo::matrix3d m;
    if (axis.length() > 0.0) m.setToRotation(ox::angle::fromDegree(angleDeg), axis, oxGeo::point3d());
    return m;
}

oxGeo::quaternion correctionQuaternion(const oxGeo::vector3d& axis, double angleDeg) {
    if (axis.length() == 0.0) return {};
    return rotationAbout(axis, angleDeg * kPi / 180.0);
}

// The in-plane direction of `v`, +Y when it has none.
oxGeo::vector3d inPlane(const oxGeo::vector3d& v) {
    const oxGeo::vector3d flat(v.x(), v.y(), 0.0);
    return flat.length() > 1e-12 ? flat.norm() : oxGeo::vector3d(0.0, 1.0, 0.0);
}

} // namespace

// ---- corrections -----------------------------------------------------------------------------

void scene::setViewPreceding(const oxGeo::vector3d& axis, double angleDeg) {
    if (refusedViewCorrection(axis, angleDeg, "oxGraphics::scene::setViewPreceding")) return;
    ox::mutexLock lock(mTransferLock); // replayed requests read it on the transfer's thread
    mPrecedingAxis = axis;
    mPrecedingAngle = angleDeg;
}
const oxGeo::vector3d& scene::viewPrecedingAxis() const { return mPrecedingAxis; }
double scene::viewPrecedingAngle() const { return mPrecedingAngle; }
void scene::setViewOrientation(const oxGeo::vector3d& axis, double angleDeg) {
    if (refusedViewCorrection(axis, angleDeg, "oxGraphics::scene::setViewOrientation")) return;
    ox::mutexLock lock(mTransferLock);
    mOrientationAxis = axis;
    mOrientationAngle = angleDeg;
}
const oxGeo::vector3d& scene::viewOrientationAxis() const { return mOrientationAxis; }
double scene::viewOrientationAngle() const { return mOrientationAngle; }

oxGeo::matrix3d scene::addViewMatrix() const {
    return correctionMatrix(mPrecedingAxis, mPrecedingAngle) * correctionMatrix(mOrientationAxis, mOrientationAngle);
}

// ---- standard views --------------------------------------------------------------------------

void scene::setFrontView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::front, animate, model, pivot, {});
}
void scene::setBackView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::back, animate, model, pivot, {});
}
void scene::setLeftView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::left, animate, model, pivot, {});
}
void scene::setRightView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::right, animate, model, pivot, {});
}
void scene::setFrontLeftView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::frontLeft, animate, model, pivot, {});
}
void scene::setFrontRightView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::frontRight, animate, model, pivot, {});
}
void scene::setBackLeftView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::backLeft, animate, model, pivot, {});
}
void scene::setBackRightView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::backRight, animate, model, pivot, {});
}
void scene::setTopView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot,
                       const oxGeo::vector3d& screenUp) {
    setStandardView(eViewSetter::top, animate, model, pivot, screenUp);
}
void scene::setBottomView(bool animate, const oxGeo::matrix3d& model, const oxGeo::point3d& pivot,
                          const oxGeo::vector3d& screenUp) {
    setStandardView(eViewSetter::bottom, animate, model, pivot, screenUp);
}
void scene::setCustomViewDirection(double x, double y, double z, bool animate, const oxGeo::point3d& pivot) {
    setStandardView(eViewSetter::custom, animate, oxGeo::matrix3d(), pivot, oxGeo::vector3d(x, y, z));
}

bool scene::transferRunning() const { return mTransferState != eTransferState::idle; }

bool scene::smoothViewActive() const {
    ox::mutexLock lock(mTransferLock);
    return mTransferThread && !mTransferThread->hasFinished();
}

void scene::setStandardView(eViewSetter setter, bool animate, const oxGeo::matrix3d& model,
                            const oxGeo::point3d& pivot, const oxGeo::vector3d& extra) {
    const auto context = mImplementation->glContext();
    if (!context || !context->isValid()) return; // the view is gone
    if (!oxGeo::isFinite(model) || !oxGeo::isFinite(pivot) || !oxGeo::isFinite(extra)) {
        OX_LOG_WARN("oxGraphics::scene::setStandardView", L"ignored a view request with values that are not finite");
        return;
    }
    ox::mutexLock lock(mTransferLock);
    if (transferRunning()) {
        mRequestQueue.push_back({setter, animate, model, pivot, extra, {}});
        return;
    }
    applyViewRequest({setter, animate, model, pivot, extra, {}});
}

void scene::applyViewRequest(const viewRequest_t& request) {
    const eViewSetter setter = request.setter;
    const oxGeo::vector3d& extra = request.extra;
    const ox::refPtr<iCamera> cam = mImplementation->camera();
    if (cam->anglesMode()) {
        // Planar mode: presets of azimuth, elevation and twist; rotation, translation and scale stay.
        switch (setter) {
        case eViewSetter::front: cam->setFrontAngles(); break;
        case eViewSetter::back: cam->setBackAngles(); break;
        case eViewSetter::left: cam->setLeftAngles(); break;
        case eViewSetter::right: cam->setRightAngles(); break;
        case eViewSetter::top: cam->setTopAngles(); break;
        case eViewSetter::bottom: cam->setBottomAngles(); break;
        case eViewSetter::frontLeft:
        case eViewSetter::frontRight:
        case eViewSetter::backLeft:
        case eViewSetter::backRight: {
            // Diagonals look down at 45° from the corner, like their look-at counterparts.
            const double twist = setter == eViewSetter::frontLeft    ? 45.0
                                 : setter == eViewSetter::frontRight ? -45.0
                                 : setter == eViewSetter::backLeft   ? 135.0
                                                                     : -135.0;
            cam->setAzimuth(ox::angle::fromDegree(0.0));
            cam->setElevation(ox::angle::fromDegree(45.0));
            cam->setTwist(ox::angle::fromDegree(twist));
            break;
        }
        case eViewSetter::custom: break; // no planar form of an arbitrary direction
        }
        return;
    }

    const oxGeo::vector3d xAxis(1, 0, 0), zAxis(0, 0, 1);
    oxGeo::quaternion base;
    switch (setter) {
    case eViewSetter::front: base = rotationAbout(xAxis, -kPi / 2); break;
    case eViewSetter::back: base = rotationAbout(xAxis, -kPi / 2).mult(rotationAbout(zAxis, kPi)); break;
    case eViewSetter::left: base = rotationAbout(xAxis, -kPi / 2).mult(rotationAbout(zAxis, kPi / 2)); break;
    case eViewSetter::right: base = rotationAbout(xAxis, -kPi / 2).mult(rotationAbout(zAxis, -kPi / 2)); break;
    case eViewSetter::frontLeft: base = rotationAbout(xAxis, -kPi / 4).mult(rotationAbout(zAxis, kPi / 4)); break;
    case eViewSetter::frontRight: base = rotationAbout(xAxis, -kPi / 4).mult(rotationAbout(zAxis, -kPi / 4)); break;
    case eViewSetter::backLeft: base = rotationAbout(xAxis, -kPi / 4).mult(rotationAbout(zAxis, 3 * kPi / 4)); break;
    case eViewSetter::backRight: base = rotationAbout(xAxis, -kPi / 4).mult(rotationAbout(zAxis, -3 * kPi / 4)); break;
    case eViewSetter::top: {
        // Turn about Z so that the in-plane part of `extra` points up the screen.
        const oxGeo::vector3d up = inPlane(extra);
        base = rotationAbout(zAxis, kPi / 2 - std::atan2(up.y(), up.x()));
        break;
    }
    case eViewSetter::bottom: base = rotationAbout(inPlane(extra), kPi); break;
    case eViewSetter::custom: {
        // Rows: screen right, screen up, towards the viewer; world +Z as far up as it can be.
        const oxGeo::vector3d forward = extra.length() > 1e-12 ? extra.norm() : oxGeo::vector3d(0, 0, -1);
        oxGeo::vector3d right = forward.cross(zAxis);
        if (right.length() < 1e-9) right = forward.cross(oxGeo::vector3d(0, 1, 0));
        right.normIt();
        const oxGeo::vector3d up = right.cross(forward);
        oxGeo::matrix3d rows;
        const oxGeo::vector3d axes[3] = {right, up, -forward};
        for (int r = 0; r < 3; ++r) {
            rows(r, 0) = axes[r].x();
            rows(r, 1) = axes[r].y();
            rows(r, 2) = axes[r].z();
        }
        rows.transposeIt(); // the quaternion reads row-vector layout
        base = oxGeo::quaternion(rows);
        break;
    }
    }
    oxGeo::quaternion q;
    {
        ox::mutexLock lock(mTransferLock); // the corrections may be set from another thread
        q = base.mult(oxGeo::quaternion(request.model))
                .mult(correctionQuaternion(mPrecedingAxis, mPrecedingAngle))
                .mult(correctionQuaternion(mOrientationAxis, mOrientationAngle));
    }

    if (request.animate) {
        const cameraModelState_t state = mImplementation->cameraModelState();
        smoothViewTransfer(q, state.translation, state.scale, request.pivot);
        return;
    }
    // Read through the locked state: a transfer's worker may be writing the camera meanwhile.
    const oxGeo::quaternion r0 = mImplementation->cameraModelState().rotation;
    cam->setRotation(q);
    const oxGeo::quaternion r1 = mImplementation->cameraModelState().rotation;
    translateBackToPivotPoint(r0, r1, request.pivot);
    fireSceneChanged();
}

void scene::translateBackToPivotPoint(const oxGeo::quaternion& from, const oxGeo::quaternion& to,
                                      const oxGeo::point3d& pivot) {
    cameraModelState_t state = mImplementation->cameraModelState();
    state.translation = openGL::translationKeepingPivot(state, from, to, pivot);
    mImplementation->setCameraModelState(state);
}

// ---- the animated transfer -------------------------------------------------------------------

void scene::smoothViewTransfer(const oxGeo::quaternion& q, const oxGeo::vector3d& translation,
                               const oxGeo::vector3d& scale, const oxGeo::point3d& pivot) {
    ox::mutexLock lock(mTransferLock);
    if (mTransferThread && !mTransferThread->hasFinished()) return;
    mTargetRotation = q;
    mTargetTranslation = translation;
    mTargetScale = scale;
    mTargetPivot = pivot;
    if (!mSmoothViewEnabled) {
        runTransferSteps();
        return;
    }
    const eTransferState previous = mTransferState;
    mTransferThread = ox::thread::create(true, ox::thread::ePriority::normal, false, &scene::transferThreadMain, this);
    ox::signalPool::singleton().attach(mTransferThread.get(), &scene::onTransferFinished, this);
    mTransferState = eTransferState::running;
    if (!mTransferThread->start()) {
        // No thread to be had: animate here rather than not at all.
        ox::signalPool::singleton().detach(mTransferThread.get(), &scene::onTransferFinished, this);
        mTransferThread.reset();
        mTransferState = previous;
        runTransferSteps();
    }
}

int scene::transferThreadMain(void* self) {
    static_cast<scene*>(self)->runTransferSteps();
    return 0;
}

void scene::runTransferSteps() {
    const cameraModelState_t start = mImplementation->cameraModelState();
    cameraModelState_t target;
    oxGeo::point3d pivot;
    {
        ox::mutexLock lock(mTransferLock);
        target = {mTargetRotation, mTargetTranslation, mTargetScale};
        pivot = mTargetPivot;
    }
    for (int step = 1; step <= kTransferSteps && !mTransferCancelled; ++step) {
        const double t = std::min(step * kTransferStep, 1.0);
        const double f = (std::sin(t * kPi - kPi / 2) + 1) / 2; // eases in and out
        mImplementation->setCameraInterpolation(start, target, t >= 1.0 ? 1.0 : f);
        translateBackToPivotPoint(start.rotation, mImplementation->cameraModelState().rotation, pivot);
        fireEvent(kEventViewChanged, this, nullptr, nullptr);
    }
}

// Runs on the worker once its transfer has finished: replays the requests queued meanwhile, in
// order. New requests keep queuing until the queue is empty; a replayed animated request starts
// the next transfer, whose own completion carries on with the rest.
void scene::onTransferFinished(ox::thread* thread, void* self) {
    auto* me = static_cast<scene*>(self);
    ox::signalPool::singleton().detach(thread, &scene::onTransferFinished, self);
    for (;;) {
        viewRequest_t request;
        {
            ox::mutexLock lock(me->mTransferLock);
            if (me->mTransferCancelled || me->mRequestQueue.empty()) {
                me->mTransferState = eTransferState::idle;
                return;
            }
            request = me->mRequestQueue.front();
            me->mRequestQueue.pop_front();
            me->mTransferState = eTransferState::replaying;
        }
        me->applyViewRequest(request);
        ox::mutexLock lock(me->mTransferLock);
        if (me->mTransferState == eTransferState::running) return; // the next transfer took over
    }
}

void scene::stopTransfers() {
    mTransferCancelled = true;
    // A replay may start one more transfer before it sees the flag; wait for each in turn.
    for (;;) {
        ox::refPtr<ox::thread> running;
        {
            ox::mutexLock lock(mTransferLock);
            running = mTransferThread;
        }
        if (!running) return;
        ox::signalPool::singleton().detach(running.get(), &scene::onTransferFinished, this);
        running->join();
        ox::mutexLock lock(mTransferLock);
        if (mTransferThread == running) {
            mTransferThread.reset();
            return;
        }
    }
}

// ---- view tests ------------------------------------------------------------------------------

// The same form for every view: the model's X axis, carried by M = Ro · Rp · model, must lie
// along world Y (|dot| = 1 within 0.05), and the sign of one coordinate of the direction of the
// view ray through window pixel (0, 0) tells the view apart. For a model turned a quarter about
// Z (its X along world Y) the setters give: front x < 0, back x > 0, left y > 0, right y < 0,
// top z < 0, bottom z > 0.
bool scene::isInView(eViewSetter view, const oxGeo::matrix3d& model) const {
    ox::mutexLock lock(mTransferLock);
    oxGeo::ray3d ray;
    if (!mImplementation->getViewRayAt(0, 0, ray)) return false;
    const oxGeo::vector3d d = ray.direction();
    const oxGeo::matrix3d m = correctionMatrix(mOrientationAxis, mOrientationAngle) *
                              correctionMatrix(mPrecedingAxis, mPrecedingAngle) * model;
    const bool aligned = std::fabs(std::fabs((m * oxGeo::vector3d(1, 0, 0)).dot(oxGeo::vector3d(0, 1, 0))) - 1.0) <= 0.05;
    if (!aligned) return false;
    // "Negative" means clearly so: the other coordinates of a main view are rounding noise.
    constexpr double kClear = 0.5;
    switch (view) {
    case eViewSetter::front: return d.x() < -kClear;
    case eViewSetter::back: return d.x() > kClear;
    case eViewSetter::left: return d.y() > kClear;
    case eViewSetter::right: return d.y() < -kClear;
    case eViewSetter::top: return d.z() < -kClear;
    case eViewSetter::bottom: return d.z() > kClear;
    default: return false;
    }
}

bool scene::isInFrontView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const {
    return isInView(eViewSetter::front, model);
}
bool scene::isInBackView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const {
    return isInView(eViewSetter::back, model);
}
bool scene::isInLeftView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const {
    return isInView(eViewSetter::left, model);
}
bool scene::isInRightView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const {
    return isInView(eViewSetter::right, model);
}
bool scene::isInTopView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const {
    return isInView(eViewSetter::top, model);
}
bool scene::isInBottomView(bool, const oxGeo::matrix3d& model, const oxGeo::point3d&) const {
    return isInView(eViewSetter::bottom, model);
}

} // namespace oxGraphics
