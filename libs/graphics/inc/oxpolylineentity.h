#pragma once
// polylineEntity: one polyline that the host shares with the scene, drawn as a line.
#include "oxgraphics_export.h"
#include "oxdrawable.h"
#include "oxrecorded.h"

#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeopolyline.h"

#include "oxcolor.h"
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxsharedptr.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace oxGraphics {

/// Draws a shared `polyline3d` as an open, unlit line strip in one colour and line width. The
/// polyline is recorded on the first draw; after changing it the host calls invalidate().
///
/// The entity is not an iBoundBoxProvider. Add `boundedDrawable::create(entity)` to the scene
/// instead of the entity itself when zoomAll should frame it (oxboundeddrawable.h).
class OX_GRAPHICS_API polylineEntity : public iDrawable, public ox::refObj {
public:
    /// White, line width 1, no transformation. An empty pointer is accepted here and reported
    /// ("m_p != nullptr") by the draw that would record it.
    static ox::refPtr<polylineEntity> create(ox::const_sharedPtr<oxGeo::polyline3d> polyline);

    polylineEntity(const polylineEntity&) = delete;
    polylineEntity& operator=(const polylineEntity&) = delete;

    /// Colour, line width, transformation, record once (drawPolyline), replay. `mode` and
    /// `program` are not used. False, with nothing drawn, when the polyline pointer is empty or
    /// `drawer` is null.
    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) override;
    void invalidate() override;
    void setTransformation(const oxGeo::matrix3d& transformation) override;

    /// The stored transformation; null when none is set.
    const oxGeo::matrix3d* transformation() const { return mTransformation.get(); }
    const ox::const_sharedPtr<oxGeo::polyline3d>& polyline() const { return mPolyline; }
    /// Colour and line width are applied outside the recording; changing them re-records nothing.
    void setColor(const ox::rgbColor& color) { mColor = color; }
    const ox::rgbColor& color() const { return mColor; }
    /// In pixels; a width of 0 or less leaves the drawer's current line width as it is.
    void setLineWidth(std::int32_t width) { mLineWidth = width; }
    std::int32_t lineWidth() const { return mLineWidth; }

    /// The polyline's points through the transformation, in world space; invalid for an empty
    /// pointer or a polyline without points.
    /// (Computed once and kept until invalidate or setTransformation: call invalidate after
    /// changing the shared geometry, as for the recording.)
    oxGeo::boundBox3d boundingBox() const;

protected:
    explicit polylineEntity(ox::const_sharedPtr<oxGeo::polyline3d> polyline);
    ~polylineEntity() override;

private:
    ox::const_sharedPtr<oxGeo::polyline3d> mPolyline;
    std::unique_ptr<oxGeo::matrix3d> mTransformation;
    // The world box, kept until the geometry or the transformation changes (invalidate,
    // setTransformation): camera drags ask for it on every mouse move.
    mutable std::optional<oxGeo::boundBox3d> mBounds;
    ox::rgbColor mColor{255, 255, 255};
    std::int32_t mLineWidth = 1;
    ox::refPtr<iRecorded> mRecording;
};

} // namespace oxGraphics
