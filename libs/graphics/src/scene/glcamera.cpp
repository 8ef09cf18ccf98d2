#include "glcamera.h"

#include "oxgeolimits.h"
#include "oxlog.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <algorithm>
#include <cmath>

namespace oxGraphics::openGL {
namespace {

float normalisedDegrees(ox::angle a) { return static_cast<float>(a.normIt().degree()); }

// A value that is no number (or a look-at without a direction) would blank every later frame and
// every fit after it, so the camera keeps what it has. A zero scale or rotation is a value
// normalize() repairs, and the fits do so.
bool refused(bool usable, const char* logger) {
    if (!usable) OX_LOG_WARN(logger, L"ignored a camera value that is not a finite number");
    return !usable;
}

bool isUsableState(const cameraModelState_t& state) {
    return oxGeo::isFinite(state.rotation) && oxGeo::isFinite(state.translation) && oxGeo::isFinite(state.scale);
}

oxGeo::matrix3d scaleMatrix(const oxGeo::vector3d& s) {
    oxGeo::matrix3d m;
    m(0, 0) = s.x();
    m(1, 1) = s.y();
    m(2, 2) = s.z();
    return m;
}

oxGeo::matrix3d rotationAbout(double degrees, const oxGeo::vector3d& axis) {
    oxGeo::matrix3d m;
    m.setToRotation(ox::angle::fromDegree(degrees), axis, oxGeo::point3d());
    return m;
}

// The same matrix gluLookAt builds.
oxGeo::matrix3d lookAtMatrix(const oxGeo::point3d& eye, const oxGeo::vector3d& centre, const oxGeo::vector3d& up) {
    const oxGeo::vector3d f = (centre - oxGeo::vector3d(eye)).norm();
    const oxGeo::vector3d s = f.cross(up).norm();
    const oxGeo::vector3d u = s.cross(f);
    oxGeo::matrix3d m;
    const oxGeo::vector3d rows[3] = {s, u, -f};
    for (int r = 0; r < 3; ++r) {
        m(r, 0) = rows[r].x();
        m(r, 1) = rows[r].y();
        m(r, 2) = rows[r].z();
        m(r, 3) = -rows[r].dot(oxGeo::vector3d(eye));
    }
    return m;
}

} // namespace

glCamera::glCamera()
    : mEye(0.0, 0.0, 1.0), mUp(0.0, 1.0, 0.0), mCentre(0.0, 0.0, 0.0), mRotation(1.0, 0.0, 0.0, 0.0),
      mTranslation(0.0, 0.0, 0.0), mScale(1.0, 1.0, 1.0) {}

glCamera::glCamera(const glCamera& other) : iRefCount(), iRefObj(), iCamera(), iSavedView(), ox::refObj() {
    copyFieldsFrom(other);
}

void glCamera::copyFieldsFrom(const glCamera& other) {
    // Lock both in a fixed order; a camera is never copied from itself here.
    std::scoped_lock lock(mMutex, other.mMutex);
    mAzimuth = other.mAzimuth;
    mElevation = other.mElevation;
    mTwist = other.mTwist;
    mEye = other.mEye;
    mAnglesMode = other.mAnglesMode;
    mUp = other.mUp;
    mCentre = other.mCentre;
    mRotation = other.mRotation;
    mTranslation = other.mTranslation;
    mScale = other.mScale;
}

void glCamera::setEye(const oxGeo::point3d& eye) {
    if (refused(oxGeo::isFinite(eye), "oxGraphics::openGL::glCamera::setEye")) return;
    std::lock_guard lock(mMutex);
    mEye = eye;
}

void glCamera::setAzimuth(ox::angle azimuth) {
    if (refused(std::isfinite(azimuth.radians()), "oxGraphics::openGL::glCamera::setAzimuth")) return;
    std::lock_guard lock(mMutex);
    mAzimuth = normalisedDegrees(azimuth);
}
ox::angle glCamera::azimuth() const {
    std::lock_guard lock(mMutex);
    return ox::angle::fromDegree(mAzimuth);
}
void glCamera::setElevation(ox::angle elevation) {
    if (refused(std::isfinite(elevation.radians()), "oxGraphics::openGL::glCamera::setElevation")) return;
    std::lock_guard lock(mMutex);
    mElevation = normalisedDegrees(elevation);
}
ox::angle glCamera::elevation() const {
    std::lock_guard lock(mMutex);
    return ox::angle::fromDegree(mElevation);
}
void glCamera::setTwist(ox::angle twist) {
    if (refused(std::isfinite(twist.radians()), "oxGraphics::openGL::glCamera::setTwist")) return;
    std::lock_guard lock(mMutex);
    mTwist = normalisedDegrees(twist);
}
ox::angle glCamera::twist() const {
    std::lock_guard lock(mMutex);
    return ox::angle::fromDegree(mTwist);
}

void glCamera::setAngles(float azimuth, float elevation, float twist) {
    std::lock_guard lock(mMutex);
    mAzimuth = azimuth;
    mElevation = elevation;
    mTwist = twist;
}

void glCamera::clone(iSavedView** out) const {
    if (out == nullptr) return;
    auto* copy = new glCamera(*this);
    copy->addRef(); // the caller's reference
    *out = copy;
}

void glCamera::assign(iSavedView* view) {
    auto* other = dynamic_cast<glCamera*>(view);
    if (other == nullptr || other == this) return;
    copyFieldsFrom(*other);
}

bool glCamera::anglesMode() const {
    std::lock_guard lock(mMutex);
    return mAnglesMode;
}
void glCamera::setAnglesMode(bool anglesMode) {
    std::lock_guard lock(mMutex);
    mAnglesMode = anglesMode;
}

void glCamera::setRotation(const oxGeo::quaternion& rotation) {
    if (refused(oxGeo::isFinite(rotation), "oxGraphics::openGL::glCamera::setRotation")) return;
    std::lock_guard lock(mMutex);
    mRotation = rotation;
}
void glCamera::setTranslation(const oxGeo::vector3d& translation) {
    if (refused(oxGeo::isFinite(translation), "oxGraphics::openGL::glCamera::setTranslation")) return;
    std::lock_guard lock(mMutex);
    mTranslation = translation;
}
void glCamera::setScale(const oxGeo::vector3d& scale) {
    if (refused(oxGeo::isFinite(scale), "oxGraphics::openGL::glCamera::setScale")) return;
    std::lock_guard lock(mMutex);
    mScale = scale;
}

void glCamera::setLookAt(const oxGeo::point3d& eye, const oxGeo::vector3d& centre, const oxGeo::vector3d& up) {
    const oxGeo::vector3d direction = centre - oxGeo::vector3d(eye);
    const bool usable = oxGeo::isFinite(eye) && oxGeo::isFinite(centre) && oxGeo::isFinite(up) &&
                        direction.cross(up).length() > 0.0;
    if (refused(usable, "oxGraphics::openGL::glCamera::setLookAt")) return;
    std::lock_guard lock(mMutex);
    mEye = eye;
    mCentre = centre;
    mUp = up;
}

glCamera::modelState_t glCamera::modelState() const {
    std::lock_guard lock(mMutex);
    return {mRotation, mTranslation, mScale};
}

void glCamera::setModelState(const modelState_t& state) {
    if (refused(isUsableState(state), "oxGraphics::openGL::glCamera::setModelState")) return;
    std::lock_guard lock(mMutex);
    mRotation = state.rotation;
    mTranslation = state.translation;
    mScale = state.scale;
}

oxGeo::matrix3d glCamera::modelTransform() const {
    const modelState_t state = modelState();
    oxGeo::matrix3d translation;
    translation.setToTranslation(state.translation);
    // The quaternion's matrix is in row-vector layout; GL, and points, need its transpose.
    oxGeo::matrix3d rotation = state.rotation.matrixRotation();
    rotation.transposeIt();
    return translation * scaleMatrix(state.scale) * rotation;
}

oxGeo::matrix3d glCamera::modelViewMatrix() const {
    std::unique_lock lock(mMutex);
    if (mAnglesMode) {
        const double k = 1.0 / mEye.z();
        oxGeo::matrix3d translation;
        translation.setToTranslation(oxGeo::vector3d(-mEye.x(), -mEye.y(), 0.0));
        const oxGeo::vector3d z(0, 0, 1), x(1, 0, 0);
        return scaleMatrix(oxGeo::vector3d(k, k, k)) * translation * rotationAbout(-mAzimuth, z) *
               rotationAbout(-mElevation, x) * rotationAbout(mTwist, z);
    }
    const oxGeo::matrix3d view = lookAtMatrix(mEye, mCentre, mUp);
    lock.unlock();
    return view * modelTransform();
}

void glCamera::applyModelView() const {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    std::unique_lock lock(mMutex);
    if (mAnglesMode) {
        const float k = static_cast<float>(1.0 / mEye.z()); // eye.z is the zoom distance
        glScalef(k, k, k);
        glTranslated(-mEye.x(), -mEye.y(), 0.0);
        glRotated(-mAzimuth, 0.0, 0.0, 1.0);
        glRotated(-mElevation, 1.0, 0.0, 0.0);
        glRotated(+mTwist, 0.0, 0.0, 1.0); // positive on purpose, unlike the two above
        return;
    }
    gluLookAt(mEye.x(), mEye.y(), mEye.z(), mCentre.x(), mCentre.y(), mCentre.z(), mUp.x(), mUp.y(), mUp.z());
    const modelState_t state{mRotation, mTranslation, mScale};
    lock.unlock();
    applyModelTransform(state);
    glEnable(GL_NORMALIZE); // the scale may be non-uniform
}

void glCamera::applyModelTransform() const { applyModelTransform(modelState()); }

void glCamera::applyModelTransform(const modelState_t& state) {
    glTranslatef(static_cast<float>(state.translation.x()), static_cast<float>(state.translation.y()),
                 static_cast<float>(state.translation.z()));
    glScalef(static_cast<float>(state.scale.x()), static_cast<float>(state.scale.y()), static_cast<float>(state.scale.z()));
    // Row by row: GL reads columns, so it receives the transpose of the stored matrix.
    float rows[16];
    state.rotation.matrixRotation().asFloatArray(rows);
    glMultMatrixf(rows);
}

void glCamera::rotateAboutEye(const oxGeo::quaternion& q) {
    const oxGeo::matrix3d r = q.matrixRotation();
    std::lock_guard lock(mMutex);
    const oxGeo::vector3d eye(mEye);
    mCentre = r * (mCentre - eye) + eye;
    mUp = r * mUp;
}

void glCamera::pan(const oxGeo::vector3d& d) {
    std::lock_guard lock(mMutex);
    const oxGeo::point3d eye = mEye + d;
    const oxGeo::vector3d centre = mCentre + d;
    if (refused(oxGeo::isFinite(eye) && oxGeo::isFinite(centre), "oxGraphics::openGL::glCamera::pan")) return;
    mEye = eye;
    mCentre = centre;
}

void glCamera::normalize() {
    std::lock_guard lock(mMutex);
    auto clampComponent = [](double v) { return std::clamp(v, 0.0001, 10000.0); };
    mScale = oxGeo::vector3d(clampComponent(mScale.x()), clampComponent(mScale.y()), clampComponent(mScale.z()));
    mRotation = mRotation.norm();
}

oxGeo::vector3d translationKeepingPivot(const cameraModelState_t& state, const oxGeo::quaternion& from,
                                        const oxGeo::quaternion& to, const oxGeo::point3d& pivot) {
    // The model transform maps p to t + S·R·p; keep that image of the pivot where it was.
    const oxGeo::vector3d p(pivot);
    const oxGeo::vector3d shift = from.rotate(p) - to.rotate(p);
    return state.translation +
           oxGeo::vector3d(state.scale.x() * shift.x(), state.scale.y() * shift.y(), state.scale.z() * shift.z());
}

cameraModelState_t interpolateModelState(const cameraModelState_t& from, const cameraModelState_t& to, double f) {
    if (f >= 1.0) return to;
    f = std::max(f, 0.0);
    // q and -q are the same rotation: blend towards the one on the near side.
    const oxGeo::quaternion target = from.rotation.dot(to.rotation) < 0.0 ? to.rotation * -1.0 : to.rotation;
    cameraModelState_t result;
    result.rotation = (from.rotation * (1.0 - f) + target * f).norm();
    result.translation = from.translation * (1.0 - f) + to.translation * f;
    result.scale = from.scale * (1.0 - f) + to.scale * f;
    return result;
}

} // namespace oxGraphics::openGL
