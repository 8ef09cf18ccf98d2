#include "sceneTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <mutex>
#include <set>
#include <thread>

namespace {

using oxGeo::matrix3d;
using oxGeo::point2d;
using oxGeo::point3d;
using oxGeo::quaternion;
using oxGeo::vector3d;
using oxtest::testSquare;

constexpr double kS = 0.70710678118654752;

matrix3d quarterTurnAboutZ() {
    matrix3d m;
    m.setToRotation(ox::angle::fromDegree(90), vector3d(0, 0, 1), point3d());
    return m;
}

class navigationTest : public oxtest::glTest {};

TEST_F(navigationTest, standardViewsLookAtTheNamedSide) {
    auto view = oxtest::makeScene(64, 48, 0);
    using setter = void (oxGraphics::scene::*)(bool, const matrix3d&, const point3d&);
    struct row {
        const char* name;
        setter set;
        vector3d direction; // into the screen
        vector3d up;
    };
    const row rows[] = {
        {"front", &oxGraphics::scene::setFrontView, {0, 1, 0}, {0, 0, 1}},
        {"back", &oxGraphics::scene::setBackView, {0, -1, 0}, {0, 0, 1}},
        {"left", &oxGraphics::scene::setLeftView, {1, 0, 0}, {0, 0, 1}},
        {"right", &oxGraphics::scene::setRightView, {-1, 0, 0}, {0, 0, 1}},
        {"front-left", &oxGraphics::scene::setFrontLeftView, {0.5, 0.5, -kS}, {0.5, 0.5, kS}},
        {"front-right", &oxGraphics::scene::setFrontRightView, {-0.5, 0.5, -kS}, {-0.5, 0.5, kS}},
        {"back-left", &oxGraphics::scene::setBackLeftView, {0.5, -0.5, -kS}, {0.5, -0.5, kS}},
        {"back-right", &oxGraphics::scene::setBackRightView, {-0.5, -0.5, -kS}, {-0.5, -0.5, kS}},
    };
    vector3d direction, up;
    for (const auto& r : rows) {
        (view.get()->*r.set)(false, matrix3d(), point3d());
        view->getViewVectors(0, 0, direction, up);
        EXPECT_TRUE(direction.isEqualTo(r.direction, 1e-9)) << r.name;
        EXPECT_TRUE(up.isEqualTo(r.up, 1e-9)) << r.name;
    }
    view->setTopView(false, matrix3d(), point3d(), vector3d());
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(direction.isEqualTo({0, 0, -1}, 1e-9));
    EXPECT_TRUE(up.isEqualTo({0, 1, 0}, 1e-9));
    view->setTopView(false, matrix3d(), point3d(), vector3d(1, 0, 7)); // only x and y count
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(up.isEqualTo({1, 0, 0}, 1e-9));
    view->setBottomView(false, matrix3d(), point3d(), vector3d());
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(direction.isEqualTo({0, 0, 1}, 1e-9));
    EXPECT_TRUE(up.isEqualTo({0, 1, 0}, 1e-9));
    view->setCustomViewDirection(1, 2, -3, false, point3d());
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(direction.isEqualTo(vector3d(1, 2, -3).norm(), 1e-9));
    EXPECT_NEAR(up.dot(direction), 0.0, 1e-9);
    EXPECT_GT(up.z(), 0.0);

    // A model turned in the world is looked at from its own front.
    const matrix3d turned = quarterTurnAboutZ();
    view->setFrontView(false, turned, point3d());
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(direction.isEqualTo(turned * vector3d(0, 1, 0), 1e-9));
}

TEST_F(navigationTest, viewTestsRecogniseTheSettersViews) {
    auto view = oxtest::makeScene(64, 48, 0);
    const matrix3d model = quarterTurnAboutZ();
    using setter = void (oxGraphics::scene::*)(bool, const matrix3d&, const point3d&);
    using test = bool (oxGraphics::scene::*)(bool, const matrix3d&, const point3d&) const;
    const setter setters[] = {&oxGraphics::scene::setFrontView, &oxGraphics::scene::setBackView,
                              &oxGraphics::scene::setLeftView, &oxGraphics::scene::setRightView};
    const test tests[] = {&oxGraphics::scene::isInFrontView, &oxGraphics::scene::isInBackView,
                          &oxGraphics::scene::isInLeftView, &oxGraphics::scene::isInRightView,
                          &oxGraphics::scene::isInTopView, &oxGraphics::scene::isInBottomView};
    const point3d any;
    for (int s = 0; s < 6; ++s) {
        if (s < 4) (view.get()->*setters[s])(false, model, any);
        else if (s == 4) view->setTopView(false, model, any, vector3d(0, 1, 0));
        else view->setBottomView(false, model, any, vector3d(0, 1, 0));
        for (int t = 0; t < 6; ++t) EXPECT_EQ((view.get()->*tests[t])(false, model, any), s == t) << s << " " << t;
    }
    // Only a model whose X axis lies along world Y (within 0.05) qualifies.
    view->setFrontView(false, model, any);
    EXPECT_FALSE(view->isInFrontView(false, matrix3d(), any));
}

TEST_F(navigationTest, animatedTransferWithoutAWorkerRunsFifteenStepsHereAndEndsExactly) {
    auto reference = oxtest::makeScene(64, 48, 0);
    reference->setLeftView(false, quarterTurnAboutZ(), point3d(1, 2, 3));

    auto view = oxtest::makeScene(64, 48, 0, false, /*smoothView*/ false);
    struct stepRecorder : ox::iObserver, ox::refObj {
        void onEvent(int code, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
            if (code == 2000) threads.insert(std::this_thread::get_id()), ++steps;
            if (code == 1000) ++changed;
        }
        std::set<std::thread::id> threads;
        int steps = 0, changed = 0;
    };
    ox::refPtr<stepRecorder> recorder(new stepRecorder);
    view->addObserver(recorder);
    view->setLeftView(true, quarterTurnAboutZ(), point3d(1, 2, 3));
    EXPECT_EQ(recorder->steps, 15);
    EXPECT_EQ(recorder->changed, 0);
    EXPECT_EQ(recorder->threads, (std::set<std::thread::id>{std::this_thread::get_id()}));
    EXPECT_FALSE(view->smoothViewActive());
    EXPECT_EQ(view->camera()->rotation(), reference->camera()->rotation()); // exactly the target
}

TEST_F(navigationTest, aRequestDuringAWorkerTransferIsQueuedAndReplayedAfterIt) {
    auto view = oxtest::makeScene(64, 48, 0, false, /*smoothView*/ true);
    // Slow steps keep the first transfer running while the second request arrives.
    struct slowSteps : ox::iObserver, ox::refObj {
        void onEvent(int code, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
            if (code != 2000) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            std::lock_guard lock(mutex);
            ++steps;
            workerThreads.insert(std::this_thread::get_id());
        }
        std::mutex mutex;
        int steps = 0;
        std::set<std::thread::id> workerThreads;
    };
    ox::refPtr<slowSteps> observer(new slowSteps);
    view->addObserver(observer);
    view->setFrontView(true, matrix3d(), point3d());
    EXPECT_TRUE(view->smoothViewActive());
    view->setBackView(true, matrix3d(), point3d());  // queued, not dropped
    view->setRightView(false, matrix3d(), point3d()); // queued behind it
    for (int i = 0; i < 400 && (view->smoothViewActive() || [&] { std::lock_guard l(observer->mutex); return observer->steps < 30; }()); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(view->smoothViewActive());
    {
        std::lock_guard lock(observer->mutex);
        EXPECT_EQ(observer->steps, 30); // two animated transfers of 15 steps
        EXPECT_FALSE(observer->workerThreads.contains(std::this_thread::get_id()));
    }
    // The last request replayed wins: the right view.
    vector3d direction, up;
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(direction.isEqualTo({-1, 0, 0}, 1e-9));
}

TEST_F(navigationTest, drawingWhileAWorkerTransferRuns) {
    auto view = oxtest::makeScene(64, 48, 4, false, true);
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({0, 0, 0}, 3, {200, 100, 50})));
    view->setFrontRightView(true, matrix3d(), point3d());
    int frames = 0;
    while (view->smoothViewActive() && frames < 2000) {
        oxtest::paint(*view);
        ++frames;
    }
    oxtest::paint(*view);
    vector3d direction, up;
    view->getViewVectors(0, 0, direction, up);
    EXPECT_TRUE(direction.isEqualTo({-0.5, 0.5, -kS}, 1e-9));
}

TEST_F(navigationTest, anglesModeViewsTouchOnlyTheAngles) {
    auto view = oxtest::makeScene(64, 48, 0);
    view->setCameraAnglesMode(true);
    auto cam = view->camera();
    cam->setEye({0, 0, 2});
    const quaternion rotation(vector3d(1, 1, 0), ox::angle::fromDegree(30));
    cam->setRotation(rotation);
    cam->setTranslation({1, 2, 3});
    cam->setScale({2, 2, 2});
    view->setRightView(false, matrix3d(), point3d());
    EXPECT_NEAR(cam->twist().degree(), -90.0, 1e-4);
    EXPECT_NEAR(cam->elevation().degree(), 90.0, 1e-4);
    view->setBackLeftView(true, matrix3d(), point3d());
    EXPECT_NEAR(cam->twist().degree(), 135.0, 1e-4);
    EXPECT_NEAR(cam->elevation().degree(), 45.0, 1e-4);
    EXPECT_EQ(cam->rotation(), rotation);
    EXPECT_TRUE(cam->translation().isEqualTo({1, 2, 3}, 0.0));
    EXPECT_TRUE(cam->scale().isEqualTo({2, 2, 2}, 0.0));
}

TEST_F(navigationTest, thePivotKeepsItsWindowPositionThroughViewChanges) {
    auto view = oxtest::makeScene(200, 150, 0);
    view->camera()->setScale({1.5, 1.5, 1.5});
    view->camera()->setTranslation({0.5, -1, 0});
    const point3d pivot(2, -1, 1.5);
    point2d before = view->worldToWinCoordinates(pivot);
    view->setFrontRightView(false, matrix3d(), pivot);
    EXPECT_TRUE(view->worldToWinCoordinates(pivot).isEqualTo(before, 1.0));

    struct pivotWatcher : ox::iObserver, ox::refObj {
        void onEvent(int code, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
            if (code != 2000) return;
            worst = std::max(worst, view->worldToWinCoordinates(pivot).distanceTo(start));
        }
        oxGraphics::scene* view = nullptr;
        point3d pivot;
        point2d start;
        double worst = 0;
    };
    ox::refPtr<pivotWatcher> watcher(new pivotWatcher);
    watcher->view = view.get();
    watcher->pivot = pivot;
    watcher->start = before;
    view->addObserver(watcher);
    view->setBackLeftView(true, matrix3d(), pivot);
    EXPECT_LT(watcher->worst, 1.0);
    view->removeAllObservers();

    // A camera drag about a pivot keeps it too.
    view->rotateCamera(10, 10, 60, 35, pivot);
    EXPECT_TRUE(view->worldToWinCoordinates(pivot).isEqualTo(before, 1.0));
}

TEST_F(navigationTest, zoomAllFramesEveryBoundingBoxProvider) {
    for (const auto& size : {std::pair{200, 100}, std::pair{100, 200}}) {
        auto view = oxtest::makeScene(size.first, size.second, 0);
        view->resizeOffset(10, 0, 30, 20);  // a tool bar on the right, a status bar below
        view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({-40, 5, 0}, 2, {255, 0, 0})));
        view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({60, -20, 3}, 4, {0, 255, 0})));
        view->setFrontLeftView(false, matrix3d(), point3d());
        view->zoomAll();
        double minX = 1e9, maxX = -1e9, minY = 1e9, maxY = -1e9;
        for (int corner = 0; corner < 8; ++corner) { // the corners of the providers' union box
            const point2d w = view->worldToWinCoordinates(
                point3d(corner & 1 ? 62 : -41, corner & 2 ? 6 : -22, corner & 4 ? 3 : 0));
            minX = std::min(minX, w.x()), maxX = std::max(maxX, w.x());
            minY = std::min(minY, w.y()), maxY = std::max(maxY, w.y());
        }
        EXPECT_GE(minX, 10 - 1e-6) << size.first;
        EXPECT_LE(maxX, size.first - 30 + 1e-6);
        EXPECT_GE(minY, 0 - 1e-6);
        EXPECT_LE(maxY, size.second - 20 + 1e-6);
        // The usable area: symmetric about the focus centre, up to the nearer margin.
        const double cx = size.first / 2.0 - 30 + 10, cy = size.second / 2.0 - 20 + 0;
        const double usableWidth = 2 * std::min(cx - 10, size.first - 30 - cx);
        const double usableHeight = 2 * std::min(cy - 0, size.second - 20 - cy);
        EXPECT_NEAR((minX + maxX) / 2, cx, 1e-6);
        EXPECT_NEAR((minY + maxY) / 2, cy, 1e-6);
        // Tight: one side uses the usable area less the margin.
        EXPECT_NEAR(std::max((maxX - minX) / usableWidth, (maxY - minY) / usableHeight), 0.95, 1e-6);
    }
}

TEST_F(navigationTest, wheelZoomDragsAndViewRaysAgree) {
    auto view = oxtest::makeScene(160, 120, 0);
    view->setFrontLeftView(false, matrix3d(), point3d());
    const oxGeo::plane3d ground(point3d(0, 0, 0), vector3d(0, 0, 1));
    auto underCursor = [&](int x, int y) {
        oxGeo::ray3d ray;
        view->getViewRayAt(x, y, ray);
        point3d hit;
        EXPECT_TRUE(ground.getIntersection(ray, hit));
        return hit;
    };

    const point3d fixed = underCursor(30, 100);
    const double sizeBefore = view->viewSize();
    view->zoomWheel(30, 100, true);
    EXPECT_LT(view->viewSize(), sizeBefore);
    EXPECT_TRUE(view->worldToWinCoordinates(fixed).isEqualTo(point2d(30, 100), 1e-6));
    view->zoomWheel(30, 100, false);
    view->zoomDynamic(30, 100, 3.0);
    EXPECT_TRUE(view->worldToWinCoordinates(fixed).isEqualTo(point2d(30, 100), 1e-6));
    EXPECT_NEAR(view->viewSize(), sizeBefore / 3.0, 1e-9);

    // Panning: the point under the pointer follows it.
    const point3d grabbed = underCursor(50, 40);
    view->moveCamera(50, 40, 90, 70);
    EXPECT_TRUE(view->worldToWinCoordinates(grabbed).isEqualTo(point2d(90, 70), 1e-6));

    // A window rectangle zoomed fills the view.
    const point3d corner = underCursor(40, 30);
    view->zoom(40, 30, 80, 60);
    const point2d cornerNow = view->worldToWinCoordinates(corner);
    EXPECT_NEAR(cornerNow.x(), 0.0, 1e-6);
    EXPECT_NEAR(cornerNow.y(), 0.0, 1e-6);

    // A point on the ray through a window position projects back onto that position, in both
    // camera modes.
    for (const bool angles : {false, true}) {
        view->setCameraAnglesMode(angles);
        if (angles) view->camera()->setEye({1, 2, 3}), view->camera()->setElevation(ox::angle::fromDegree(30));
        for (const point2d& w : {point2d(0, 0), point2d(17, 93), point2d(159, 119)}) {
            oxGeo::ray3d ray;
            view->getViewRayAt(static_cast<int>(w.x()), static_cast<int>(w.y()), ray);
            EXPECT_NEAR(ray.direction().length(), 1.0, 1e-12);
            for (const double t : {0.0, 3.5, 50.0})
                EXPECT_TRUE(view->worldToWinCoordinates(ray.pointAt(t)).isEqualTo(w, 1e-6)) << angles << " " << t;
        }
    }
}

} // namespace
