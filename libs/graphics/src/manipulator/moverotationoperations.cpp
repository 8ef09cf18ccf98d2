#include "moverotationoperations.h"

#include "oxgeolimits.h"

#include <cmath>

namespace oxGraphics {
namespace {

// Below this a direction or a lever arm carries no usable information.
constexpr double kDegenerate = 1e-12;

oxGeo::matrix3d inverseOrIdentity(const oxGeo::matrix3d& m) {
    oxGeo::matrix3d out;
    return m.inverse(out) ? out : oxGeo::matrix3d();
}

/// World axes at the placement's origin.
oxGeo::matrix3d worldFrameAt(const oxGeo::matrix3d& placement) {
    oxGeo::matrix3d frame;
    frame.setToTranslation(placement.translation());
    return frame;
}

/// The view's axes at the placement's origin (world axes when the view has no rays).
oxGeo::matrix3d viewFrameAt(const iViewRays* views, const oxGeo::matrix3d& placement) {
    oxGeo::matrix3d rotation;
    if (views == nullptr || !viewRotation(*views, rotation)) rotation = oxGeo::matrix3d();
    return worldFrameAt(placement) * rotation;
}

oxGeo::matrix3d translation(const oxGeo::vector3d& v) {
    oxGeo::matrix3d m;
    m.setToTranslation(v);
    return m;
}

oxGeo::matrix3d rotation(ox::angle a, const oxGeo::vector3d& axis) {
    oxGeo::matrix3d m;
    if (a.radians() != 0.0 && !axis.isZeroLength()) m.setToRotation(a, axis, oxGeo::point3d());
    return m;
}

/// Step directions as on a keypad seen from above.
oxGeo::vector3d unitStepOf(eMoveRotDirection dir) {
    switch (dir) {
    case kMoveRotDirUp: return {0.0, 1.0, 0.0};
    case kMoveRotDirDown: return {0.0, -1.0, 0.0};
    case kMoveRotDirLeft: return {-1.0, 0.0, 0.0};
    case kMoveRotDirRight: return {1.0, 0.0, 0.0};
    }
    return {};
}

} // namespace

// --- base --------------------------------------------------------------------------------------

moveRotationOperation::moveRotationOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& frame,
                                             const oxGeo::matrix3d& placement, bool conjugate)
    : mViews(std::move(views)), mViewToLocal(inverseOrIdentity(frame)) {
    if (conjugate) {
        mWorldToLocal = inverseOrIdentity(placement) * frame;
        mLocalToWorld = mViewToLocal * placement;
    }
}

bool moveRotationOperation::castRay(double x, double y, oxGeo::ray3d& out) const {
    if (!mViews || !std::isfinite(x) || !std::isfinite(y)) return false;
    oxGeo::ray3d ray;
    if (!mViews->viewRayAt(x, y, ray)) return false;
    out = ray.transformBy(mViewToLocal);
    return oxGeo::isFinite(out.origin()) && oxGeo::isFinite(out.direction());
}

bool moveRotationOperation::update(double x, double y) {
    oxGeo::ray3d ray;
    return castRay(x, y, ray) && measure(ray);
}

oxGeo::matrix3d& moveRotationOperation::transformation(oxGeo::matrix3d& out) const {
    out = mWorldToLocal * plainTransformation() * mLocalToWorld;
    return out;
}

// --- moves -------------------------------------------------------------------------------------

moveAxisOperation::moveAxisOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, int axis, double x,
                                     double y)
    : moveRotationOperation(std::move(views), placement, placement, false), mAxis(axis) {
    start(x, y);
}

bool moveAxisOperation::measure(const oxGeo::ray3d& ray) {
    oxGeo::vector3d axis;
    if (mAxis == 0) axis = oxGeo::vector3d::xAxis();
    else if (mAxis == 1) axis = oxGeo::vector3d::yAxis();
    else axis = oxGeo::vector3d::zAxis();
    // The normal of the plane through the axis that turns most towards the viewer; none when the
    // axis is seen end-on.
    const oxGeo::vector3d d = ray.direction().norm();
    const oxGeo::vector3d normal = axis.cross(d.cross(axis));
    if (normal.length() < 1e-9) return false;
    oxGeo::point3d hit;
    if (!oxGeo::plane3d(oxGeo::point3d(), normal).getIntersection(ray, hit) || !oxGeo::isFinite(hit)) return false;
    mCurrent = hit[mAxis];
    if (!mStarted) {
        mStart = mCurrent;
        mStarted = true;
    }
    return true;
}

oxGeo::matrix3d moveAxisOperation::plainTransformation() const {
    oxGeo::vector3d v;
    const double t = mCurrent - mStart;
    if (mAxis == 0) v.setX(t);
    else if (mAxis == 1) v.setY(t);
    else v.setZ(t);
    return translation(v);
}

movePlaneOperation::movePlaneOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& frame,
                                       const oxGeo::matrix3d& placement, bool conjugate, const oxGeo::vector3d& normal)
    : moveRotationOperation(std::move(views), frame, placement, conjugate), mPlane(oxGeo::point3d(), normal) {}

bool movePlaneOperation::measure(const oxGeo::ray3d& ray) {
    oxGeo::point3d hit;
    if (!mPlane.getIntersection(ray, hit) || !oxGeo::isFinite(hit)) return false;
    mCurrent = hit;
    if (!mStarted) {
        mStart = hit;
        mStarted = true;
    }
    return true;
}

oxGeo::matrix3d movePlaneOperation::plainTransformation() const { return translation(mCurrent - mStart); }

moveLocalXYOperation::moveLocalXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                           double y)
    : movePlaneOperation(std::move(views), placement, placement, false, oxGeo::vector3d::zAxis()) {
    start(x, y);
}

moveWorldXYOperation::moveWorldXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                           double y)
    : movePlaneOperation(std::move(views), worldFrameAt(placement), placement, true, oxGeo::vector3d::zAxis()) {
    start(x, y);
}

moveWorldZOperation::moveWorldZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                         double y)
    : movePlaneOperation(std::move(views), worldFrameAt(placement), placement, true, oxGeo::vector3d::yAxis()) {
    start(x, y);
}

oxGeo::matrix3d moveWorldZOperation::plainTransformation() const {
    return translation({0.0, 0.0, mCurrent.z() - mStart.z()});
}

moveViewXYOperation::moveViewXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                         double y)
    : movePlaneOperation(views, viewFrameAt(views.get(), placement), placement, true, oxGeo::vector3d::zAxis()) {
    start(x, y);
}

moveViewXYFixedOperation::moveViewXYFixedOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement,
                                                   eMoveRotDirection dir, double distance)
    : moveRotationOperation(views, viewFrameAt(views.get(), placement), placement, true),
      mStep(stepOf(dir, distance)) {}

oxGeo::vector3d moveViewXYFixedOperation::stepOf(eMoveRotDirection dir, double distance) {
    return unitStepOf(dir) * distance;
}

oxGeo::matrix3d moveViewXYFixedOperation::plainTransformation() const { return translation(mStep); }

// --- rotations ---------------------------------------------------------------------------------

rotAxisOperation::rotAxisOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& frame,
                                   const oxGeo::matrix3d& placement, bool conjugate, const oxGeo::vector3d& axis)
    : moveRotationOperation(std::move(views), frame, placement, conjugate), mAxis(axis.norm()) {
    // Any direction perpendicular to the axis serves as zero; for Z it is X, as usual.
    mReference = mAxis.cross(oxGeo::vector3d::xAxis()).length() > 1e-6 ? oxGeo::vector3d::xAxis()
                                                                        : oxGeo::vector3d::yAxis();
    mReference = (mReference - mAxis * mReference.dot(mAxis)).norm();
}

bool rotAxisOperation::measure(const oxGeo::ray3d& ray) {
    oxGeo::point3d hit;
    if (!oxGeo::plane3d(oxGeo::point3d(), mAxis).getIntersection(ray, hit) || !oxGeo::isFinite(hit)) return false;
    // The hit minus the centre, flattened onto the plane of the turn.
    oxGeo::vector3d arm = hit.asVector();
    arm -= mAxis * arm.dot(mAxis);
    // At the centre itself every angle is as near: keep the last one rather than jump.
    if (arm.length() < kDegenerate) return false;
    mCurrent = mReference.angleTo(arm, mAxis);
    if (!mStarted) {
        mStart = mCurrent;
        mStarted = true;
    }
    return true;
}

oxGeo::matrix3d rotAxisOperation::plainTransformation() const { return rotation(mCurrent - mStart, mAxis); }

rotLocalZOperation::rotLocalZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                       double y)
    : rotAxisOperation(std::move(views), placement, placement, false, oxGeo::vector3d::zAxis()) {
    start(x, y);
}

rotWorldZOperation::rotWorldZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                       double y)
    : rotAxisOperation(std::move(views), worldFrameAt(placement), placement, true, oxGeo::vector3d::zAxis()) {
    start(x, y);
}

rotViewZOperation::rotViewZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x,
                                     double y)
    : rotAxisOperation(views, viewFrameAt(views.get(), placement), placement, true, oxGeo::vector3d::zAxis()) {
    start(x, y);
}

rotXYOperation::rotXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement,
                               const oxGeo::vector3d& axis, double x, double y)
    : rotAxisOperation(std::move(views), placement, placement, false,
                       oxGeo::vector3d(axis.x(), axis.y(), 0.0).isZeroLength() ? oxGeo::vector3d::xAxis()
                                                                                : oxGeo::vector3d(axis.x(), axis.y(), 0.0)) {
    start(x, y);
}

rotXY2Operation::rotXY2Operation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double radius, double x,
                                 double y)
    : movePlaneOperation(std::move(views), placement, placement, false, oxGeo::vector3d::zAxis()),
      mRadius(radius > 0.0 && std::isfinite(radius) ? radius : 1.0) {
    start(x, y);
}

oxGeo::matrix3d rotXY2Operation::plainTransformation() const {
    const oxGeo::vector3d drag = mCurrent - mStart;
    const double length = drag.length();
    if (length < kDegenerate) return {};
    return rotation(ox::angle::fromRadians(std::atan2(length, mRadius)), oxGeo::vector3d::zAxis().cross(drag));
}

rotXYFixedOperation::rotXYFixedOperation(const oxGeo::matrix3d& placement, eMoveRotDirection dir, double degrees)
    : moveRotationOperation({}, placement, placement, false),
      mAxis(oxGeo::vector3d::zAxis().cross(unitStepOf(dir))), mAngle(ox::angle::fromDegree(degrees)) {}

oxGeo::matrix3d rotXYFixedOperation::plainTransformation() const { return rotation(mAngle, mAxis); }

rotZFixedOperation::rotZFixedOperation(const oxGeo::matrix3d& placement, double degrees)
    : moveRotationOperation({}, placement, placement, false) {
    mAngle.setValue(ox::angle::fromDegree(degrees));
}

oxGeo::matrix3d rotZFixedOperation::plainTransformation() const { return rotation(mAngle, mAxis); }

// --- the table ---------------------------------------------------------------------------------

std::unique_ptr<moveRotationOperation> createMoveRotationOperation(eMoveRotOperation op, const operationSetup_t& s) {
    const auto& c = s.placement;
    switch (op) {
    case kMoveRotMoveX: return std::make_unique<moveLocalXOperation>(s.views, c, s.x, s.y);
    case kMoveRotMoveY: return std::make_unique<moveLocalYOperation>(s.views, c, s.x, s.y);
    case kMoveRotMoveZ:
        if (s.local) return std::make_unique<moveLocalZOperation>(s.views, c, s.x, s.y);
        return std::make_unique<moveWorldZOperation>(s.views, c, s.x, s.y);
    case kMoveRotMoveXY:
        if (s.viewPlane) return std::make_unique<moveViewXYOperation>(s.views, c, s.x, s.y);
        if (s.local) return std::make_unique<moveLocalXYOperation>(s.views, c, s.x, s.y);
        return std::make_unique<moveWorldXYOperation>(s.views, c, s.x, s.y);
    case kMoveRotMoveViewStep: return std::make_unique<moveViewXYFixedOperation>(s.views, c, s.direction, s.value);
    case kMoveRotRotZ:
        if (s.local) return std::make_unique<rotLocalZOperation>(s.views, c, s.x, s.y);
        return std::make_unique<rotWorldZOperation>(s.views, c, s.x, s.y);
    case kMoveRotRotZStep: return std::make_unique<rotZFixedOperation>(c, s.value);
    case kMoveRotRotXY: return std::make_unique<rotXYOperation>(s.views, c, s.xyAxis, s.x, s.y);
    case kMoveRotTiltXY: return std::make_unique<rotXY2Operation>(s.views, c, s.tiltRadius, s.x, s.y);
    case kMoveRotTiltXYStep: return std::make_unique<rotXYFixedOperation>(c, s.direction, s.value);
    case kMoveRotRotView: return std::make_unique<rotViewZOperation>(s.views, c, s.x, s.y);
    default: return nullptr;
    }
}

} // namespace oxGraphics
