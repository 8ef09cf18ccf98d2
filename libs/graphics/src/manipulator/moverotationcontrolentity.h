#pragma once
// moveRotationControlEntity: the drawable of the manipulator. It draws the grips (see
// oxmoverotationcontrol.h for what each looks like and starts), each under a selection name equal
// to its operation, and decides which grip is under the cursor.
#include "oxdrawable.h"
#include "oxrecorded.h"
#include "oxmoverotationcontrol.h"
#include "viewrays.h"

#include "oxgeomatrix.h"
#include "oxgeomesh.h"
#include "oxgeopolyline.h"
#include "oxrefobj.h"
#include "oxrefptr.h"

#include <memory>

namespace oxGraphics {

class scene;

/// The manipulator's options; the control keeps a copy while it has no drawable.
struct moveRotationOptions_t {
    bool xRotation = false;
    bool yRotation = false;
    bool zRotation = true;
    bool xyMovement = true;
    bool zMovement = true;
    bool viewMovement = false;   ///< the XY grip and other drawables move in the view plane
    bool maskBlank = false;
    bool tiltInsteadMove = false;
    bool showRotationArea = false;
    bool modifyInMainViewsOnly = false;
    double gripSize = 1.0;
    double xSize = 10.0;
    double ySize = 10.0;
    double zSize = 10.0;
    double sphereRadius = 0.0;
    oxGeo::polyline2d zRotationArea;
    bool constantScreenSize = false;
    double screenPixels = 100.0;
};

class moveRotationControlEntity final : public iDrawable, public ox::refObj {
public:
    static ox::refPtr<moveRotationControlEntity> create();

    moveRotationControlEntity(const moveRotationControlEntity&) = delete;
    moveRotationControlEntity& operator=(const moveRotationControlEntity&) = delete;

    /// The grips of the enabled operations, the hot one highlighted. In the scene's second pick
    /// (see hitTest) only the catch zone around the Z arrow. Call invalidate after changing a size.
    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) override;
    void invalidate() override;
    void setTransformation(const oxGeo::matrix3d& transformation) override;
    const oxGeo::matrix3d* transformation() const { return mTransformation.get(); }

    /// C, where the manipulator is shown; false (kept) when it cannot be inverted or is not finite.
    bool setPlacement(const oxGeo::matrix3d& placement);
    const oxGeo::matrix3d& placement() const { return mPlacement; }
    /// World-aligned operations: the Z arrow, XY square, Z ring and rotation area are drawn, and
    /// the plane tests made, in world axes at the placement's origin (the extra matrix).
    void setWorldAligned(bool worldAligned);
    /// The frame of the plane tests: the placement times the extra matrix when there is one.
    oxGeo::matrix3d operationFrame() const;

    /// The hit test at (x, y) with a pick square of side `size`; true when the hot operation changed.
    bool hitTest(const ox::refPtr<scene>& view, double x, double y, int size);
    eMoveRotOperation hotOperation() const { return mHot; }
    void setHotOperation(eMoveRotOperation op) { mHot = op; }

    /// The factor the handle is drawn at (1 unless the constant screen size is on).
    double displayScale(const iViewRays& views) const;
    /// For a ring rotation starting at (x, y): the local axis (X or Y) whose ring lies nearer.
    oxGeo::vector3d xyRingAxisAt(const iViewRays& views, double x, double y) const;
    /// The tilt's lever: the sphere radius, or 0.8 · the X size without a sphere (times the scale).
    double tiltRadius(const iViewRays& views) const;

    /// The flags, sizes and the Z rotation area. Call invalidate after changing a size.
    moveRotationOptions_t& options() { return mOptions; }
    const moveRotationOptions_t& options() const { return mOptions; }

private:
    moveRotationControlEntity() = default;
    ~moveRotationControlEntity() override = default;

    enum class ePickMode { grips, zCatch };
    eMoveRotOperation pickGrips(const ox::refPtr<scene>& view, double x, double y, int size);
    /// Whether the catch zone around the Z arrow may reach into the pick square about (x, y).
    bool catchZoneNear(const iViewRays& views, double x, double y, long half) const;
    bool sphereHit(const iViewRays& views, double x, double y, const oxGeo::vector3d& axis) const;
    bool areaHit(const iViewRays& views, double x, double y) const;
    bool mainViewGate(const iViewRays& views, double x, double y) const;
    void drawGrips(iDrawer& drawer, double scale, const iViewRays* views);
    void drawZCatchZone(iDrawer& drawer, double scale);
    void setGripColor(iDrawer& drawer, eMoveRotOperation op, const ox::rgbColor& color) const;
    void drawArrow(iDrawer& drawer, const oxGeo::vector3d& axis, double length) const;
    void drawRing(iDrawer& drawer, int axis) const;
    /// Records the grip's geometry when the drawer cannot replay it, then replays it.
    template <class Emit> static void replay(iDrawer& drawer, ox::refPtr<iRecorded>& recording, Emit emit);
    double ringRadius() const;

    oxGeo::matrix3d mPlacement;
    oxGeo::matrix3d mPlacementInverse;
    std::unique_ptr<oxGeo::matrix3d> mExtra;  // world-aligned operations: C⁻¹ · world axes at C's origin
    moveRotationOptions_t mOptions;
    eMoveRotOperation mHot = kMoveRotNone;
    bool mWorldAligned = false;
    ePickMode mPickMode = ePickMode::grips;
    std::unique_ptr<oxGeo::matrix3d> mTransformation;
    // The grips' geometry, recorded once per size; colours (the hot one) are set outside it. The
    // view circle and the rotation area follow the view and the host and are drawn directly.
    struct recordings_t {
        ox::refPtr<iRecorded> xArrow, yArrow, zArrow, square, xRing, yRing, zRing, catchZone;
    } mRecordings;
};

} // namespace oxGraphics
