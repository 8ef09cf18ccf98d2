#pragma once
// The manipulator's operations: each turns cursor positions into a transformation. One exists
// while a modification runs.
//
// Every operation works in a working frame F (working coordinates to world): the manipulator's
// own frame C for the local operations, or world- or view-aligned axes at C's origin. A cursor ray
// is brought into F, intersected with the operation's plane there, and the plain transformation T
// is built in F. The result is always the transformation in C's coordinates (the placement
// becomes C · result): for the local operations F = C and the result is T itself; the others are
// conjugated, result = (C⁻¹ F) · T · (F⁻¹ C).
//
// Pure arithmetic on iViewRays: no GL.
#include "oxmoverotationcontrol.h"
#include "viewrays.h"

#include "oxangle.h"
#include "oxgeomatrix.h"
#include "oxgeoplane.h"
#include "oxgeopoint.h"
#include "oxrefptr.h"

#include <memory>

namespace oxGraphics {

class moveRotationOperation {
public:
    virtual ~moveRotationOperation() = default;
    moveRotationOperation(const moveRotationOperation&) = delete;
    moveRotationOperation& operator=(const moveRotationOperation&) = delete;

    /// Casts the ray at (x, y) and takes the new current value. False when the ray misses the
    /// working plane (parallel to it) or the position is not finite: the value stays.
    virtual bool update(double x, double y);
    /// The transformation from the start value to the current one, in the manipulator's frame.
    virtual oxGeo::matrix3d& transformation(oxGeo::matrix3d& out) const;

protected:
    /// `frame`: F, working coordinates to world; `placement`: C. `conjugate` false requires F = C.
    moveRotationOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& frame, const oxGeo::matrix3d& placement,
                          bool conjugate);
    /// The ray at (x, y) in working coordinates.
    bool castRay(double x, double y, oxGeo::ray3d& out) const;
    /// Takes the value under a working-frame ray; false when it cannot be measured.
    virtual bool measure(const oxGeo::ray3d& ray) { (void)ray; return false; }
    /// T, in working coordinates.
    virtual oxGeo::matrix3d plainTransformation() const = 0;
    /// Called by the derived constructors once they are complete: the start value.
    void start(double x, double y) { update(x, y); }

    ox::refPtr<iViewRays> mViews;
    oxGeo::matrix3d mViewToLocal;   // world to working coordinates (for the rays)
    oxGeo::matrix3d mWorldToLocal;  // left factor of the result: C⁻¹ F
    oxGeo::matrix3d mLocalToWorld;  // right factor of the result: F⁻¹ C
};

// --- moves -------------------------------------------------------------------------------------

/// Along one axis of C. The plane through the axis that faces the viewer most: the grabbed point
/// follows the cursor along the axis.
class moveAxisOperation : public moveRotationOperation {
public:
    moveAxisOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, int axis, double x, double y);
    double travel() const { return mCurrent - mStart; }

protected:
    bool measure(const oxGeo::ray3d& ray) override;
    oxGeo::matrix3d plainTransformation() const override;

private:
    int mAxis;
    bool mStarted = false;
    double mStart = 0.0;
    double mCurrent = 0.0;
};

class moveLocalXOperation final : public moveAxisOperation {
public:
    moveLocalXOperation(ox::refPtr<iViewRays> v, const oxGeo::matrix3d& c, double x, double y)
        : moveAxisOperation(std::move(v), c, 0, x, y) {}
};
class moveLocalYOperation final : public moveAxisOperation {
public:
    moveLocalYOperation(ox::refPtr<iViewRays> v, const oxGeo::matrix3d& c, double x, double y)
        : moveAxisOperation(std::move(v), c, 1, x, y) {}
};
class moveLocalZOperation final : public moveAxisOperation {
public:
    moveLocalZOperation(ox::refPtr<iViewRays> v, const oxGeo::matrix3d& c, double x, double y)
        : moveAxisOperation(std::move(v), c, 2, x, y) {}
};

/// In a plane of the working frame through its origin: T translates by current − start.
class movePlaneOperation : public moveRotationOperation {
public:
    oxGeo::vector3d travel() const { return mCurrent - mStart; }

protected:
    movePlaneOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& frame, const oxGeo::matrix3d& placement,
                       bool conjugate, const oxGeo::vector3d& normal);
    bool measure(const oxGeo::ray3d& ray) override;
    oxGeo::matrix3d plainTransformation() const override;

    oxGeo::plane3d mPlane;
    bool mStarted = false;
    oxGeo::point3d mStart;
    oxGeo::point3d mCurrent;
};

/// The local XY plane, not conjugated.
class moveLocalXYOperation final : public movePlaneOperation {
public:
    moveLocalXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);
};
/// The world XY plane through the manipulator's origin, conjugated.
class moveWorldXYOperation final : public movePlaneOperation {
public:
    moveWorldXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);
};
/// The world XZ plane through the manipulator's origin; only the z of the hit counts. Conjugated.
class moveWorldZOperation final : public movePlaneOperation {
public:
    moveWorldZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);

protected:
    oxGeo::matrix3d plainTransformation() const override;
};
/// The plane through the manipulator's origin facing the viewer (fixed at the start). Conjugated.
class moveViewXYOperation final : public movePlaneOperation {
public:
    moveViewXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);
};

/// A keyboard step in the view plane: no update; T translates by the step of `dir` (screen
/// right/up axes), conjugated.
class moveViewXYFixedOperation final : public moveRotationOperation {
public:
    moveViewXYFixedOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, eMoveRotDirection dir,
                             double distance);
    bool update(double, double) override { return false; }
    /// The step of a direction in screen axes (zero for directions that step nowhere).
    static oxGeo::vector3d stepOf(eMoveRotDirection dir, double distance);

protected:
    oxGeo::matrix3d plainTransformation() const override;

private:
    oxGeo::vector3d mStep;
};

// --- rotations ---------------------------------------------------------------------------------

/// The angle swept about an axis through the working origin, measured in the plane
/// perpendicular to it. T turns by current − start about that axis.
class rotAxisOperation : public moveRotationOperation {
public:
    ox::angle sweep() const { return mCurrent - mStart; }
    const oxGeo::vector3d& axis() const { return mAxis; }

protected:
    rotAxisOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& frame, const oxGeo::matrix3d& placement,
                     bool conjugate, const oxGeo::vector3d& axis);
    bool measure(const oxGeo::ray3d& ray) override;
    oxGeo::matrix3d plainTransformation() const override;

    oxGeo::vector3d mAxis;
    oxGeo::vector3d mReference;  // zero angle
    bool mStarted = false;
    ox::angle mStart;
    ox::angle mCurrent;
};

/// About local Z through the origin, not conjugated.
class rotLocalZOperation final : public rotAxisOperation {
public:
    rotLocalZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);
};
/// About world Z through the manipulator's origin (the centre), conjugated.
class rotWorldZOperation final : public rotAxisOperation {
public:
    rotWorldZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);
};
/// About the view direction through the manipulator's origin: framed by the view's axes, conjugated.
class rotViewZOperation final : public rotAxisOperation {
public:
    rotViewZOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double x, double y);
};
/// About `axis`, a direction in the local XY plane, through the origin; not conjugated.
class rotXYOperation final : public rotAxisOperation {
public:
    rotXYOperation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, const oxGeo::vector3d& axis, double x,
                   double y);
};

/// The tilt: a drag d in the local XY plane turns about Z × d through the origin by
/// atan(|d| / radius). Not conjugated.
class rotXY2Operation final : public movePlaneOperation {
public:
    rotXY2Operation(ox::refPtr<iViewRays> views, const oxGeo::matrix3d& placement, double radius, double x, double y);

protected:
    oxGeo::matrix3d plainTransformation() const override;

private:
    double mRadius;
};

/// A keyboard tilt: `degrees` towards the screen-style direction `dir` in the local XY plane
/// (about Z × step through the origin); no update.
class rotXYFixedOperation final : public moveRotationOperation {
public:
    rotXYFixedOperation(const oxGeo::matrix3d& placement, eMoveRotDirection dir, double degrees);
    bool update(double, double) override { return false; }

protected:
    oxGeo::matrix3d plainTransformation() const override;

private:
    oxGeo::vector3d mAxis;
    ox::angle mAngle;
};

/// A keyboard turn by `degrees` about the Z axis of the placement, through its origin; no update.
class rotZFixedOperation final : public moveRotationOperation {
public:
    rotZFixedOperation(const oxGeo::matrix3d& placement, double degrees);
    bool update(double, double) override { return false; }

protected:
    oxGeo::matrix3d plainTransformation() const override;

private:
    oxGeo::vector3d mAxis{0.0, 0.0, 1.0};
    ox::angle mAngle;
};

// --- the table ---------------------------------------------------------------------------------

/// What the control knows when it starts an operation.
struct operationSetup_t {
    ox::refPtr<iViewRays> views;
    oxGeo::matrix3d placement;          ///< C: where the manipulator is shown and works
    bool local = true;                  ///< local instead of world axes (2, 3, 12)
    bool viewPlane = false;             ///< 3 moves in the view plane
    double x = 0.0, y = 0.0;            ///< start position
    oxGeo::vector3d xyAxis{1.0, 0.0, 0.0}; ///< 14: the ring's axis in the local XY plane
    double tiltRadius = 1.0;            ///< 15
    eMoveRotDirection direction = kMoveRotDirUp; ///< 4, 16
    double value = 0.0;                 ///< 4: distance; 13, 16: degrees
};

/// The operation that `op` names, or null for values that name none (or need a step the setup
/// cannot give: 4, 13 and 16 come from keyboard steps only, see moveRotationControl).
std::unique_ptr<moveRotationOperation> createMoveRotationOperation(eMoveRotOperation op,
                                                                   const operationSetup_t& setup);

/// The code a host's beginSetTrafo/endSetTrafo receives for `op`: 1 for the Z rotation, 3 for the
/// tilt, 0 otherwise.
inline int directionCodeOf(eMoveRotOperation op) {
    return op == kMoveRotRotZ ? 1 : (op == kMoveRotTiltXY ? 3 : 0);
}

} // namespace oxGraphics
