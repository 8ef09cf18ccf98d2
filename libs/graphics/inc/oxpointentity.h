#pragma once
// pointEntity: one or more points shown as fat dots.
#include "oxgraphics_export.h"
#include "oxdrawable.h"
#include "oxrecorded.h"

#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeopoint.h"

#include "oxcolor.h"
#include "oxrefobj.h"
#include "oxrefptr.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace oxGraphics {

/// Draws its own copy of a set of points, unlit, in one colour and point size. 2D points are
/// placed at z = 0. An entity without points draws nothing and does not fail.
///
/// The entity is not an iBoundBoxProvider. Add `boundedDrawable::create(entity)` to the scene
/// instead of the entity itself when zoomAll should frame it (oxboundeddrawable.h).
class OX_GRAPHICS_API pointEntity : public iDrawable, public ox::refObj {
public:
    /// Each copies the given point or points; white, point size 2, no transformation.
    static ox::refPtr<pointEntity> create(const oxGeo::point3d& point);
    static ox::refPtr<pointEntity> create(const oxGeo::point2d& point);
    static ox::refPtr<pointEntity> create(const std::vector<oxGeo::point3d>& points);
    static ox::refPtr<pointEntity> create(const std::vector<oxGeo::point2d>& points);

    pointEntity(const pointEntity&) = delete;
    pointEntity& operator=(const pointEntity&) = delete;

    /// Colour, point size, transformation, record once (drawPoints), replay. `mode` and
    /// `program` are not used. False only when `drawer` is null.
    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) override;
    void invalidate() override;
    void setTransformation(const oxGeo::matrix3d& transformation) override;

    /// The stored transformation; null when none is set.
    const oxGeo::matrix3d* transformation() const { return mTransformation.get(); }
    const std::vector<oxGeo::point3d>& points() const { return mPoints; }
    /// Colour and point size are applied outside the recording; changing them re-records nothing.
    void setColor(const ox::rgbColor& color) { mColor = color; }
    const ox::rgbColor& color() const { return mColor; }
    /// In pixels; a size of 0 or less leaves the drawer's current point size as it is.
    void setPointSize(std::int32_t size) { mPointSize = size; }
    std::int32_t pointSize() const { return mPointSize; }

    /// The points through the transformation, in world space; invalid when there are none.
    oxGeo::boundBox3d boundingBox() const;

protected:
    explicit pointEntity(std::vector<oxGeo::point3d> points);
    ~pointEntity() override;

private:
    std::vector<oxGeo::point3d> mPoints;
    std::unique_ptr<oxGeo::matrix3d> mTransformation;
    // The world box, kept until the geometry or the transformation changes (invalidate,
    // setTransformation): camera drags ask for it on every mouse move.
    mutable std::optional<oxGeo::boundBox3d> mBounds;
    ox::rgbColor mColor{255, 255, 255};
    std::int32_t mPointSize = 2;
    ox::refPtr<iRecorded> mRecording;
};

} // namespace oxGraphics
