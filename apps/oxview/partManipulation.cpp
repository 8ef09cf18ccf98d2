#include "partManipulation.h"

#include "oxboundeddrawable.h"

#include <algorithm>
#include <cmath>

namespace oxview {
namespace {

// The handle keeps this many pixels for its arrows at any zoom, so its grips stay easy to hit
// on small and large parts alike.
constexpr double kHandlePixels = 120.0;
constexpr double kGripSize = 1.5;
// Side of the pick square about the cursor for the grips, in pixels.
constexpr int kGripPickSize = 6;
constexpr double kMoveStepShare = 0.1;  // of the part's size
constexpr double kTurnStepDegrees = 15.0;

} // namespace

partManipulation::partManipulation(ox::refPtr<oxGraphics::scene> scene,
                                   const std::vector<ox::refPtr<oxGraphics::iDrawable>>& parts)
    : mScene(std::move(scene)) {
    for (const auto& drawable : parts) {
        part_t part;
        part.mDrawable = drawable;
        const auto* bounded = dynamic_cast<const oxGraphics::iBoundBoxProvider*>(drawable.get());
        const oxGeo::boundBox3d box = bounded ? bounded->worldBoundingBox() : oxGeo::boundBox3d();
        if (box.isValid()) {
            const oxGeo::point3d lo = box.min(), hi = box.max();
            part.mFrame.setToTranslation({(lo.x() + hi.x()) / 2, (lo.y() + hi.y()) / 2, hi.z()});
            part.mSize = std::max({hi.x() - lo.x(), hi.y() - lo.y(), hi.z() - lo.z()});
            if (!(part.mSize > 0.0)) part.mSize = 1.0;
        }
        mParts.push_back(std::move(part));
    }
}

partManipulation::~partManipulation() { detach(); }

void partManipulation::toggleSelection(const ox::refPtr<oxGraphics::iDrawable>& drawable) {
    // The handle's own drawable is never selected: it comes and goes with the part.
    if (dragging() || (mControl && drawable == mControl->drawable())) return;
    const bool wasSelected = drawable && mScene->isSelected(drawable);
    mScene->clearSelection();
    detach();
    if (!drawable || wasSelected) return;
    mScene->addToSelection(drawable);
    attachTo(drawable);
}

void partManipulation::showManipulatorOn(const ox::refPtr<oxGraphics::iDrawable>& part) {
    if (dragging()) return;
    detach();
    attachTo(part);
}

void partManipulation::attachTo(const ox::refPtr<oxGraphics::iDrawable>& drawable) {
    const auto found =
        std::find_if(mParts.begin(), mParts.end(), [&](const part_t& p) { return p.mDrawable == drawable; });
    if (found == mParts.end()) return;
    const auto index = static_cast<std::size_t>(found - mParts.begin());
    part_t& part = mParts[index];
    mControl = oxGraphics::moveRotationControl::create(mScene, part.mTransformation * part.mFrame, /*local*/ true);
    if (!mControl) return;
    mPart = index;
    mControl->setGripSize(kGripSize);
    mControl->setConstantScreenSize(true, kHandlePixels);
    mControl->setFunctor(this);
    mControl->attachToScene();
}

void partManipulation::detach() {
    if (!mControl) return;
    if (mInTrafo) cancelDrag();
    mControl->setFunctor(nullptr);
    mControl->detachFromScene();
    mControl.reset();
}

void partManipulation::hover(double x, double y) {
    if (mControl && !mControl->isModifying()) mControl->hover(x, y, kGripPickSize);
}

bool partManipulation::beginDrag(double x, double y) {
    if (!mControl) return false;
    // The manipulator takes any drawable nearest to the cursor for a move in the XY plane; here
    // only its own grips and the part it is on start a drag, everything else stays clickable.
    const long half = kGripPickSize / 2;
    const auto corner = [](double v, long d) { return static_cast<unsigned int>(std::max(0L, std::lround(v) + d)); };
    const std::vector<oxGraphics::pickHit_t> hits =
        mScene->pickSelectRect(corner(x, -half), corner(y, -half), corner(x, half), corner(y, half));
    const oxGraphics::pickHit_t* nearest = nullptr;
    for (const auto& hit : hits)
        if (nearest == nullptr || hit.minDepth < nearest->minDepth) nearest = &hit;
    if (nearest != nullptr && nearest->drawable != mControl->drawable() && nearest->drawable != mParts[mPart].mDrawable)
        return false;
    return mControl->startModify(x, y, kGripPickSize);
}

void partManipulation::dragTo(double x, double y) {
    if (mControl) mControl->modify(x, y);
}

void partManipulation::endDrag(double x, double y) {
    if (mControl) mControl->endModify(x, y);
}

void partManipulation::cancelDrag() {
    // The control hands back the identity (the part returns through setTrafo) and ends the drag.
    if (mControl) mControl->cancelModify();
}

bool partManipulation::dragging() const { return mControl && mControl->isModifying(); }

void partManipulation::step(ePartStep step) {
    if (!mControl || mControl->isModifying()) return;
    using namespace oxGraphics;
    const double distance = kMoveStepShare * mParts[mPart].mSize;
    const auto move = [&](eMoveRotDirection dir) { mControl->performModify(kMoveRotMoveViewStep, dir, distance); };
    // The direction of a turn step is not used; the sign of the angle turns it.
    const auto turn = [&](double degrees) { mControl->performModify(kMoveRotRotZStep, kMoveRotDirUp, degrees); };
    switch (step) {
    case ePartStep::left: move(kMoveRotDirLeft); break;
    case ePartStep::right: move(kMoveRotDirRight); break;
    case ePartStep::up: move(kMoveRotDirUp); break;
    case ePartStep::down: move(kMoveRotDirDown); break;
    case ePartStep::turnLeft: turn(kTurnStepDegrees); break;
    case ePartStep::turnRight: turn(-kTurnStepDegrees); break;
    }
}

void partManipulation::beginSetTrafo(int /*direction*/) {
    mTransformationAtStart = mParts[mPart].mTransformation;
    mInTrafo = true;
}

bool partManipulation::setTrafo(const oxGeo::matrix3d& trafo) {
    if (!mInTrafo) return false;
    part_t& part = mParts[mPart];
    // W is the world transformation of the drag so far, always from where it began.
    part.mTransformation = trafo * mTransformationAtStart;
    part.mDrawable->setTransformation(part.mTransformation);
    return true;
}

void partManipulation::endSetTrafo(int /*direction*/) { mInTrafo = false; }

} // namespace oxview
