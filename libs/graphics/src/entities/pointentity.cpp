#include "oxpointentity.h"

#include "entitydrawscheme.h"

#include "oxdrawer.h"

#include "oxassert.h"

namespace oxGraphics {

ox::refPtr<pointEntity> pointEntity::create(const oxGeo::point3d& point) {
    return ox::refPtr<pointEntity>(new pointEntity({point}));
}

ox::refPtr<pointEntity> pointEntity::create(const oxGeo::point2d& point) {
    return ox::refPtr<pointEntity>(new pointEntity({oxGeo::point3d(point)}));
}

ox::refPtr<pointEntity> pointEntity::create(const std::vector<oxGeo::point3d>& points) {
    return ox::refPtr<pointEntity>(new pointEntity(points));
}

ox::refPtr<pointEntity> pointEntity::create(const std::vector<oxGeo::point2d>& points) {
    std::vector<oxGeo::point3d> lifted;
    lifted.reserve(points.size());
    for (const auto& p : points) lifted.emplace_back(p);
    return ox::refPtr<pointEntity>(new pointEntity(std::move(lifted)));
}

pointEntity::pointEntity(std::vector<oxGeo::point3d> points) : mPoints(std::move(points)) {}

pointEntity::~pointEntity() = default;

bool pointEntity::draw(iDrawer* drawer, eRendermode /*mode*/, shaderProgram* /*program*/) {
    OX_ASSERT(drawer != nullptr);
    if (drawer == nullptr) return false;
    drawer->setColor(mColor, 0.0f);
    drawer->setPointSize(static_cast<float>(mPointSize));
    entityScheme::applyTransformation(*drawer, mTransformation);
    entityScheme::ensureRecording(*drawer, mRecording, [&] {
        // An empty point set records an empty list rather than an empty GL_POINTS block.
        if (!mPoints.empty()) drawer->drawPoints(mPoints);
    });
    drawer->drawRecording(mRecording);
    return true;
}

void pointEntity::invalidate() {
    mRecording.reset();
    mBounds.reset();
}

void pointEntity::setTransformation(const oxGeo::matrix3d& transformation) {
    if (entityScheme::assignTransformation(mTransformation, transformation)) mBounds.reset();
}

oxGeo::boundBox3d pointEntity::boundingBox() const {
    if (!mBounds) mBounds = entityScheme::transformedBox(mPoints, mTransformation.get());
    return *mBounds;
}

} // namespace oxGraphics
