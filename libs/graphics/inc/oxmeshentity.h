#pragma once
// meshEntity: one triangle mesh that the host shares with the scene, in one colour.
#include "oxgraphics_export.h"
#include "oxdrawable.h"
#include "oxrecorded.h"

#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeomesh.h"

#include "oxcolor.h"
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxsharedptr.h"

#include <memory>
#include <optional>

namespace oxGraphics {

/// Draws a shared `mesh3d` filled and flat-shaded. The mesh is recorded on the first draw and
/// replayed afterwards; the entity never changes it. After the host changed the mesh contents it
/// calls invalidate(), otherwise the old geometry keeps showing until the drawer drops the
/// recording (for example when the context changed).
///
/// The entity is not an iBoundBoxProvider. Add `boundedDrawable::create(entity)` to the scene
/// instead of the entity itself when zoomAll should frame it (oxboundeddrawable.h).
class OX_GRAPHICS_API meshEntity : public iDrawable, public ox::refObj {
public:
    /// White, no transformation, nothing recorded yet. An empty pointer is accepted here and
    /// reported ("m_p != nullptr") by the draw that would record it.
    static ox::refPtr<meshEntity> create(ox::const_sharedPtr<oxGeo::mesh3d> mesh);

    meshEntity(const meshEntity&) = delete;
    meshEntity& operator=(const meshEntity&) = delete;

    /// Colour, transformation, record once (drawMesh filled), replay. `mode` and `program` are
    /// not used: the drawer carries what differs between passes. False, with nothing drawn, when
    /// the mesh pointer is empty or `drawer` is null.
    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) override;
    void invalidate() override;
    void setTransformation(const oxGeo::matrix3d& transformation) override;

    /// The stored transformation; null when none is set.
    const oxGeo::matrix3d* transformation() const { return mTransformation.get(); }
    const ox::const_sharedPtr<oxGeo::mesh3d>& mesh() const { return mMesh; }
    /// Applied outside the recording, so changing it needs no re-recording.
    void setColor(const ox::rgbColor& color) { mColor = color; }
    const ox::rgbColor& color() const { return mColor; }

    /// The mesh's vertices through the transformation, in world space; invalid for an empty
    /// pointer or a mesh without vertices.
    /// (Computed once and kept until invalidate or setTransformation: call invalidate after
    /// changing the shared geometry, as for the recording.)
    oxGeo::boundBox3d boundingBox() const;

protected:
    explicit meshEntity(ox::const_sharedPtr<oxGeo::mesh3d> mesh);
    ~meshEntity() override;

private:
    ox::const_sharedPtr<oxGeo::mesh3d> mMesh;
    std::unique_ptr<oxGeo::matrix3d> mTransformation;
    // The world box, kept until the geometry or the transformation changes (invalidate,
    // setTransformation): camera drags ask for it on every mouse move.
    mutable std::optional<oxGeo::boundBox3d> mBounds;
    ox::rgbColor mColor{255, 255, 255};
    ox::refPtr<iRecorded> mRecording;
};

} // namespace oxGraphics
