#include "oxboundeddrawable.h"

#include "oxcsentity.h"
#include "oxmeshentity.h"
#include "oxpointentity.h"
#include "oxpolylineentity.h"

#include "oxassert.h"

namespace oxGraphics {
namespace {

// The bounds function holds its own reference, so it stays callable whatever the adapter does
// with the drawable.
template <class Entity>
ox::refPtr<boundedDrawable> wrapEntity(const ox::refPtr<Entity>& entity) {
    if (!entity) return boundedDrawable::create(nullptr, {});   // reports the empty drawable
    return boundedDrawable::create(entity, [entity] { return entity->boundingBox(); });
}

} // namespace

ox::refPtr<boundedDrawable> boundedDrawable::create(ox::refPtr<iDrawable> drawable, boundsFunction bounds) {
    OX_ASSERT(drawable);
    if (!drawable) return {};
    return ox::refPtr<boundedDrawable>(new boundedDrawable(std::move(drawable), std::move(bounds)));
}

ox::refPtr<boundedDrawable> boundedDrawable::create(const ox::refPtr<csEntity>& entity) { return wrapEntity(entity); }
ox::refPtr<boundedDrawable> boundedDrawable::create(const ox::refPtr<meshEntity>& entity) { return wrapEntity(entity); }
ox::refPtr<boundedDrawable> boundedDrawable::create(const ox::refPtr<pointEntity>& entity) { return wrapEntity(entity); }
ox::refPtr<boundedDrawable> boundedDrawable::create(const ox::refPtr<polylineEntity>& entity) {
    return wrapEntity(entity);
}

boundedDrawable::boundedDrawable(ox::refPtr<iDrawable> drawable, boundsFunction bounds)
    : mDrawable(std::move(drawable)), mBounds(std::move(bounds)) {}

boundedDrawable::~boundedDrawable() = default;

bool boundedDrawable::draw(iDrawer* drawer, eRendermode mode, shaderProgram* program) {
    return mDrawable->draw(drawer, mode, program);
}

void boundedDrawable::invalidate() { mDrawable->invalidate(); }

void boundedDrawable::setTransformation(const oxGeo::matrix3d& transformation) {
    mDrawable->setTransformation(transformation);
}

oxGeo::boundBox3d boundedDrawable::worldBoundingBox() const { return mBounds ? mBounds() : oxGeo::boundBox3d(); }

} // namespace oxGraphics
