#include "oxmoverotationcontrol.h"

#include "moverotationcontrolentity.h"
#include "moverotationoperations.h"
#include "viewrays.h"

#include "oxscene.h"

#include "oxgeolimits.h"
#include "oxjobsqueue.h"
#include "oxlog.h"
#include "oxsettrafo.h"

#include <algorithm>
#include <cmath>

namespace oxGraphics {
namespace {

constexpr const char* kLogger = "oxGraphics::moveRotationControl";
// Within this of the view direction the Z arrow is seen end-on, or the world XZ plane edge-on.
constexpr double kZMoveViewLimitDegrees = 5.0;

bool usablePosition(double x, double y, const char* operation) {
    if (std::isfinite(x) && std::isfinite(y)) return true;
    OX_LOG_WARN(kLogger, L"%s: ignored a cursor position that is not a number", operation);
    return false;
}

} // namespace

struct moveRotationControl::impl {
    ox::refPtr<scene> view;
    ox::iSetTrafo* functor = nullptr;                   // the host's, not owned
    oxGeo::matrix3d baseSystem;
    oxGeo::matrix3d addViewTrafo;
    oxGeo::matrix3d placement;                          // P: the base system moved on by each modification
    oxGeo::matrix3d result;                             // W of the modification in progress
    ox::refPtr<moveRotationControlEntity> drawable;     // null while detached
    std::unique_ptr<moveRotationOperation> operation;   // null when no modification runs
    bool local = true;

    eMoveRotOperation operationKind = kMoveRotNone;
    bool attached = false;
    moveRotationOptions_t detachedOptions;  // what the options are while there is no drawable
    std::vector<ox::refPtr<iDrawable>> xyMove;
    std::vector<ox::refPtr<iDrawable>> zMove;

    /// The drawable, made with the current options on first use.
    moveRotationControlEntity& entity() {
        if (!drawable) {
            drawable = moveRotationControlEntity::create();
            drawable->options() = detachedOptions;
            syncPlacement();
        }
        return *drawable;
    }
    /// The options live in the drawable; without one, here.
    moveRotationOptions_t& options() { return drawable ? drawable->options() : detachedOptions; }
    void geometryChanged() {
        if (drawable) drawable->invalidate();
        fireSceneInvalid();
    }
    /// The frame the local/world operations work in.
    oxGeo::matrix3d operationFrame() const {
        const oxGeo::matrix3d c = shownPlacement();
        return local ? c : oxGeo::matrix3d().setToTranslation(c.translation());
    }
    /// C = addViewTrafo · placement: where the handle is shown and works.
    oxGeo::matrix3d shownPlacement() const { return addViewTrafo * placement; }
    void syncPlacement() {
        if (!drawable) return;
        drawable->setWorldAligned(!local);
        if (!drawable->setPlacement(shownPlacement()))
            OX_LOG_WARN(kLogger, L"the placement cannot be inverted; the handle stays where it was");
    }
    /// The world transformation (in the placement's world) of a result in the handle's frame.
    oxGeo::matrix3d worldOf(const oxGeo::matrix3d& local) const {
        oxGeo::matrix3d inverse;
        if (!placement.inverse(inverse)) return {};
        return placement * local * inverse;
    }
    /// The same as the scene sees it: what the drawable is moved by.
    oxGeo::matrix3d shownOf(const oxGeo::matrix3d& local) const {
        const oxGeo::matrix3d c = shownPlacement();
        oxGeo::matrix3d inverse;
        if (!c.inverse(inverse)) return {};
        return c * local * inverse;
    }
    void fireSceneInvalid() const {
        if (view) view->fireSceneInvalid();
    }
    /// The angle between the view direction and `axis` (world), folded into [0, 90]; -1 without a view.
    double viewAngleTo(const oxGeo::vector3d& axis) const {
        oxGeo::ray3d ray;
        if (!sceneViewRays::create(view)->viewRayAt(0, 0, ray)) return -1.0;
        const double a = ray.direction().angleTo(axis).degree();
        return std::min(a, 180.0 - a);
    }
    bool looksAlong(int axis, double tolerance) const {
        const oxGeo::matrix3d c = shownPlacement();
        const double a = viewAngleTo({c(0, axis), c(1, axis), c(2, axis)});
        return a >= 0.0 && a <= tolerance;
    }
    void dropOperation() {
        operation.reset();
        operationKind = kMoveRotNone;
    }
};

// --- creation ----------------------------------------------------------------------------------

ox::refPtr<moveRotationControl> moveRotationControl::create(ox::refPtr<scene> view, const oxGeo::matrix3d& baseSystem,
                                                            bool local) {
    if (!view) {
        OX_LOG_WARN(kLogger, L"create: no scene given; no control made");
        return {};
    }
    ox::refPtr<moveRotationControl> control(new moveRotationControl(std::move(view), local));
    control->setBaseSystem(baseSystem);
    return control;
}

moveRotationControl::moveRotationControl(ox::refPtr<scene> view, bool local) : mImpl(std::make_unique<impl>()) {
    mImpl->view = std::move(view);
    mImpl->local = local;
}

moveRotationControl::~moveRotationControl() = default;

void moveRotationControl::destroyObject() {
    detachFromScene();
    delete this;
}

// --- scene and host ----------------------------------------------------------------------------

void moveRotationControl::attachToScene() {
    if (mImpl->attached) return;
    mImpl->view->add(ox::refPtr<iDrawable>(&mImpl->entity()));
    mImpl->attached = true;
    mImpl->fireSceneInvalid();
}

void moveRotationControl::detachFromScene() {
    if (!mImpl->attached) return;
    mImpl->dropOperation();
    mImpl->view->remove(ox::refPtr<iDrawable>(mImpl->drawable), true);
    mImpl->detachedOptions = mImpl->drawable->options();
    mImpl->drawable.reset();
    mImpl->attached = false;
    mImpl->fireSceneInvalid();
}

bool moveRotationControl::isAttached() const { return mImpl->attached; }

void moveRotationControl::setFunctor(ox::iSetTrafo* functor) { mImpl->functor = functor; }

// --- interaction -------------------------------------------------------------------------------

void moveRotationControl::hover(double x, double y, int size) {
    if (!mImpl->attached || !usablePosition(x, y, "hover")) return;
    if (mImpl->entity().hitTest(mImpl->view, x, y, size)) mImpl->fireSceneInvalid();
}

eMoveRotOperation moveRotationControl::hotOperation() const {
    return mImpl->drawable ? mImpl->drawable->hotOperation() : kMoveRotNone;
}

bool moveRotationControl::startModify(double x, double y, int size) {
    if (!mImpl->attached || !usablePosition(x, y, "startModify")) return false;
    mImpl->result = oxGeo::matrix3d();
    auto& entity = mImpl->entity();
    if (entity.hitTest(mImpl->view, x, y, size)) mImpl->fireSceneInvalid();
    const eMoveRotOperation op = entity.hotOperation();
    if (op == kMoveRotNone) return false;
    if (mImpl->functor) mImpl->functor->beginSetTrafo(directionCodeOf(op));
    startModify(op, x, y);
    return true;
}

void moveRotationControl::startModify(eMoveRotOperation op, double x, double y) {
    if (!mImpl->attached || !usablePosition(x, y, "startModify")) return;
    mImpl->dropOperation();
    auto& entity = mImpl->entity();
    operationSetup_t setup;
    setup.views = sceneViewRays::create(mImpl->view);
    setup.placement = mImpl->shownPlacement();
    setup.local = mImpl->local;
    setup.viewPlane = entity.options().viewMovement;
    setup.x = x;
    setup.y = y;
    if (op == kMoveRotRotXY) setup.xyAxis = entity.xyRingAxisAt(*setup.views, x, y);
    if (op == kMoveRotTiltXY) setup.tiltRadius = entity.tiltRadius(*setup.views);
    // The keyboard steps come only through performModify, with their direction and value.
    if (op == kMoveRotMoveViewStep || op == kMoveRotRotZStep || op == kMoveRotTiltXYStep) return;
    mImpl->operation = createMoveRotationOperation(op, setup);
    if (mImpl->operation) mImpl->operationKind = op;
}

void moveRotationControl::modify(double x, double y) {
    if (!mImpl->attached || !mImpl->operation || !usablePosition(x, y, "modify")) return;
    // References held for the call: a host callback may detach or drop the control meanwhile.
    ox::refPtr<moveRotationControl> self(this);
    ox::refPtr<moveRotationControlEntity> entity(mImpl->drawable);
    try {
        mImpl->operation->update(x, y);
        oxGeo::matrix3d local;
        mImpl->operation->transformation(local);
        const oxGeo::matrix3d world = mImpl->worldOf(local);
        const bool accepted = mImpl->functor == nullptr || mImpl->functor->setTrafo(world);
        if (accepted && mImpl->operation) mImpl->result = world;
        if (entity && mImpl->attached) {
            oxGeo::matrix3d placementInverse;
            mImpl->placement.inverse(placementInverse);
            entity->setTransformation(mImpl->shownOf(placementInverse * mImpl->result * mImpl->placement));
        }
        mImpl->fireSceneInvalid();
    } catch (...) {
        // The host's own exception goes back to it, but not before what this call took is let go.
        entity.reset();
        self.reset();
        throw;
    }
}

void moveRotationControl::endModify(double /*x*/, double /*y*/) {
    if (!mImpl->attached || !mImpl->operation) return;
    ox::refPtr<moveRotationControl> self(this);
    const int code = directionCodeOf(mImpl->operationKind);
    oxGeo::matrix3d local;
    mImpl->operation->transformation(local);
    const oxGeo::matrix3d world = mImpl->worldOf(local);
    if (mImpl->functor == nullptr || mImpl->functor->setTrafo(world)) mImpl->result = world;
    if (mImpl->functor) mImpl->functor->endSetTrafo(code);
    // The handle moves on with the placement and shows no pending transformation any more.
    mImpl->placement = mImpl->result * mImpl->placement;
    mImpl->dropOperation();
    if (mImpl->drawable) {
        mImpl->drawable->setTransformation(oxGeo::matrix3d());
        mImpl->syncPlacement();
    }
    mImpl->fireSceneInvalid();
}

void moveRotationControl::cancelModify() {
    if (!mImpl->attached || !mImpl->operation) return;
    ox::refPtr<moveRotationControl> self(this);
    const int code = directionCodeOf(mImpl->operationKind);
    mImpl->result = oxGeo::matrix3d();
    if (mImpl->functor) {
        mImpl->functor->setTrafo(mImpl->result); // the host's objects go back to where they were
        mImpl->functor->endSetTrafo(code);
    }
    mImpl->dropOperation();
    if (mImpl->drawable) {
        mImpl->drawable->setTransformation(oxGeo::matrix3d());
        mImpl->syncPlacement();
    }
    mImpl->fireSceneInvalid();
}

void moveRotationControl::performModify(eMoveRotOperation op, eMoveRotDirection dir, double value) {
    if (!mImpl->attached) return;
    if (!std::isfinite(value)) {
        OX_LOG_WARN(kLogger, L"performModify: ignored a step that is not a number");
        return;
    }
    if (mImpl->operation) {
        OX_LOG_WARN(kLogger, L"performModify: ignored while a modification runs");
        return;
    }
    if (op != kMoveRotMoveViewStep && op != kMoveRotRotZStep && op != kMoveRotTiltXYStep) return;
    operationSetup_t setup;
    setup.views = sceneViewRays::create(mImpl->view);
    setup.placement = mImpl->shownPlacement();
    setup.local = mImpl->local;
    setup.direction = dir;
    setup.value = value;
    mImpl->result = oxGeo::matrix3d();
    mImpl->operation = createMoveRotationOperation(op, setup);
    if (!mImpl->operation) return;
    mImpl->operationKind = op;
    if (mImpl->functor) mImpl->functor->beginSetTrafo(directionCodeOf(op));
    endModify(0, 0);
}

bool moveRotationControl::isModifying() const { return mImpl->operation != nullptr; }

bool moveRotationControl::isFinished() const {
    return ox::iJobsQueueAsync::get().isFinished() && ox::iJobsQueueSync::get().isFinished();
}

// --- view tests --------------------------------------------------------------------------------

bool moveRotationControl::isViewMainPlane(double tolerance) const {
    return isViewYZPlane(tolerance) || isViewXZPlane(tolerance) || isViewXYPlane(tolerance);
}

bool moveRotationControl::isViewXYPlane(double tolerance) const { return mImpl->looksAlong(2, tolerance); }
bool moveRotationControl::isViewXZPlane(double tolerance) const { return mImpl->looksAlong(1, tolerance); }
bool moveRotationControl::isViewYZPlane(double tolerance) const { return mImpl->looksAlong(0, tolerance); }

bool moveRotationControl::ZMovementViewDirValid() const {
    const double toZ = mImpl->viewAngleTo(mImpl->operationFrame() * oxGeo::vector3d::zAxis());
    if (toZ < 0.0 || toZ <= kZMoveViewLimitDegrees) return false;
    // World moves along Z work in the world XZ plane: seen edge-on when the view is within the
    // limit of lying in it, that is at least 90° minus the limit away from its normal (world Y).
    return mImpl->local || mImpl->viewAngleTo(oxGeo::vector3d::yAxis()) < 90.0 - kZMoveViewLimitDegrees;
}

// --- options -----------------------------------------------------------------------------------

namespace {
bool usableSize(double size, const char* what) {
    if (oxGeo::isUsableCoordinate(size) && size >= 0.0) return true;
    OX_LOG_WARN(kLogger, L"%s: ignored a size that is not a non-negative number", what);
    return false;
}
} // namespace

#define OX_OPTION_FLAG(getter, setter, field)                                   \
    bool moveRotationControl::getter() const { return mImpl->options().field; } \
    void moveRotationControl::setter(bool value) {                              \
        mImpl->options().field = value;                                         \
        mImpl->fireSceneInvalid();                                              \
    }
OX_OPTION_FLAG(XRotationEnabled, enableXRotation, xRotation)
OX_OPTION_FLAG(YRotationEnabled, enableYRotation, yRotation)
OX_OPTION_FLAG(ZRotationEnabled, enableZRotation, zRotation)
OX_OPTION_FLAG(XYMovementEnabled, enableXYMovement, xyMovement)
OX_OPTION_FLAG(ZMovementEnabled, enableZMovement, zMovement)
OX_OPTION_FLAG(tiltInsteadMove, setTiltInsteadMove, tiltInsteadMove)
OX_OPTION_FLAG(moveInViewPlane, setMoveInViewPlane, viewMovement)
OX_OPTION_FLAG(maskBlankEnabled, setMaskBlankEnabled, maskBlank)
OX_OPTION_FLAG(modifyInMainViewsOnly, setModifyInMainViewsOnly, modifyInMainViewsOnly)
OX_OPTION_FLAG(showRotationAreaEnabled, showRotationArea, showRotationArea)
#undef OX_OPTION_FLAG

#define OX_OPTION_SIZE(getter, setter, field)                                    \
    double moveRotationControl::getter() const { return mImpl->options().field; } \
    void moveRotationControl::setter(double value) {                              \
        if (!usableSize(value, #setter)) return;                                  \
        mImpl->options().field = value;                                           \
        mImpl->geometryChanged();                                                 \
    }
OX_OPTION_SIZE(gripSize, setGripSize, gripSize)
OX_OPTION_SIZE(xSize, setXSize, xSize)
OX_OPTION_SIZE(ySize, setYSize, ySize)
OX_OPTION_SIZE(zSize, setZSize, zSize)
OX_OPTION_SIZE(rotationSphereRadius, setRotationShpereRadius, sphereRadius)
#undef OX_OPTION_SIZE

bool moveRotationControl::localXYZOperations() const { return mImpl->local; }
void moveRotationControl::setLocalXYZOperations(bool local) {
    mImpl->local = local;
    mImpl->syncPlacement();
    mImpl->fireSceneInvalid();
}

void moveRotationControl::setZRotationArea(const oxGeo::polyline2d& area) {
    for (const auto& p : area)
        if (!oxGeo::isUsableCoordinate(p.x()) || !oxGeo::isUsableCoordinate(p.y())) {
            OX_LOG_WARN(kLogger, L"setZRotationArea: ignored an outline with a point that is not a number");
            return;
        }
    mImpl->options().zRotationArea = area;
    mImpl->fireSceneInvalid();
}

const oxGeo::matrix3d& moveRotationControl::baseSystem() const { return mImpl->baseSystem; }

void moveRotationControl::setBaseSystem(const oxGeo::matrix3d& baseSystem) {
    oxGeo::matrix3d inverse;
    if (!oxGeo::isFinite(baseSystem) || !baseSystem.inverse(inverse)) {
        OX_LOG_WARN(kLogger, L"setBaseSystem: ignored a base system that is not finite or cannot be inverted");
        return;
    }
    mImpl->baseSystem = baseSystem;
    mImpl->placement = baseSystem;
    mImpl->syncPlacement();
    mImpl->fireSceneInvalid();
}

const oxGeo::matrix3d& moveRotationControl::addViewTrafo() const { return mImpl->addViewTrafo; }

void moveRotationControl::setAddViewTrafo(const oxGeo::matrix3d& trafo) {
    oxGeo::matrix3d inverse;
    if (!oxGeo::isFinite(trafo) || !trafo.inverse(inverse)) {
        OX_LOG_WARN(kLogger, L"setAddViewTrafo: ignored a transformation that is not finite or cannot be inverted");
        return;
    }
    mImpl->addViewTrafo = trafo;
    mImpl->syncPlacement();
    mImpl->fireSceneInvalid();
}

const oxGeo::matrix3d& moveRotationControl::currentPlacement() const { return mImpl->placement; }
const oxGeo::matrix3d& moveRotationControl::currentResult() const { return mImpl->result; }

void moveRotationControl::setConstantScreenSize(bool on, double pixels) {
    if (on && !(std::isfinite(pixels) && pixels > 0.0)) {
        OX_LOG_WARN(kLogger, L"setConstantScreenSize: ignored a pixel size that is not a positive number");
        return;
    }
    auto& options = mImpl->options();
    options.constantScreenSize = on;
    if (on) options.screenPixels = pixels;
    mImpl->fireSceneInvalid();
}

bool moveRotationControl::constantScreenSize() const { return mImpl->options().constantScreenSize; }

// --- move lists --------------------------------------------------------------------------------

namespace {
void addOnce(std::vector<ox::refPtr<iDrawable>>& list, const ox::refPtr<iDrawable>& drawable) {
    if (drawable && std::find(list.begin(), list.end(), drawable) == list.end()) list.push_back(drawable);
}
void removeFrom(std::vector<ox::refPtr<iDrawable>>& list, const ox::refPtr<iDrawable>& drawable) {
    list.erase(std::remove(list.begin(), list.end(), drawable), list.end());
}
} // namespace

void moveRotationControl::addToXYMove(const ox::refPtr<iDrawable>& d) { addOnce(mImpl->xyMove, d); }
void moveRotationControl::addToZMove(const ox::refPtr<iDrawable>& d) { addOnce(mImpl->zMove, d); }
void moveRotationControl::removeFromXYMove(const ox::refPtr<iDrawable>& d) { removeFrom(mImpl->xyMove, d); }
void moveRotationControl::removeFromZMove(const ox::refPtr<iDrawable>& d) { removeFrom(mImpl->zMove, d); }
const std::vector<ox::refPtr<iDrawable>>& moveRotationControl::xyMoveList() const { return mImpl->xyMove; }
const std::vector<ox::refPtr<iDrawable>>& moveRotationControl::zMoveList() const { return mImpl->zMove; }

ox::refPtr<iDrawable> moveRotationControl::drawable() const { return ox::refPtr<iDrawable>(mImpl->drawable); }

} // namespace oxGraphics
