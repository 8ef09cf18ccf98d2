#include "oxcsentity.h"

#include "entitydrawscheme.h"
#include "triadgeometry.h"

#include "oxdrawer.h"

#include "oxassert.h"
#include "oxgeolimits.h"
#include "oxlog.h"

#include <cmath>

namespace oxGraphics {
namespace {

constexpr double kSizeTolerance = 1e-12;

constexpr ox::rgbColor kCubeColor{255, 255, 0};
constexpr ox::rgbColor kXColor{255, 0, 0};
constexpr ox::rgbColor kYColor{0, 255, 0};
constexpr ox::rgbColor kZColor{0, 0, 255};

ox::refPtr<iRecorded> recordMesh(iDrawer& drawer, const oxGeo::mesh3d& mesh) {
    drawer.beginRecording();
    drawer.drawMesh(mesh, 0);
    return drawer.endRecording();
}

} // namespace

ox::refPtr<csEntity> csEntity::create(const oxGeo::matrix3d& cs) { return ox::refPtr<csEntity>(new csEntity(cs)); }

csEntity::csEntity(const oxGeo::matrix3d& cs) : mCs(cs) {}

csEntity::~csEntity() = default;

void csEntity::record(iDrawer& drawer) {
    invalidate();
    const auto meshes = triadGeometry::buildTriadMeshes(mSize);

    // The cube carries cs; replaying it leaves cs on the drawer matrix for the arrows after it.
    drawer.beginRecording();
    drawer.multMatrix(mCs);
    drawer.drawMesh(meshes.originCube, 0);
    mCubeRecording = drawer.endRecording();

    mZArrowRecording = recordMesh(drawer, meshes.zArrow);
    mYArrowRecording = recordMesh(drawer, meshes.yArrow);
    mXArrowRecording = recordMesh(drawer, meshes.xArrow);
}

bool csEntity::draw(iDrawer* drawer, eRendermode /*mode*/, shaderProgram* /*program*/) {
    OX_ASSERT(drawer != nullptr);
    if (drawer == nullptr) return false;

    // The first colour goes before anything else: an opaque colour is what ends a render drawer's
    // skipping left over from a transparent drawable before this one, and while it skips, neither
    // the matrix product nor the recordings would reach OpenGL.
    drawer->setColor(kCubeColor, 0.0f);
    if (!drawer->isRecordingValid(mCubeRecording)) record(*drawer);

    drawer->pushMatrix();
    entityScheme::applyTransformation(*drawer, mTransformation);
    drawer->drawRecording(mCubeRecording);
    drawer->setColor(kXColor, 0.0f);
    drawer->drawRecording(mXArrowRecording);
    drawer->setColor(kYColor, 0.0f);
    drawer->drawRecording(mYArrowRecording);
    drawer->setColor(kZColor, 0.0f);
    drawer->drawRecording(mZArrowRecording);
    drawer->popMatrix();
    return true;
}

void csEntity::invalidate() {
    mCubeRecording.reset();
    mXArrowRecording.reset();
    mYArrowRecording.reset();
    mZArrowRecording.reset();
    mBounds.reset();
}

void csEntity::setTransformation(const oxGeo::matrix3d& transformation) {
    if (entityScheme::assignTransformation(mTransformation, transformation)) mBounds.reset();
}

void csEntity::setSize(double size) {
    if (!oxGeo::isUsableCoordinate(size)) {
        OX_LOG_WARN("oxGraphics::csEntity::setSize", L"ignored a size that is not a usable number; it stays %g", mSize);
        return;
    }
    const double magnitude = std::fabs(size);
    if (std::fabs(magnitude - mSize) > kSizeTolerance) invalidate();
    if (magnitude != mSize) mBounds.reset();
    mSize = magnitude;
}

oxGeo::boundBox3d csEntity::boundingBox() const {
    if (mBounds) return *mBounds;
    const oxGeo::matrix3d placement = mTransformation ? *mTransformation * mCs : mCs;
    const auto meshes = triadGeometry::buildTriadMeshes(mSize);
    oxGeo::boundBox3d box;
    for (const oxGeo::mesh3d* part : {&meshes.originCube, &meshes.xArrow, &meshes.yArrow, &meshes.zArrow})
        box.grow(entityScheme::transformedBox(part->vertices(), &placement));
    mBounds = box;
    return box;
}

} // namespace oxGraphics
