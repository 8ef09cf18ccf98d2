// The scene facade: forwarding to the renderer, events, and the fit operations.
#include "oxscene.h"

#include "manipulator/moverotationcontrolentity.h"
#include "oxglscene.h"
#include "pickchoice.h"
#include "pickqueries.h"

#include "oxgeodtconvert.h"
#include "oxlog.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <typeinfo>

namespace oxGraphics {
namespace {
constexpr double kFitMargin = 0.05; // fraction of the usable area left free around a fitted box
constexpr const char* kPickLogger = "oxGraphics::scene::pickSelect";
constexpr const char* kSelectMultipleLogger = "oxGraphics::scene::selectMultiple";
} // namespace

ox::refPtr<scene> scene::create(const ox::refPtr<iGlContext>& context, bool presentToWindow, bool smoothViewEnabled) {
    if (!context) return {};
    return ox::refPtr<scene>(new scene(context, presentToWindow, smoothViewEnabled));
}

#if defined(_WIN32)
ox::refPtr<scene> scene::create(void* deviceContext, void* renderContext, bool implFlag, bool smoothViewEnabled) {
    return create(openGL::createWglContext(deviceContext, renderContext), implFlag, smoothViewEnabled);
}
#endif

scene::scene(const ox::refPtr<iGlContext>& context, bool presentToWindow, bool smoothViewEnabled)
    : mImplementation(openGL::glScene::create(context, presentToWindow)), mSmoothViewEnabled(smoothViewEnabled) {}

scene::~scene() {
    // A running transfer stops after its current step; nothing of the scene is released before.
    stopTransfers();
    // The renderer goes first (with it the GL objects), then the queue, the thread and observers.
    mImplementation.reset();
    mRequestQueue.clear();
    mTransferThread.reset();
    removeAllObservers();
}

void scene::fireSceneChanged() { fireEvent(kEventSceneChanged, this, nullptr, nullptr); }
void scene::fireSceneInvalid() { fireSceneChanged(); }

// ---- content ---------------------------------------------------------------------------------

void scene::add(const ox::refPtr<iDrawable>& drawable) {
    mImplementation->add(drawable);
    if (auto provider = ox::dynamicRefCast<iBoundBoxProvider>(drawable)) mImplementation->addBoundBoxProvider(provider);
    fireSceneChanged();
}

void scene::remove(const ox::refPtr<iDrawable>& drawable, bool forget) {
    mImplementation->remove(drawable, forget);
    fireSceneChanged();
}

void scene::clear() {
    mImplementation->clear();
    fireSceneChanged();
}

void scene::regenerate() {
    mImplementation->regenerate();
    fireSceneChanged();
}

void scene::addToSelection(const ox::refPtr<iDrawable>& d) { mImplementation->setSelected(d, true); }
void scene::removeFromSelection(const ox::refPtr<iDrawable>& d) { mImplementation->setSelected(d, false); }
void scene::clearSelection() { mImplementation->clearSelection(); }
bool scene::isSelected(const ox::refPtr<iDrawable>& d) const { return mImplementation->isSelected(d); }
void scene::addToModifyEnabled(const ox::refPtr<iDrawable>& d) { mImplementation->setModifyEnabled(d, true); }
void scene::removeFromModifyEnabled(const ox::refPtr<iDrawable>& d) { mImplementation->setModifyEnabled(d, false); }
bool scene::isModifyEnabled(const ox::refPtr<iDrawable>& d) const { return mImplementation->isModifyEnabled(d); }

void scene::setDrawableEffects(const ox::refPtr<iDrawable>& drawable, const drawableEffects_t& effects) {
    mImplementation->setDrawableEffects(drawable, effects);
    fireSceneChanged();
}
drawableEffects_t scene::drawableEffects(const ox::refPtr<iDrawable>& drawable) const {
    return mImplementation->drawableEffects(drawable);
}
void scene::setSceneEffects(const sceneEffects_t& effects) {
    mImplementation->setSceneEffects(effects);
    fireSceneChanged();
}
sceneEffects_t scene::sceneEffects() const { return mImplementation->sceneEffects(); }
void scene::setMaskDrawables(const std::vector<ox::refPtr<iDrawable>>& drawables) {
    mImplementation->setMaskDrawables(drawables);
    fireSceneChanged();
}
std::vector<ox::refPtr<iDrawable>> scene::maskDrawables() const { return mImplementation->maskDrawables(); }

// ---- appearance ------------------------------------------------------------------------------

void scene::setColor(const ox::rgbColor& color, unsigned int colorIds) {
    mImplementation->setColor(color, colorIds & ((1u << kColorSlotCount) - 1u));
    fireSceneChanged();
}
ox::rgbColor scene::color(eColorId slot) const { return mImplementation->color(slot); }

void scene::setUseBackgroundImage(bool use, unsigned char* pixels, int width, int height, int format) {
    mImplementation->setUseBackgroundImage(use, pixels, width, height, format);
    fireSceneChanged();
}
void scene::setTempBackgroundImage(bool use, unsigned char* pixels, int width, int height, int format) {
    mImplementation->setTempBackgroundImage(use, pixels, width, height, format);
    fireSceneChanged();
}
bool scene::tempBackgroundImageUsed() const { return mImplementation->tempBackgroundImageUsed(); }
void scene::setBackgroundImageSizing(int sizing) {
    mImplementation->setBackgroundImageSizing(sizing);
    fireSceneChanged();
}
void scene::setBackgroundImageAlignment(int alignment) {
    mImplementation->setBackgroundImageAlignment(alignment);
    fireSceneChanged();
}
void scene::setBackgroundImageTrans(double transparency) {
    mImplementation->setBackgroundImageTrans(transparency);
    fireSceneChanged();
}
void scene::setUseTransparentBackground(bool use) { mImplementation->setUseTransparentBackground(use); }

// ---- targets and frames ----------------------------------------------------------------------

void scene::setMultisamples(int samples) { mImplementation->setMultisamples(samples); }
int scene::multisamples() const { return mImplementation->multisamples(); }
int scene::actualMultisamples() const { return mImplementation->actualMultisamples(); }
bool scene::targetsComplete() const { return mImplementation->targetsComplete(); }
void scene::initFBOWithMultiSampling(int width, int height) { mImplementation->initFBOWithMultiSampling(width, height); }
void scene::refreshFBOWithMultiSampling(int width, int height) {
    mImplementation->refreshFBOWithMultiSampling(width, height);
    fireSceneChanged();
}
void scene::refreshFBOWithMultiSampling() {
    mImplementation->refreshFBOWithMultiSampling();
    fireSceneChanged();
}
void scene::initGfxApiState() { mImplementation->initGfxApiState(); }
void scene::setupForPainting(int width, int height) { mImplementation->setupForPainting(width, height); }
void scene::setupForPainting() { mImplementation->setupForPainting(); }
void scene::renderBefore() { mImplementation->renderBefore(); }
void scene::draw() const {
    if (!mSceneUpdateEnabled) return; // not even the context is made current
    mImplementation->draw();
}
void scene::renderAfter() { mImplementation->renderAfter(); }
void scene::setRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) {
    mImplementation->setRubberRect(x1, y1, x2, y2);
}
void scene::drawRubberRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) {
    mImplementation->drawRubberRect(x1, y1, x2, y2);
}
bool scene::clearRubberRect() { return mImplementation->clearRubberRect(); }
char* scene::writeToBuffer() const { return mImplementation->writeToBuffer(); }
void scene::setSceneUpdateEnabled(bool enabled) { mSceneUpdateEnabled = enabled; }
bool scene::sceneUpdateEnabled() const { return mSceneUpdateEnabled; }

// ---- camera and viewport ---------------------------------------------------------------------

ox::refPtr<iCamera> scene::camera() const { return mImplementation->camera(); }
void scene::resize(int width, int height, double viewSize, int obw, int obh, int oew, int oeh) {
    mImplementation->resize(width, height, viewSize, obw, obh, oew, oeh);
}
void scene::resizeOffset(int obw, int obh, int oew, int oeh) { mImplementation->resizeOffset(obw, obh, oew, oeh); }
int scene::viewportWidth() const { return mImplementation->viewportWidth(); }
int scene::viewportHeight() const { return mImplementation->viewportHeight(); }
int scene::offsetFocusBeginWidth() const { return mImplementation->offsetFocusBeginWidth(); }
int scene::offsetFocusBeginHeight() const { return mImplementation->offsetFocusBeginHeight(); }
int scene::offsetFocusEndWidth() const { return mImplementation->offsetFocusEndWidth(); }
int scene::offsetFocusEndHeight() const { return mImplementation->offsetFocusEndHeight(); }
double scene::viewSize() const { return mImplementation->viewSize(); }
void scene::saveView(iSavedView** out) { mImplementation->saveView(out); }
void scene::restoreView(iSavedView* view) { mImplementation->restoreView(view); }
void scene::setCameraAnglesMode(bool anglesMode) { mImplementation->setCameraAnglesMode(anglesMode); }

// ---- interaction -----------------------------------------------------------------------------

void scene::moveCamera(int x1, int y1, int x2, int y2) {
    mImplementation->moveCamera(x1, y1, x2, y2);
    fireSceneChanged();
}
void scene::rotateCamera(int x1, int y1, int x2, int y2) {
    mImplementation->rotateCamera(x1, y1, x2, y2);
    fireSceneChanged();
}
void scene::rotateCamera(int x1, int y1, int x2, int y2, const oxGeo::point3d& pivot) {
    mImplementation->rotateCamera(x1, y1, x2, y2, pivot);
    fireSceneChanged();
}
void scene::zoom(int x1, int y1, int x2, int y2) { mImplementation->zoom(x1, y1, x2, y2); }
void scene::zoomDynamic(int x, int y, double factor) { mImplementation->zoomDynamic(x, y, factor); }
void scene::zoomWheel(int x, int y, bool zoomIn) { mImplementation->zoomWheel(x, y, zoomIn); }
void scene::getViewRayAt(int x, int y, oxGeo::ray3d& out) const { mImplementation->getViewRayAt(x, y, out); }
void scene::getViewVectors(int x, int y, oxGeo::vector3d& viewDirection, oxGeo::vector3d& upDirection) const {
    mImplementation->getViewVectors(x, y, viewDirection, upDirection);
}
oxGeo::point2d scene::worldToWinCoordinates(const oxGeo::point3d& world) const {
    return mImplementation->worldToWinCoordinates(world);
}

// ---- fitting ---------------------------------------------------------------------------------

oxGeo::boundBox3d scene::providersBox(bool selectedOnly) const {
    return mImplementation->providersBoundingBox(selectedOnly);
}

void scene::zoomAll() {
    mImplementation->fitBox(providersBox(false), kFitMargin);
    fireSceneChanged();
}

void scene::zoomTo(const oxGeo::boundBox3d& box) {
    mImplementation->fitBox(box, kFitMargin);
    fireSceneChanged();
}

void scene::zoomSelected() {
    mImplementation->fitBox(providersBox(true), kFitMargin);
    fireSceneChanged();
}

void scene::zoomOut() {
    const double size = mImplementation->viewSize();
    if (size > 0.0) {
        const oxGeo::point3d centre = currentViewCentre();
        mImplementation->setViewSize(size * 2.0);
        mImplementation->centreOn(centre);
    }
    fireSceneChanged();
}

void scene::translateToCentered() {
    const oxGeo::boundBox3d box = providersBox(false);
    if (box.isValid()) mImplementation->centreOn(box.center());
    fireSceneChanged();
}

void scene::translateToMinDist() {
    const oxGeo::boundBox3d box = providersBox(false);
    if (box.isValid()) {
        // Window rectangle of the box against the usable area; pan by the smallest shift.
        const double left = mImplementation->offsetFocusBeginWidth();
        const double top = mImplementation->offsetFocusBeginHeight();
        const double right = mImplementation->viewportWidth() - mImplementation->offsetFocusEndWidth();
        const double bottom = mImplementation->viewportHeight() - mImplementation->offsetFocusEndHeight();
        double minX = INFINITY, minY = INFINITY, maxX = -INFINITY, maxY = -INFINITY;
        const oxGeo::point3d lo = box.min(), hi = box.max();
        for (int corner = 0; corner < 8; ++corner) {
            const oxGeo::point2d w = mImplementation->worldToWinCoordinates(oxGeo::point3d(
                corner & 1 ? hi.x() : lo.x(), corner & 2 ? hi.y() : lo.y(), corner & 4 ? hi.z() : lo.z()));
            minX = std::min(minX, w.x());
            maxX = std::max(maxX, w.x());
            minY = std::min(minY, w.y());
            maxY = std::max(maxY, w.y());
        }
        auto shift = [](double lo, double hi, double areaLo, double areaHi) {
            if (hi - lo > areaHi - areaLo) return (areaLo + areaHi) / 2 - (lo + hi) / 2; // too big: centre it
            if (lo < areaLo) return areaLo - lo;
            if (hi > areaHi) return areaHi - hi;
            return 0.0;
        };
        const double dx = shift(minX, maxX, left, right), dy = shift(minY, maxY, top, bottom);
        if (dx != 0.0 || dy != 0.0) {
            const int x = mImplementation->viewportWidth() / 2, y = mImplementation->viewportHeight() / 2;
            mImplementation->moveCamera(x, y, x + static_cast<int>(std::lround(dx)), y + static_cast<int>(std::lround(dy)));
        }
    }
    fireSceneChanged();
}

oxGeo::point3d scene::currentViewCentre() const {
    const oxGeo::boundBox3d box = providersBox(false);
    return mImplementation->viewCentreNear(box.isValid() ? box.center() : oxGeo::point3d());
}

oxGeo::boundBox3d scene::boundingBox() const { return {}; }

// ---- picking ---------------------------------------------------------------------------------

std::vector<pickHit_t> scene::pickSelectRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2) const {
    std::vector<pickHit_t> hits;
    mImplementation->pickSelectRect(x1, y1, x2, y2, hits, 0);
    return hits;
}

void scene::pickSelect(unsigned int px, unsigned int py, unsigned int hsize, ox::refPtr<ox::iRefObj>& result) const {
    OX_LOG_DEBUG(kPickLogger, L"pickSelect entered");
    OX_LOG_DEBUG(kPickLogger, L"initial px=%ld, py=%ld, hsize=%ld", static_cast<long>(px), static_cast<long>(py),
                 static_cast<long>(hsize));
    result.reset();
    px = std::max(px, hsize);
    py = std::max(py, hsize);
    OX_LOG_DEBUG(kPickLogger, L"adjusted px=%ld, py=%ld", static_cast<long>(px), static_cast<long>(py));
    // The far corner stops at the largest position rather than wrapping around to the top left.
    const auto farCorner = [hsize](unsigned int p) {
        return static_cast<unsigned int>(std::min<std::uint64_t>(std::uint64_t{p} + hsize, 0xFFFFFFFFu));
    };
    const std::vector<pickHit_t> hits = pickSelectRect(px - hsize, py - hsize, farCorner(px), farCorner(py));
    OX_LOG_DEBUG(kPickLogger, L"%ld hits found", static_cast<long>(hits.size()));

    const oxGeo::vector3d viewScale = mImplementation->cameraModelState().scale;
    OX_LOG_DEBUG(kPickLogger, L"viewscaling = %ls", oxGeo::dtconvert<ox::string, oxGeo::vector3d>(viewScale).c_str());

    const auto& preferred = mImplementation->preferredPickTypes();
    std::vector<pickCandidate_t> candidates;
    candidates.reserve(hits.size());
    for (const auto& hit : hits) {
        const iDrawable& drawable = *hit.drawable.get();
        candidates.push_back(
            {hit.minDepth, std::find(preferred.begin(), preferred.end(), typeid(drawable).name()) != preferred.end()});
    }
    if (const auto best = choosePick(candidates, pickDepthTolerance(hsize, viewScale.z()))) {
        OX_LOG_DEBUG(kPickLogger, L"topmost found");
        result = hits[*best].drawable;
    } else {
        OX_LOG_DEBUG(kPickLogger, L"no topmost found");
    }
}

std::vector<pickHit_t> scene::pickSelectInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                               const ox::refPtr<iSelectFilter>& filter) const {
    return mImplementation->pickSelectInRect(x1, y1, x2, y2, filter.get());
}

bool scene::pickSelectGetFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                             ox::refPtr<iDrawable>& hit, oxGeo::point3d& point,
                                             const ox::refPtr<iSelectFilter>& filter) const {
    return mImplementation->getFirstHitPointInRect(x1, y1, x2, y2, filter.get(), hit, point);
}

bool scene::getFirstHitPointInRect(unsigned int x1, unsigned int y1, unsigned int x2, unsigned int y2,
                                   oxGeo::point3d& point, const ox::refPtr<iSelectFilter>& filter) const {
    ox::refPtr<iDrawable> hit;
    return mImplementation->getFirstHitPointInRect(x1, y1, x2, y2, filter.get(), hit, point);
}

std::vector<ox::refPtr<iDrawable>> scene::selectMultiple(unsigned int x1, unsigned int y1, unsigned int x2,
                                                         unsigned int y2, eSelectMode mode,
                                                         const ox::refPtr<iSelectFilter>& filter) {
    switch (mode) {
    case eSelectMode::replace:
    case eSelectMode::add:
    case eSelectMode::toggle:
    case eSelectMode::remove: break;
    default:
        OX_LOG_WARN(kSelectMultipleLogger, L"refused the unknown select mode %d", static_cast<int>(mode));
        return {};
    }
    // Without a context nothing is picked, and a replace must not read that as an empty band.
    const auto context = mImplementation->glContext();
    if (!context || !context->makeCurrent()) return {};
    auto inRectangle = pickQueries::distinctDrawables(mImplementation->pickSelectInRect(x1, y1, x2, y2, filter.get()));
    // The manipulator's handle is a tool on the content, not content: a band drawn across it
    // selects what lies there, never the handle.
    std::erase_if(inRectangle, [](const ox::refPtr<iDrawable>& drawable) {
        return dynamic_cast<const moveRotationControlEntity*>(drawable.get()) != nullptr;
    });
    // Everything selected, also what is not (or no longer) in the scene: a replace leaves only the band.
    const std::vector<ox::refPtr<iDrawable>> selectedNow = mImplementation->selectedDrawables();
    const auto changes = pickQueries::selectionChanges(mode, inRectangle, selectedNow);
    for (const auto& change : changes) mImplementation->setSelected(change.drawable, change.selected);
    if (!changes.empty()) fireSceneChanged();
    return inRectangle;
}

void scene::setPickAccelerated(bool accelerated) { mImplementation->setPickAccelerated(accelerated); }

bool scene::isPickAccelerated() const { return mImplementation->isPickAccelerated(); }

void scene::setPreferredPickTypes(const std::vector<std::string>& typeNames) {
    mImplementation->setPreferredPickTypes(typeNames);
}

} // namespace oxGraphics
