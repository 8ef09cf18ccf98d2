#include "oxmeshentity.h"

#include "entitydrawscheme.h"

#include "oxdrawer.h"

#include "oxassert.h"

namespace oxGraphics {

ox::refPtr<meshEntity> meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d> mesh) {
    return ox::refPtr<meshEntity>(new meshEntity(std::move(mesh)));
}

meshEntity::meshEntity(ox::const_sharedPtr<oxGeo::mesh3d> mesh) : mMesh(std::move(mesh)) {}

meshEntity::~meshEntity() = default;

bool meshEntity::draw(iDrawer* drawer, eRendermode /*mode*/, shaderProgram* /*program*/) {
    OX_ASSERT(drawer != nullptr);
    if (drawer == nullptr) return false;
    drawer->setColor(mColor, 0.0f);
    entityScheme::applyTransformation(*drawer, mTransformation);
    const oxGeo::mesh3d* mesh = nullptr;
    const bool recorded = entityScheme::ensureRecording(
        *drawer, mRecording, [&] { return (mesh = mMesh.checkedGet()) != nullptr; },
        [&] { drawer->drawMesh(*mesh, 0); });
    if (!recorded) return false;
    drawer->drawRecording(mRecording);
    return true;
}

void meshEntity::invalidate() {
    mRecording.reset();
    mBounds.reset();
}

void meshEntity::setTransformation(const oxGeo::matrix3d& transformation) {
    if (entityScheme::assignTransformation(mTransformation, transformation)) mBounds.reset();
}

oxGeo::boundBox3d meshEntity::boundingBox() const {
    const oxGeo::mesh3d* mesh = mMesh.get();
    if (mesh == nullptr) return {};
    if (!mBounds) mBounds = entityScheme::transformedBox(mesh->vertices(), mTransformation.get());
    return *mBounds;
}

} // namespace oxGraphics
