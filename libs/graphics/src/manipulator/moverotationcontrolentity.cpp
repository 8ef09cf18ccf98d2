#include "moverotationcontrolentity.h"

#include "entities/entitydrawscheme.h"

#include "oxdrawer.h"
#include "oxscene.h"

#include "oxgeolimits.h"

#include <algorithm>
#include <cmath>

namespace oxGraphics {
namespace {

constexpr ox::rgbColor kXColor{220, 40, 40};
constexpr ox::rgbColor kYColor{40, 170, 40};
constexpr ox::rgbColor kZColor{50, 90, 230};
constexpr ox::rgbColor kPlaneColor{240, 150, 30};
constexpr ox::rgbColor kViewColor{190, 190, 190};
constexpr ox::rgbColor kAreaColor{200, 90, 200};
constexpr ox::rgbColor kHotColor{255, 255, 90};

// Proportions of the grips, in grip sizes.
constexpr double kShaftRadius = 0.15;
constexpr double kHeadLength = 1.5;
constexpr double kHeadRadius = 0.45;
constexpr double kTubeRadius = 0.15;
constexpr double kSquareStart = 1.5;
constexpr double kSquareSide = 2.0;
constexpr double kCatchRadius = 1.5;
constexpr double kRingShare = 0.8;  // ring radius as a share of the longer of X and Y
constexpr int kRingSegments = 64;
constexpr int kTubeSides = 8;
constexpr int kCircleSegments = 72;

// Main-view tolerances in degrees: the angle is folded into [0, 360), so 180 is reached from both
// sides and gets twice the room of 0 and 360, which are each reached from one side only.
constexpr double kMainViewTolerance = 0.01;
constexpr double kMainViewToleranceOpposite = 0.02;
// A ray counts as looking along an axis for the sphere tests when |cos| is within this of 1.
constexpr double kAlongAxisTolerance = 0.001;

oxGeo::vector3d axisVector(int axis) {
    return axis == 0 ? oxGeo::vector3d::xAxis() : (axis == 1 ? oxGeo::vector3d::yAxis() : oxGeo::vector3d::zAxis());
}

oxGeo::matrix3d scaled(const oxGeo::matrix3d& m, double factor) {
    if (factor == 1.0) return m;
    oxGeo::matrix3d s;
    s.setToScale(factor);
    return m * s;
}

/// A ring of radius `radius` about `axis` through the origin, as a tube.
oxGeo::mesh3d ringMesh(int axis, double radius, double tube) {
    const oxGeo::vector3d n = axisVector(axis);
    const oxGeo::vector3d u = axisVector((axis + 1) % 3);
    const oxGeo::vector3d v = axisVector((axis + 2) % 3);
    oxGeo::mesh3d mesh;
    mesh.reserve(kRingSegments * kTubeSides, kRingSegments * kTubeSides);
    for (int i = 0; i < kRingSegments; ++i) {
        const double a = 2.0 * ox::angle::kPi * i / kRingSegments;
        const oxGeo::vector3d radial = u * std::cos(a) + v * std::sin(a);
        for (int j = 0; j < kTubeSides; ++j) {
            const double b = 2.0 * ox::angle::kPi * j / kTubeSides;
            mesh.addVertex((radial * (radius + tube * std::cos(b)) + n * (tube * std::sin(b))).asPoint());
        }
    }
    const auto at = [](int i, int j) {
        return static_cast<std::uint32_t>((i % kRingSegments) * kTubeSides + (j % kTubeSides));
    };
    for (int i = 0; i < kRingSegments; ++i)
        for (int j = 0; j < kTubeSides; ++j) mesh.addQuad(at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    return mesh;
}

/// The drawer's scene rays as iViewRays (whole pixels are all the drawing needs).
class drawerViewRays final : public iViewRays, public ox::refObj {
public:
    explicit drawerViewRays(const iDrawer& drawer) : mDrawer(drawer) {}
    bool viewRayAt(double x, double y, oxGeo::ray3d& out) const override {
        oxGeo::ray3d ray{oxGeo::point3d(), oxGeo::vector3d()};
        if (!mDrawer.sceneViewRayAt(static_cast<int>(x), static_cast<int>(y), ray) || ray.direction().isZeroLength())
            return false;
        out = ray;
        return true;
    }

private:
    const iDrawer& mDrawer;
};

/// Restores the pick mode however the pick ends.
template <class T> class restoreOnExit {
public:
    restoreOnExit(T& slot, T value) : mSlot(slot), mOld(slot) { mSlot = value; }
    ~restoreOnExit() { mSlot = mOld; }
    restoreOnExit(const restoreOnExit&) = delete;
    restoreOnExit& operator=(const restoreOnExit&) = delete;

private:
    T& mSlot;
    T mOld;
};

bool isGripName(std::uint32_t name) {
    switch (name) {
    case kMoveRotMoveX: case kMoveRotMoveY: case kMoveRotMoveZ: case kMoveRotMoveXY: case kMoveRotRotZ:
    case kMoveRotRotXY: case kMoveRotTiltXY: case kMoveRotRotView: return true;
    default: return false;
    }
}

} // namespace

ox::refPtr<moveRotationControlEntity> moveRotationControlEntity::create() {
    return ox::refPtr<moveRotationControlEntity>(new moveRotationControlEntity());
}

void moveRotationControlEntity::invalidate() { mRecordings = {}; }

void moveRotationControlEntity::setTransformation(const oxGeo::matrix3d& transformation) {
    entityScheme::assignTransformation(mTransformation, transformation);
}

bool moveRotationControlEntity::setPlacement(const oxGeo::matrix3d& placement) {
    oxGeo::matrix3d inverse;
    if (!oxGeo::isFinite(placement) || !placement.inverse(inverse) || !oxGeo::isFinite(inverse)) return false;
    mPlacement = placement;
    mPlacementInverse = inverse;
    setWorldAligned(mWorldAligned);
    return true;
}

void moveRotationControlEntity::setWorldAligned(bool worldAligned) {
    mWorldAligned = worldAligned;
    if (!worldAligned) {
        mExtra.reset();
        return;
    }
    oxGeo::matrix3d world;
    world.setToTranslation(mPlacement.translation());
    mExtra = std::make_unique<oxGeo::matrix3d>(mPlacementInverse * world);
}

oxGeo::matrix3d moveRotationControlEntity::operationFrame() const { return mExtra ? mPlacement * *mExtra : mPlacement; }

double moveRotationControlEntity::ringRadius() const { return kRingShare * std::max(mOptions.xSize, mOptions.ySize); }

double moveRotationControlEntity::displayScale(const iViewRays& views) const {
    if (!mOptions.constantScreenSize) return 1.0;
    const double pixel = pixelSizeIn(views, mPlacementInverse);
    const double extent = std::max({mOptions.xSize, mOptions.ySize, mOptions.zSize, mOptions.sphereRadius});
    if (!(pixel > 0.0) || !(extent > 0.0) || !std::isfinite(pixel)) return 1.0;
    return pixel * mOptions.screenPixels / extent;
}

double moveRotationControlEntity::tiltRadius(const iViewRays& views) const {
    const double radius = mOptions.sphereRadius > 0.0 ? mOptions.sphereRadius : kRingShare * mOptions.xSize;
    return radius * displayScale(views);
}

oxGeo::vector3d moveRotationControlEntity::xyRingAxisAt(const iViewRays& views, double x, double y) const {
    if (mOptions.xRotation != mOptions.yRotation) return mOptions.yRotation ? oxGeo::vector3d::yAxis() : oxGeo::vector3d::xAxis();
    oxGeo::ray3d ray;
    if (!views.viewRayAt(x, y, ray)) return oxGeo::vector3d::xAxis();
    ray.transformBy(mPlacementInverse);
    const double radius = ringRadius() * displayScale(views);
    double best = HUGE_VAL;
    oxGeo::vector3d chosen = oxGeo::vector3d::xAxis();
    for (int axis = 0; axis < 2; ++axis) {
        oxGeo::point3d hit;
        if (!oxGeo::plane3d(oxGeo::point3d(), axisVector(axis)).getIntersection(ray, hit)) continue;
        const double miss = std::fabs(hit.distanceTo(oxGeo::point3d()) - radius);
        if (miss < best) {
            best = miss;
            chosen = axisVector(axis);
        }
    }
    return chosen;
}

// --- hit test ----------------------------------------------------------------------------------

bool moveRotationControlEntity::mainViewGate(const iViewRays& views, double x, double y) const {
    oxGeo::ray3d ray;
    if (!views.viewRayAt(x, y, ray)) return false;
    const oxGeo::vector3d direction = mPlacementInverse * ray.direction();
    for (int axis = 0; axis < 3; ++axis) {
        const double a = direction.angleTo(axisVector(axis)).degreeBetweenZeroAndTwoPi();
        if (std::fabs(a) <= kMainViewTolerance || std::fabs(a - 180.0) <= kMainViewToleranceOpposite ||
            std::fabs(a - 360.0) <= kMainViewTolerance)
            return true;
    }
    return false;
}

eMoveRotOperation moveRotationControlEntity::pickGrips(const ox::refPtr<scene>& view, double x, double y, int size) {
    const long half = std::max(size, 0) >> 1;
    const long cx = std::lround(x), cy = std::lround(y);
    const auto corner = [](long v) { return static_cast<unsigned int>(std::clamp(v, 0L, 0x7FFFFFFFL)); };
    const unsigned int x1 = corner(cx - half), y1 = corner(cy - half), x2 = corner(cx + half), y2 = corner(cy + half);
    const iDrawable* self = this;

    const std::vector<pickHit_t> hits = view->pickSelectRect(x1, y1, x2, y2);
    const pickHit_t* nearest = nullptr;
    for (const auto& hit : hits)
        if (nearest == nullptr || hit.minDepth < nearest->minDepth) nearest = &hit;
    if (nearest != nullptr) {
        if (nearest->drawable.get() != self) return mOptions.xyMovement ? kMoveRotMoveXY : kMoveRotNone;
        if (nearest->names.empty() || !isGripName(nearest->names.front())) return kMoveRotNone;
        return static_cast<eMoveRotOperation>(nearest->names.front());
    }
    if (!mOptions.zMovement) return kMoveRotNone;  // the second pick could only give what is not allowed
    // Every pick draws the whole scene: skip the second where the catch zone cannot reach the square.
    if (!catchZoneNear(*sceneViewRays::create(view), x, y, half)) return kMoveRotNone;
    const restoreOnExit<ePickMode> zCatch(mPickMode, ePickMode::zCatch);
    for (const auto& hit : view->pickSelectRect(x1, y1, x2, y2))
        if (hit.drawable.get() == self) return kMoveRotMoveZ;
    return kMoveRotNone;
}

bool moveRotationControlEntity::catchZoneNear(const iViewRays& views, double x, double y, long half) const {
    oxGeo::ray3d ray;
    oxGeo::matrix3d toFrame;
    if (!views.viewRayAt(x, y, ray) || !operationFrame().inverse(toFrame)) return true;
    const double scale = displayScale(views);
    ray.transformBy(toFrame);
    const oxGeo::vector3d o = ray.origin().asVector() / scale, d = ray.direction() / scale;
    const double pixel = pixelSizeIn(views, toFrame) / scale;
    const double reach = kCatchRadius * mOptions.gripSize + (half + 1) * pixel * std::sqrt(2.0);
    // The nearest point of the Z segment [0, zSize] to the ray's line.
    const double a = d.dot(d), b = d.z(), dd = d.dot(o);
    if (!(a > 0.0)) return true;
    const double denominator = a - b * b;
    double t = denominator > 1e-12 * a ? (a * o.z() - b * dd) / denominator : 0.0;
    t = std::clamp(t, 0.0, mOptions.zSize);
    const oxGeo::vector3d onAxis(0.0, 0.0, t);
    const double s = (onAxis - o).dot(d) / a;
    const double distance = (o + d * s - onAxis).length();
    return !(distance > reach);
}

bool moveRotationControlEntity::sphereHit(const iViewRays& views, double x, double y,
                                          const oxGeo::vector3d& axis) const {
    oxGeo::ray3d ray;
    if (!views.viewRayAt(x, y, ray)) return false;
    ray.transformBy(mPlacementInverse);
    const double along = ray.direction().norm().dot(axis);
    if (std::fabs(std::fabs(along) - 1.0) > kAlongAxisTolerance) return false;
    const oxGeo::point3d centre = mPlacementInverse * (operationFrame() * oxGeo::point3d());
    oxGeo::point3d hit;
    if (!oxGeo::plane3d(centre, axis).getIntersection(ray, hit)) return false;
    return hit.distanceTo(centre) < mOptions.sphereRadius * displayScale(views);
}

bool moveRotationControlEntity::areaHit(const iViewRays& views, double x, double y) const {
    oxGeo::ray3d ray;
    oxGeo::matrix3d toFrame;
    if (!views.viewRayAt(x, y, ray) || !operationFrame().inverse(toFrame)) return false;
    ray.transformBy(toFrame);
    oxGeo::point3d hit;
    if (!oxGeo::plane3d().getIntersection(ray, hit)) return false;
    const double scale = displayScale(views);
    return mOptions.zRotationArea.isPointInside(oxGeo::point2d(hit.x() / scale, hit.y() / scale));
}

bool moveRotationControlEntity::hitTest(const ox::refPtr<scene>& view, double x, double y, int size) {
    const eMoveRotOperation previous = mHot;
    if (!view || !std::isfinite(x) || !std::isfinite(y)) return false;
    const auto rays = sceneViewRays::create(view);
    if (mOptions.modifyInMainViewsOnly && !mainViewGate(*rays, x, y)) {
        mHot = kMoveRotNone;
        return previous != mHot;
    }
    eMoveRotOperation op = pickGrips(view, x, y, size);
    if (op == kMoveRotNone && mOptions.sphereRadius > 0.0 && sphereHit(*rays, x, y, oxGeo::vector3d::zAxis()))
        op = kMoveRotRotView;
    if (op != kMoveRotNone) {
        if (op == kMoveRotMoveXY && mOptions.tiltInsteadMove) op = kMoveRotTiltXY;
    } else if (mOptions.sphereRadius > 0.0 && sphereHit(*rays, x, y, oxGeo::vector3d::yAxis())) {
        op = kMoveRotRotView;
    }
    if (!mOptions.zRotationArea.empty() && areaHit(*rays, x, y)) op = kMoveRotRotZ;
    mHot = op;
    return previous != mHot;
}

// --- drawing -----------------------------------------------------------------------------------

void moveRotationControlEntity::setGripColor(iDrawer& drawer, eMoveRotOperation op, const ox::rgbColor& color) const {
    drawer.setColor(op == mHot ? kHotColor : color, 0.0f);
}

void moveRotationControlEntity::drawArrow(iDrawer& drawer, const oxGeo::vector3d& axis, double length) const {
    if (!(length > 0.0)) return;
    const double head = std::min(kHeadLength * mOptions.gripSize, length);
    const oxGeo::point3d base = (axis * (length - head)).asPoint();
    const oxGeo::point3d tip = (axis * length).asPoint();
    const auto shaft = static_cast<float>(kShaftRadius * mOptions.gripSize);
    if (length > head) drawer.drawCylinder(oxGeo::point3d(), base, shaft, shaft, false, false, 16, 0);
    drawer.drawCylinder(base, tip, static_cast<float>(kHeadRadius * mOptions.gripSize), 0.0f, true, false, 24, 0);
}

void moveRotationControlEntity::drawRing(iDrawer& drawer, int axis) const {
    drawer.drawMesh(ringMesh(axis, ringRadius(), kTubeRadius * mOptions.gripSize), 0);
}

template <class Emit>
void moveRotationControlEntity::replay(iDrawer& drawer, ox::refPtr<iRecorded>& recording, Emit emit) {
    entityScheme::ensureRecording(drawer, recording, emit);
    drawer.drawRecording(recording);
}

void moveRotationControlEntity::drawGrips(iDrawer& drawer, double scale, const iViewRays* views) {
    // The local grips.
    drawer.pushMatrix();
    drawer.multMatrix(scaled(mPlacement, scale));
    if (mOptions.xyMovement) {
        drawer.pushName(kMoveRotMoveX);
        setGripColor(drawer, kMoveRotMoveX, kXColor);
        replay(drawer, mRecordings.xArrow, [&] { drawArrow(drawer, oxGeo::vector3d::xAxis(), mOptions.xSize); });
        drawer.popName();
        drawer.pushName(kMoveRotMoveY);
        setGripColor(drawer, kMoveRotMoveY, kYColor);
        replay(drawer, mRecordings.yArrow, [&] { drawArrow(drawer, oxGeo::vector3d::yAxis(), mOptions.ySize); });
        drawer.popName();
    }
    if (mOptions.xRotation || mOptions.yRotation) {
        drawer.pushName(kMoveRotRotXY);
        if (mOptions.xRotation) {
            setGripColor(drawer, kMoveRotRotXY, kXColor);
            replay(drawer, mRecordings.xRing, [&] { drawRing(drawer, 0); });
        }
        if (mOptions.yRotation) {
            setGripColor(drawer, kMoveRotRotXY, kYColor);
            replay(drawer, mRecordings.yRing, [&] { drawRing(drawer, 1); });
        }
        drawer.popName();
    }
    // The view circle: in the plane facing the viewer, about the centre.
    oxGeo::matrix3d viewAxes;
    if (mOptions.sphereRadius > 0.0 && views != nullptr && viewRotation(*views, viewAxes)) {
        const oxGeo::vector3d right = (mPlacementInverse * (viewAxes * oxGeo::vector3d::xAxis())).norm();
        const oxGeo::vector3d up = (mPlacementInverse * (viewAxes * oxGeo::vector3d::yAxis())).norm();
        std::vector<oxGeo::point3d> circle;
        circle.reserve(kCircleSegments + 1);
        for (int i = 0; i <= kCircleSegments; ++i) {
            const double a = 2.0 * ox::angle::kPi * i / kCircleSegments;
            circle.push_back((right * (mOptions.sphereRadius * std::cos(a)) + up * (mOptions.sphereRadius * std::sin(a))).asPoint());
        }
        drawer.pushName(kMoveRotRotView);
        setGripColor(drawer, kMoveRotRotView, kViewColor);
        drawer.setLineWidth(2.0f);
        drawer.drawPolyline(circle);
        drawer.setLineWidth(1.0f);
        drawer.popName();
    }
    drawer.popMatrix();

    // The grips of the operations that follow the local/world choice.
    drawer.pushMatrix();
    drawer.multMatrix(scaled(operationFrame(), scale));
    if (mOptions.zMovement) {
        drawer.pushName(kMoveRotMoveZ);
        setGripColor(drawer, kMoveRotMoveZ, kZColor);
        replay(drawer, mRecordings.zArrow, [&] { drawArrow(drawer, oxGeo::vector3d::zAxis(), mOptions.zSize); });
        drawer.popName();
    }
    if (mOptions.xyMovement) {
        const eMoveRotOperation op = mOptions.tiltInsteadMove ? kMoveRotTiltXY : kMoveRotMoveXY;
        drawer.pushName(kMoveRotMoveXY);
        setGripColor(drawer, op, kPlaneColor);
        replay(drawer, mRecordings.square, [&] {
            const double a = kSquareStart * mOptions.gripSize, b = a + kSquareSide * mOptions.gripSize;
            oxGeo::mesh3d square;
            square.addQuad(square.addVertex({a, a, 0.0}), square.addVertex({b, a, 0.0}),
                           square.addVertex({b, b, 0.0}), square.addVertex({a, b, 0.0}));
            drawer.drawMesh(square, 0);
        });
        drawer.popName();
    }
    if (mOptions.zRotation) {
        drawer.pushName(kMoveRotRotZ);
        setGripColor(drawer, kMoveRotRotZ, kZColor);
        replay(drawer, mRecordings.zRing, [&] { drawRing(drawer, 2); });
        drawer.popName();
    }
    if (mOptions.showRotationArea && mOptions.zRotationArea.size() >= 2) {
        std::vector<oxGeo::point3d> outline;
        for (const auto& p : mOptions.zRotationArea) outline.emplace_back(p);
        outline.emplace_back(mOptions.zRotationArea[0]);
        drawer.pushName(kMoveRotRotZ);
        setGripColor(drawer, kMoveRotRotZ, kAreaColor);
        drawer.setLineWidth(2.0f);
        drawer.drawPolyline(outline);
        drawer.setLineWidth(1.0f);
        drawer.popName();
    }
    drawer.popMatrix();
}

void moveRotationControlEntity::drawZCatchZone(iDrawer& drawer, double scale) {
    drawer.pushMatrix();
    drawer.multMatrix(scaled(operationFrame(), scale));
    drawer.pushName(kMoveRotMoveZ);
    replay(drawer, mRecordings.catchZone, [&] {
        const auto radius = static_cast<float>(kCatchRadius * mOptions.gripSize);
        drawer.drawCylinder(oxGeo::point3d(), oxGeo::point3d(0.0, 0.0, mOptions.zSize), radius, radius, true, true, 16, 0);
    });
    drawer.popName();
    drawer.popMatrix();
}

bool moveRotationControlEntity::draw(iDrawer* drawer, eRendermode mode, shaderProgram* /*program*/) {
    if (drawer == nullptr) return false;
    // An opaque colour first: it ends a render drawer's skipping left by a transparent drawable
    // before this one, which would otherwise swallow the matrix products below.
    drawer->setColor(kXColor, 0.0f);
    const drawerViewRays views(*drawer);
    const double scale = displayScale(views);
    drawer->pushMatrix();
    entityScheme::applyTransformation(*drawer, mTransformation);
    if (mPickMode == ePickMode::zCatch) {
        if (mode == eRendermode::select) drawZCatchZone(*drawer, scale);
    } else {
        drawGrips(*drawer, scale, &views);
    }
    drawer->popMatrix();
    return true;
}

} // namespace oxGraphics
