#pragma once
// moveRotationControl: the interactive move/rotate handle a host puts on a scene.
//
//     auto control = oxGraphics::moveRotationControl::create(view, partPlacement, /*local*/ true);
//     control->setFunctor(&myTrafoSink);          // receives begin / setTrafo / end
//     control->attachToScene();
//     // mouse move without a button:  control->hover(x, y, 6);
//     // button down:                  if (control->startModify(x, y, 6)) capture the mouse
//     // mouse move with the button:   control->modify(x, y);
//     // button up:                    control->endModify(x, y);
//     // arrow keys:                   control->performModify(kMoveRotMoveViewStep, kMoveRotDirUp, 1.0);
//
// Frames. The manipulator sits at its placement P (local to world), which starts as the base
// system and follows every finished modification. It is shown, and its operations work, at
// C = addViewTrafo · P in the scene. Every transformation handed to the host is the world
// transformation W of the modification so far (in P's world, without addViewTrafo): the host's
// object placements O become W · O, and after the modification P becomes W · P. A new
// modification starts from the identity again.
//
// Grips and what they start (the selection name each is drawn under is its operation value):
//   red arrow along local X ........ kMoveRotMoveX        (moves along local X)
//   green arrow along local Y ...... kMoveRotMoveY        (moves along local Y)
//   blue arrow along Z ............. kMoveRotMoveZ        (along local Z, or world Z when not local)
//   orange square between X and Y .. kMoveRotMoveXY       (in the XY plane; the tilt with tiltInsteadMove)
//   blue ring about Z .............. kMoveRotRotZ         (about local Z, or world Z when not local)
//   red / green rings about X / Y .. kMoveRotRotXY        (about that local axis; optional)
//   grey circle facing the viewer .. kMoveRotRotView      (about the view direction; radius = sphere radius)
//   the Z rotation area ............ kMoveRotRotZ         (drawn when showRotationArea is set)
// The rings have a radius of 0.8 · the longer of the X and Y sizes.
// In world mode (localXYZOperations false) the Z arrow, the XY square, the Z ring and the rotation
// area are drawn aligned with the world axes at the manipulator's origin, since that is where
// their operations work; the X and Y arrows and the X/Y rings always follow the local axes.
//
// Working planes (cursor rays are intersected with them; a ray parallel to the plane leaves the
// operation where it was):
//   move along one axis ... the plane through the axis that faces the viewer most, so the grabbed
//                           point follows the cursor along the axis in any view
//   move in XY ............ the local XY plane (world XY plane through the origin in world mode)
//   move along world Z .... the world XZ plane through the origin (see ZMovementViewDirValid)
//   move in the view ...... the plane through the origin facing the viewer
//   rotate about Z ........ the XY plane through the origin; the angle swept about the origin
//   rotate about X or Y ... the plane of that ring; the axis is the one whose ring lies nearer the
//                           point where the drag started
//   rotate about the view . the plane through the origin facing the viewer
//   tilt (15) ............. the local XY plane; a drag d tilts about the axis Z × d through the
//                           origin by atan(|d| / r), r the sphere radius (or 0.8 · the X size
//                           when the sphere radius is 0): rolling a ball of that radius
//
// Hit test (hover and startModify), in this order:
//  1. With modifyInMainViewsOnly, nothing is hot unless the view ray is within 0.01° of a local
//     axis (0.02° when looking against it).
//  2. A selection pick over the square of side `size` about the cursor: a grip of the
//     manipulator gives its operation; any other drawable nearest gives kMoveRotMoveXY when XY
//     movement is enabled.
//  3. When the first pick hit nothing and Z movement is enabled, a second pick against a wider
//     catch zone around the Z arrow gives kMoveRotMoveZ: the thin arrow is easy to miss. Every
//     pick draws the whole scene, so the second is left out where the zone cannot reach the square.
//  4. Where nothing was hit, looking along local Z or Y, a click within the sphere radius of the
//     centre gives kMoveRotRotView; with tiltInsteadMove, kMoveRotMoveXY becomes kMoveRotTiltXY.
//  5. A click inside the Z rotation area gives kMoveRotRotZ; the area takes precedence over the
//     grips, so a host keeps it clear of them.
//
// Sizes (grip size, X/Y/Z extents, sphere radius, Z rotation area) are in world units of the
// manipulator's frame. With setConstantScreenSize the whole handle is scaled each frame so that
// its largest extent spans the given number of pixels; the operations still report world units.
//
// Bad input (values that are not finite numbers, negative sizes) is refused with a warning under
// the logger "oxGraphics::moveRotationControl" and the previous value kept. Nothing here throws,
// except that an exception thrown by the host's own callback inside modify goes back to the host.
#include "oxgraphics_export.h"

#include "oxdrawable.h"
#include "oxgeomatrix.h"
#include "oxgeopolyline.h"
#include "oxrefobj.h"
#include "oxrefptr.h"

#include <memory>
#include <vector>

namespace ox {
class iSetTrafo;
}

namespace oxGraphics {

class scene;

/// What a grip, a hit or a keyboard step does. The value is the selection name of the grip.
enum eMoveRotOperation : int {
    kMoveRotNone = -1,       ///< nothing under the cursor
    kMoveRotMoveX = 0,       ///< move along local X
    kMoveRotMoveY = 1,       ///< move along local Y
    kMoveRotMoveZ = 2,       ///< move along Z (local or world)
    kMoveRotMoveXY = 3,      ///< move in the XY plane (local or world), or in the view plane
    kMoveRotMoveViewStep = 4, ///< keyboard step in the view plane (performModify only)
    // 5 to 11 are never created.
    kMoveRotRotZ = 12,       ///< rotate about Z (local or world)
    kMoveRotRotZStep = 13,   ///< keyboard step about local Z (performModify only)
    kMoveRotRotXY = 14,      ///< rotate about local X or Y
    kMoveRotTiltXY = 15,     ///< tilt about an axis in the XY plane, following the drag
    kMoveRotTiltXYStep = 16, ///< keyboard tilt step (performModify only)
    kMoveRotRotView = 17,    ///< rotate about the view direction
};

/// Keyboard directions: 1 up, 4 down, 7 left, 8 right. A view step of distance d moves by (0, d),
/// (0, -d), (-d, 0) or (d, 0) in the screen's right/up axes; a tilt step turns the handle's Z axis
/// towards local +Y, -Y, -X or +X. Other values step nowhere.
enum eMoveRotDirection : int {
    kMoveRotDirUp = 1,
    kMoveRotDirDown = 4,
    kMoveRotDirLeft = 7,
    kMoveRotDirRight = 8,
};

class OX_GRAPHICS_API moveRotationControl : public ox::refObj {
public:
    /// A detached control on `view` with `baseSystem` as placement. `local`: operations work in
    /// the manipulator's own axes (else in world axes). Empty, with a warning, without a scene.
    /// A base system that is not finite is refused (warning) and the identity used.
    static ox::refPtr<moveRotationControl> create(ox::refPtr<scene> view, const oxGeo::matrix3d& baseSystem,
                                                  bool local);

    moveRotationControl(const moveRotationControl&) = delete;
    moveRotationControl& operator=(const moveRotationControl&) = delete;

    // --- scene and host ----------------------------------------------------------------------
    /// Adds the drawable to the scene (created on first use); fires kEventSceneChanged.
    void attachToScene();
    /// Removes the drawable from the scene and lets it go; fires kEventSceneChanged. A running
    /// modification is dropped without telling the callback.
    void detachFromScene();
    bool isAttached() const;
    /// The host's callback (not owned; null for none).
    void setFunctor(ox::iSetTrafo* functor);

    // --- interaction (positions in window pixels, y down; ignored while detached) -------------
    /// Updates the hot grip under (x, y) with a pick square of side `size`; fires
    /// kEventSceneChanged when it changed.
    void hover(double x, double y, int size);
    eMoveRotOperation hotOperation() const;
    /// Hit test at (x, y); on a grip tells the callback that a modification begins and starts its
    /// operation. False over empty space, while detached, and for positions that are no numbers.
    bool startModify(double x, double y, int size);
    /// Starts `op` at (x, y) without a hit test or callback (a running operation is dropped).
    /// Values that name no interactive operation start nothing.
    void startModify(eMoveRotOperation op, double x, double y);
    /// Follows the cursor: hands the transformation so far to the callback and the drawable, and
    /// fires kEventSceneChanged. Nothing when no operation runs.
    void modify(double x, double y);
    /// Ends the modification: the final transformation to the callback, the end call, and the
    /// placement moves on. Nothing when no operation runs.
    void endModify(double x, double y);
    /// Abandons the modification in progress (Esc during a drag): the callback gets the identity,
    /// so the host's objects return to where they were, then the end call with the begin's code;
    /// the placement stays where it was. Nothing when no operation runs.
    void cancelModify();
    /// A whole keyboard modification: kMoveRotMoveViewStep moves `value` world units in `dir`,
    /// kMoveRotRotZStep turns `value` degrees about local Z (`dir` is not used), kMoveRotTiltXYStep
    /// tilts `value` degrees towards `dir`. The host sees begin, one setTrafo and end, as for a
    /// drag. Other operations, and any while a drag runs, do nothing.
    void performModify(eMoveRotOperation op, eMoveRotDirection dir, double value);
    bool isModifying() const;
    /// True when the process's asynchronous and then synchronous job queues have no work left.
    bool isFinished() const;

    // --- view tests ----------------------------------------------------------------------------
    /// The view looks along a local axis (either way) within `toleranceDegrees`.
    bool isViewMainPlane(double toleranceDegrees) const;
    /// The view looks along local Z (the XY plane faces the viewer) within `toleranceDegrees`.
    bool isViewXYPlane(double toleranceDegrees) const;
    /// The view looks along local Y.
    bool isViewXZPlane(double toleranceDegrees) const;
    /// The view looks along local X.
    bool isViewYZPlane(double toleranceDegrees) const;
    /// Whether a drag can move along Z in this view: the Z axis is not seen end-on (more than 5°
    /// away from the view direction) and, for world operations, the world XZ plane they work in
    /// is not seen edge-on (more than 5°).
    bool ZMovementViewDirValid() const;

    // --- options -------------------------------------------------------------------------------
    bool XRotationEnabled() const;
    void enableXRotation(bool enable);
    bool YRotationEnabled() const;
    void enableYRotation(bool enable);
    bool ZRotationEnabled() const;
    void enableZRotation(bool enable);
    bool XYMovementEnabled() const;
    void enableXYMovement(bool enable);
    bool ZMovementEnabled() const;
    void enableZMovement(bool enable);
    bool localXYZOperations() const;
    void setLocalXYZOperations(bool local);
    bool tiltInsteadMove() const;
    void setTiltInsteadMove(bool tilt);
    /// The XY grip and other drawables move in the view plane instead of the XY plane.
    bool moveInViewPlane() const;
    void setMoveInViewPlane(bool viewPlane);
    bool maskBlankEnabled() const;
    void setMaskBlankEnabled(bool enable);
    bool modifyInMainViewsOnly() const;
    void setModifyInMainViewsOnly(bool mainViewsOnly);
    /// Thickness scale of the grips: arrow heads, the XY square, ring tubes (default 1).
    double gripSize() const;
    void setGripSize(double size);
    /// Lengths of the X, Y and Z arrows (default 10 each).
    double xSize() const;
    void setXSize(double size);
    double ySize() const;
    void setYSize(double size);
    double zSize() const;
    void setZSize(double size);
    /// Radius of the view-rotation circle and sphere (default 0: none).
    void setRotationShpereRadius(double radius);
    double rotationSphereRadius() const;
    /// Outline in the manipulator's XY plane of an area that starts a Z rotation (empty: none).
    void setZRotationArea(const oxGeo::polyline2d& area);
    bool showRotationAreaEnabled() const;
    void showRotationArea(bool show);
    const oxGeo::matrix3d& baseSystem() const;
    /// Sets the base system and the placement to `baseSystem`.
    void setBaseSystem(const oxGeo::matrix3d& baseSystem);
    const oxGeo::matrix3d& addViewTrafo() const;
    void setAddViewTrafo(const oxGeo::matrix3d& trafo);
    /// The placement after the modifications so far.
    const oxGeo::matrix3d& currentPlacement() const;
    /// The transformation of the modification in progress (or the last one).
    const oxGeo::matrix3d& currentResult() const;
    /// Off by default. On: the handle keeps `pixels` pixels for its largest extent while zooming.
    void setConstantScreenSize(bool on, double pixels);
    bool constantScreenSize() const;

    // --- move lists ----------------------------------------------------------------------------
    /// Drawables the host moves with XY and with Z modifications; each kept once.
    void addToXYMove(const ox::refPtr<iDrawable>& drawable);
    void addToZMove(const ox::refPtr<iDrawable>& drawable);
    void removeFromXYMove(const ox::refPtr<iDrawable>& drawable);
    void removeFromZMove(const ox::refPtr<iDrawable>& drawable);
    const std::vector<ox::refPtr<iDrawable>>& xyMoveList() const;
    const std::vector<ox::refPtr<iDrawable>>& zMoveList() const;

    /// The manipulator's drawable (null before the first attach).
    ox::refPtr<iDrawable> drawable() const;

protected:
    moveRotationControl(ox::refPtr<scene> view, bool local);
    ~moveRotationControl() override;
    /// Leaves the scene before going, so the scene never draws a manipulator whose control is gone.
    void destroyObject() override;

private:
    struct impl;
    std::unique_ptr<impl> mImpl;
};

} // namespace oxGraphics
