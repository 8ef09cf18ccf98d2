#pragma once
// iViewRays: where the manipulator's operations get their view rays from. The operations are pure
// arithmetic on these rays, so they run (and are tested) without a GL context; the scene's
// implementation is one of several.

#include "oxgeomatrix.h"
#include "oxgeoray.h"
#include "oxrefobj.h"
#include "oxrefptr.h"

namespace oxGraphics {

class scene;

class iViewRays : public virtual ox::iRefObj {
public:
    /// The viewing ray through window position (x, y) (pixels, y down) in world space, running
    /// into the screen. False when the view has none (no viewport yet, context gone).
    virtual bool viewRayAt(double x, double y, oxGeo::ray3d& out) const = 0;
};

/// The view's orientation in world space: the columns are the screen's right and up directions
/// and the direction towards the viewer; no translation. False when the view has no rays.
bool viewRotation(const iViewRays& views, oxGeo::matrix3d& out);

/// The world length of one pixel, measured in the frame `worldToFrame` maps into. 0 without rays.
double pixelSizeIn(const iViewRays& views, const oxGeo::matrix3d& worldToFrame);

/// The rays of a scene's camera. The scene answers whole pixels only; the projection is
/// orthographic, so rays are affine in the window position and fractional positions are
/// interpolated from three whole-pixel rays exactly.
class sceneViewRays final : public iViewRays, public ox::refObj {
public:
    static ox::refPtr<sceneViewRays> create(const ox::refPtr<scene>& view);
    bool viewRayAt(double x, double y, oxGeo::ray3d& out) const override;

private:
    explicit sceneViewRays(const ox::refPtr<scene>& view);
    ~sceneViewRays() override;
    ox::refPtr<scene> mScene;
};

} // namespace oxGraphics
