#pragma once
// csEntity: a coordinate system shown as a small solid model.
#include "oxgraphics_export.h"
#include "oxdrawable.h"
#include "oxrecorded.h"

#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"

#include "oxrefobj.h"
#include "oxrefptr.h"

#include <memory>
#include <optional>

namespace oxGraphics {

/// A yellow cube at the origin and three solid arrows, red along X, green along Y, blue along Z,
/// each `size` long plus a head of 0.2·size (cube edge 0.1·size, shaft radius 0.03·size, head
/// radius 0.05·size).
///
/// Placement: the whole triad sits in the frame `cs` — the origin cube's recording multiplies
/// `cs` onto the drawer matrix, and the arrows are replayed after it in that frame. An additional
/// transformation, when set, is multiplied in front: a triad point p is drawn at
/// transformation · cs · p. The drawer matrix is pushed before and popped after, so nothing of
/// this leaks to the next drawable.
///
/// The four parts are recorded once and replayed on every draw; setSize with a new size rebuilds
/// them on the next draw.
///
/// The entity is not an iBoundBoxProvider. Add `boundedDrawable::create(entity)` to the scene
/// instead of the entity itself when zoomAll should frame it (oxboundeddrawable.h).
class OX_GRAPHICS_API csEntity : public iDrawable, public ox::refObj {
public:
    /// Size 1, no additional transformation, nothing recorded yet.
    static ox::refPtr<csEntity> create(const oxGeo::matrix3d& cs);

    csEntity(const csEntity&) = delete;
    csEntity& operator=(const csEntity&) = delete;

    /// Records the four parts when the drawer cannot replay them, then replays the cube, X, Y
    /// and Z arrows in yellow, red, green and blue. `mode` and `program` are not used. False only
    /// when `drawer` is null.
    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) override;
    void invalidate() override;
    void setTransformation(const oxGeo::matrix3d& transformation) override;

    /// The stored additional transformation; null when none is set.
    const oxGeo::matrix3d* transformation() const { return mTransformation.get(); }
    const oxGeo::matrix3d& coordinateSystem() const { return mCs; }
    /// Stores |size|; drops the recordings only when that differs from the current size by more
    /// than 1e-12. A size of 0 shows a point-sized cube and no arrows.
    void setSize(double size);
    double size() const { return mSize; }

    /// The extent of the cube and the arrows through cs and the transformation, in world space.
    oxGeo::boundBox3d boundingBox() const;

protected:
    explicit csEntity(const oxGeo::matrix3d& cs);
    ~csEntity() override;

private:
    void record(iDrawer& drawer);

    oxGeo::matrix3d mCs;
    std::unique_ptr<oxGeo::matrix3d> mTransformation;
    // The world box, kept until the geometry or the transformation changes (invalidate,
    // setTransformation): camera drags ask for it on every mouse move.
    mutable std::optional<oxGeo::boundBox3d> mBounds;
    double mSize = 1.0;
    ox::refPtr<iRecorded> mCubeRecording;
    ox::refPtr<iRecorded> mXArrowRecording;
    ox::refPtr<iRecorded> mYArrowRecording;
    ox::refPtr<iRecorded> mZArrowRecording;
};

} // namespace oxGraphics
