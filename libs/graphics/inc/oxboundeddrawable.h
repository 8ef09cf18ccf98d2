#pragma once
// boundedDrawable: gives any drawable a bounding box, so the scene's fit operations frame it.
#include "oxgraphics_export.h"
#include "oxdrawable.h"

#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"

#include "oxrefobj.h"
#include "oxrefptr.h"

#include <functional>

namespace oxGraphics {

class csEntity;
class meshEntity;
class pointEntity;
class polylineEntity;

/// Wraps a drawable together with a function that tells its world-space bounds. The library's
/// entities do not implement iBoundBoxProvider themselves; a host that wants zoomAll to frame one
/// adds the adapter to the scene instead of the entity:
///
///     auto mesh = oxGraphics::meshEntity::create(sharedMesh);
///     scene->add(oxGraphics::boundedDrawable::create(mesh));
///
/// draw, invalidate and setTransformation go to the wrapped drawable, so the host may keep
/// talking to the entity directly as well. The scene sees the adapter: remove, select and pick
/// results refer to it, not to the wrapped drawable.
class OX_GRAPHICS_API boundedDrawable : public iDrawable, public iBoundBoxProvider, public ox::refObj {
public:
    using boundsFunction = std::function<oxGeo::boundBox3d()>;

    /// `bounds` is asked on every worldBoundingBox call; it must answer in world space, including
    /// any transformation set on the drawable. An empty drawable is a programming error: it
    /// asserts and nothing is created. An empty function gives an invalid box (no extent).
    static ox::refPtr<boundedDrawable> create(ox::refPtr<iDrawable> drawable, boundsFunction bounds);
    /// The entity together with its own boundingBox(); empty (after asserting) for an empty entity.
    static ox::refPtr<boundedDrawable> create(const ox::refPtr<csEntity>& entity);
    static ox::refPtr<boundedDrawable> create(const ox::refPtr<meshEntity>& entity);
    static ox::refPtr<boundedDrawable> create(const ox::refPtr<pointEntity>& entity);
    static ox::refPtr<boundedDrawable> create(const ox::refPtr<polylineEntity>& entity);

    boundedDrawable(const boundedDrawable&) = delete;
    boundedDrawable& operator=(const boundedDrawable&) = delete;

    bool draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) override;
    void invalidate() override;
    void setTransformation(const oxGeo::matrix3d& transformation) override;
    oxGeo::boundBox3d worldBoundingBox() const override;

    const ox::refPtr<iDrawable>& drawable() const { return mDrawable; }

protected:
    boundedDrawable(ox::refPtr<iDrawable> drawable, boundsFunction bounds);
    ~boundedDrawable() override;

private:
    ox::refPtr<iDrawable> mDrawable;
    boundsFunction mBounds;
};

} // namespace oxGraphics
