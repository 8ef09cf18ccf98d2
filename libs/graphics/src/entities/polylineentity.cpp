#include "oxpolylineentity.h"

#include "entitydrawscheme.h"

#include "oxdrawer.h"

#include "oxassert.h"

namespace oxGraphics {

ox::refPtr<polylineEntity> polylineEntity::create(ox::const_sharedPtr<oxGeo::polyline3d> polyline) {
    return ox::refPtr<polylineEntity>(new polylineEntity(std::move(polyline)));
}

polylineEntity::polylineEntity(ox::const_sharedPtr<oxGeo::polyline3d> polyline) : mPolyline(std::move(polyline)) {}

polylineEntity::~polylineEntity() = default;

bool polylineEntity::draw(iDrawer* drawer, eRendermode /*mode*/, shaderProgram* /*program*/) {
    OX_ASSERT(drawer != nullptr);
    if (drawer == nullptr) return false;
    drawer->setColor(mColor, 0.0f);
    drawer->setLineWidth(static_cast<float>(mLineWidth));
    entityScheme::applyTransformation(*drawer, mTransformation);
    const oxGeo::polyline3d* polyline = nullptr;
    const bool recorded = entityScheme::ensureRecording(
        *drawer, mRecording, [&] { return (polyline = mPolyline.checkedGet()) != nullptr; },
        [&] { drawer->drawPolyline(polyline->points()); });
    if (!recorded) return false;
    drawer->drawRecording(mRecording);
    return true;
}

void polylineEntity::invalidate() {
    mRecording.reset();
    mBounds.reset();
}

void polylineEntity::setTransformation(const oxGeo::matrix3d& transformation) {
    if (entityScheme::assignTransformation(mTransformation, transformation)) mBounds.reset();
}

oxGeo::boundBox3d polylineEntity::boundingBox() const {
    const oxGeo::polyline3d* polyline = mPolyline.get();
    if (polyline == nullptr) return {};
    if (!mBounds) mBounds = entityScheme::transformedBox(polyline->points(), mTransformation.get());
    return *mBounds;
}

} // namespace oxGraphics
