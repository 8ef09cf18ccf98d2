// The manipulator in a scene on the headless context: what becomes hot under the cursor, what a
// scripted drag hands to the host, and how the control refuses what it cannot use.
#include "../scene/sceneTestSupport.h"
#include "manipulatorTestSupport.h"

#include "oxglshader.h"
#include "oxmoverotationcontrol.h"
#include "oxscene.h"
#include "scene/iscene.h"

#include "oxjobsqueue.h"
#include "oxlog.h"
#include "oxsettrafo.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace oxGraphics;
using oxGeo::matrix3d;
using oxGeo::point3d;
using oxGeo::vector3d;
using oxtest::column;
using oxtest::matricesNear;
using oxtest::originOf;

constexpr int kPick = 6;
constexpr double kTolerance = 1e-5;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr const char* kLogger = "oxGraphics::moveRotationControl";

/// Records what the host is told; rejects every setTrafo after the first `accept` ones.
class trafoRecorder : public ox::iSetTrafo {
public:
    void beginSetTrafo(int direction) override { begins.push_back(direction); }
    bool setTrafo(const matrix3d& trafo) override {
        trafos.push_back(trafo);
        return static_cast<int>(trafos.size()) <= accept;
    }
    void endSetTrafo(int direction) override { ends.push_back(direction); }

    std::vector<int> begins, ends;
    std::vector<matrix3d> trafos;
    int accept = INT_MAX;
};

/// A 200 x 200 view of 30 units (0.15 a pixel) with a control on it, attached.
struct rig {
    ox::refPtr<scene> view;
    ox::refPtr<moveRotationControl> control;
    trafoRecorder host;

    explicit rig(const oxGeo::quaternion& look, const matrix3d& base = {}, bool local = true, int samples = 0) {
        view = oxtest::makeScene(200, 200, samples);
        view->resize(200, 200, 30.0, 0, 0, 0, 0);
        view->camera()->setRotation(look);
        control = moveRotationControl::create(view, base, local);
        control->setFunctor(&host);
        control->attachToScene();
    }
    oxGeo::point2d pixel(const point3d& world) const { return view->worldToWinCoordinates(world); }
    eMoveRotOperation hoverAt(const point3d& world) const {
        const auto p = pixel(world);
        control->hover(p.x(), p.y(), kPick);
        return control->hotOperation();
    }
    /// Presses on `grab`, moves in `steps` to `target`, lets go; the last transformation the host saw.
    matrix3d drag(const point3d& grab, const point3d& target, int steps = 3) {
        const auto from = pixel(grab), to = pixel(target);
        EXPECT_TRUE(control->startModify(from.x(), from.y(), kPick));
        for (int i = 1; i <= steps; ++i) {
            const double f = double(i) / steps;
            control->modify(from.x() + (to.x() - from.x()) * f, from.y() + (to.y() - from.y()) * f);
        }
        control->endModify(to.x(), to.y());
        return host.trafos.empty() ? matrix3d() : host.trafos.back();
    }
    vector3d viewAxis(int i) const {
        ox::refPtr<oxtest::orthoRays> rays(new oxtest::orthoRays(view->camera()->rotation()));
        return rays->axis(i);
    }
};

class moveRotationControlTest : public oxtest::glTest {};

// --- scripted drags: every grip, local and world ------------------------------------------------------

TEST_F(moveRotationControlTest, draggingEachGripMovesOrTurnsByWhatIsUnderTheCursor) {
    const matrix3d c = oxtest::tiltedPlacement();
    const point3d o = originOf(c);
    const vector3d x = column(c, 0), y = column(c, 1);
    const double a = 20.0 * ox::angle::kPi / 180.0, b = 60.0 * ox::angle::kPi / 180.0;
    for (const bool local : {true, false}) {
        // Where the grips that follow the local/world choice are drawn.
        const matrix3d frame = local ? c : oxtest::translation(c.translation());
        const vector3d fz = column(frame, 2);
        struct case_t {
            const char* what;
            eMoveRotOperation hot;
            point3d grab;
            matrix3d expected;  // world
            point3d target;     // where the grabbed point must end
            bool rings = false; // X and Y rings shown (they cross the other grips on screen)
        };
        std::vector<case_t> cases = {
            {"X arrow", kMoveRotMoveX, o + x * 5, oxtest::translation(x * 3), {}},
            {"Y arrow", kMoveRotMoveY, o + y * 6, oxtest::translation(y * -2.5), {}},
            {"Z arrow", kMoveRotMoveZ, o + fz * 5, oxtest::translation(fz * 3.5), {}},
            {"XY square", kMoveRotMoveXY, frame * point3d(2.5, 2.5, 0),
             oxtest::translation(column(frame, 0) * 2 - column(frame, 1) * 1.5), {}},
            {"Z ring", kMoveRotRotZ, frame * point3d(8 * std::cos(a), 8 * std::sin(a), 0),
             oxtest::rotation(40, fz, o), {}},
            {"X ring", kMoveRotRotXY, c * point3d(0, 8 * std::cos(b), 8 * std::sin(b)), oxtest::rotation(-35, x, o), {}, true},
            {"Y ring", kMoveRotRotXY, c * point3d(8 * std::sin(b), 0, 8 * std::cos(b)), oxtest::rotation(30, y, o), {}, true},
        };
        for (auto& k : cases) {
            rig r(oxtest::obliqueView(), c, local);
            r.control->enableXRotation(k.rings);
            r.control->enableYRotation(k.rings);
            k.target = k.expected * k.grab;
            ASSERT_EQ(r.hoverAt(k.grab), k.hot) << k.what << " local " << local;
            const matrix3d world = r.drag(k.grab, k.target);
            EXPECT_TRUE(matricesNear(world, k.expected, kTolerance)) << k.what << " local " << local;
            // The handle moved on with it.
            EXPECT_TRUE(matricesNear(r.control->currentPlacement(), k.expected * c, kTolerance)) << k.what;
        }
    }
}

TEST_F(moveRotationControlTest, theViewCircleTurnsAboutTheViewDirectionAndTheViewPlaneMoveFollowsTheScreen) {
    const matrix3d c = oxtest::tiltedPlacement();
    const point3d o = originOf(c);
    {
        rig r(oxtest::obliqueView(), c);
        r.control->setRotationShpereRadius(6);
        const double a = 250.0 * ox::angle::kPi / 180.0;
        const point3d grab = o + r.viewAxis(0) * (6 * std::cos(a)) + r.viewAxis(1) * (6 * std::sin(a));
        ASSERT_EQ(r.hoverAt(grab), kMoveRotRotView);
        const matrix3d expected = oxtest::rotation(-25, r.viewAxis(2), o);
        EXPECT_TRUE(matricesNear(r.drag(grab, expected * grab), expected, kTolerance));
    }
    {
        rig r(oxtest::obliqueView(), c);
        r.control->setMoveInViewPlane(true);
        const point3d grab = c * point3d(2.5, 2.5, 0);
        ASSERT_EQ(r.hoverAt(grab), kMoveRotMoveXY);
        // 20 pixels right and 10 down are 3 units along the screen's right and 1.5 against its up.
        const auto p = r.pixel(grab);
        ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
        r.control->modify(p.x() + 20, p.y() + 10);
        r.control->endModify(p.x() + 20, p.y() + 10);
        const vector3d expected = r.viewAxis(0) * 3.0 - r.viewAxis(1) * 1.5;
        EXPECT_TRUE(matricesNear(r.host.trafos.back(), oxtest::translation(expected), kTolerance));
    }
}

// --- what the host is told ------------------------------------------------------------------------------

TEST_F(moveRotationControlTest, theHostSeesBeginOneSetTrafoPerModifyAndEndWithTheSameCode) {
    const double a = 20.0 * ox::angle::kPi / 180.0;
    struct case_t {
        const char* what;
        bool tilt;
        point3d grab;
        int code;
    };
    const case_t cases[] = {
        {"move", false, {5, 0, 0}, 0},
        {"Z ring", false, {8 * std::cos(a), 8 * std::sin(a), 0}, 1},
        {"tilt", true, {2.5, 2.5, 0}, 3},
    };
    for (const auto& k : cases) {
        rig r(oxtest::obliqueView());
        r.control->setTiltInsteadMove(k.tilt);
        const auto p = r.pixel(k.grab);
        ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick)) << k.what;
        EXPECT_EQ(r.host.begins, std::vector<int>{k.code}) << k.what;
        EXPECT_TRUE(r.host.trafos.empty());
        for (int i = 1; i <= 4; ++i) {
            r.control->modify(p.x() + 3 * i, p.y() + 2 * i);
            EXPECT_EQ(r.host.trafos.size(), static_cast<std::size_t>(i)) << k.what;
        }
        EXPECT_TRUE(r.host.ends.empty());
        r.control->endModify(p.x() + 12, p.y() + 8);
        EXPECT_EQ(r.host.trafos.size(), 5u) << k.what;  // and the final one
        EXPECT_EQ(r.host.ends, std::vector<int>{k.code}) << k.what;
        EXPECT_FALSE(r.control->isModifying());
        // Nothing more after the end.
        r.control->modify(p.x(), p.y());
        r.control->endModify(p.x(), p.y());
        EXPECT_EQ(r.host.trafos.size(), 5u);
        EXPECT_EQ(r.host.ends.size(), 1u);
    }
}

TEST_F(moveRotationControlTest, aCancelledDragPutsEverythingBackAndEndsWithTheBeginCode) {
    const double a = 20.0 * ox::angle::kPi / 180.0;
    rig r(oxtest::obliqueView(), oxtest::translation({1, 2, 3}));
    const auto p = r.pixel({1 + 8 * std::cos(a), 2 + 8 * std::sin(a), 3}); // the Z ring: code 1
    ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
    r.control->modify(p.x() + 20, p.y() + 10);
    r.control->cancelModify();
    EXPECT_FALSE(r.control->isModifying());
    ASSERT_EQ(r.host.trafos.size(), 2u);
    EXPECT_TRUE(matricesNear(r.host.trafos.back(), matrix3d(), kTolerance));
    EXPECT_EQ(r.host.ends, std::vector<int>{1});
    EXPECT_TRUE(matricesNear(r.control->currentPlacement(), oxtest::translation({1, 2, 3}), kTolerance));
    r.control->cancelModify(); // nothing runs: nothing happens
    r.control->endModify(p.x(), p.y());
    EXPECT_EQ(r.host.ends.size(), 1u);
}

TEST_F(moveRotationControlTest, aRejectedTransformationKeepsThePreviousResult) {
    rig r(oxtest::topView());
    r.host.accept = 1;
    const auto p = r.pixel({5, 0, 0});
    ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
    r.control->modify(p.x() + 10, p.y());  // 1.5 units: accepted
    r.control->modify(p.x() + 30, p.y());  // rejected
    EXPECT_TRUE(matricesNear(r.control->currentResult(), oxtest::translation({1.5, 0, 0}), kTolerance));
    r.control->endModify(p.x() + 40, p.y());  // the last position offered again, and rejected too
    EXPECT_EQ(r.host.trafos.size(), 3u);
    EXPECT_TRUE(matricesNear(r.host.trafos.back(), oxtest::translation({4.5, 0, 0}), kTolerance));
    EXPECT_TRUE(matricesNear(r.control->currentPlacement(), oxtest::translation({1.5, 0, 0}), kTolerance));
}

TEST_F(moveRotationControlTest, keyboardStepsAndEmptySpace) {
    const matrix3d c = oxtest::tiltedPlacement();
    rig r(oxtest::obliqueView(), c);
    // Over empty space nothing starts.
    EXPECT_FALSE(r.control->startModify(5, 5, kPick));
    EXPECT_FALSE(r.control->isModifying());
    EXPECT_TRUE(r.host.begins.empty());

    // Direction 2 has no step: nothing moves, but the host still sees a whole modification.
    r.control->performModify(kMoveRotMoveViewStep, static_cast<eMoveRotDirection>(2), 5.0);
    EXPECT_EQ(r.host.begins, std::vector<int>{0});
    EXPECT_EQ(r.host.ends, std::vector<int>{0});
    ASSERT_EQ(r.host.trafos.size(), 1u);
    EXPECT_TRUE(matricesNear(r.host.trafos[0], matrix3d(), 1e-12));
    EXPECT_TRUE(matricesNear(r.control->currentPlacement(), c, 1e-12));

    // A quarter turn about the handle's own Z.
    r.control->performModify(kMoveRotRotZStep, kMoveRotDirUp, 90);
    const matrix3d quarter = oxtest::rotation(90, column(c, 2), originOf(c));
    EXPECT_TRUE(matricesNear(r.host.trafos.back(), quarter, 1e-9));
    EXPECT_TRUE(matricesNear(r.control->currentPlacement(), quarter * c, 1e-9));
    EXPECT_FALSE(r.control->isModifying());

    // Operations that are no keyboard steps do nothing there.
    r.control->performModify(kMoveRotMoveX, kMoveRotDirUp, 3);
    EXPECT_EQ(r.host.trafos.size(), 2u);
}

// --- the hit test -----------------------------------------------------------------------------------------

TEST_F(moveRotationControlTest, inMainViewsOnlyTheViewMustLookAlongAnAxis) {
    struct case_t {
        double degreesAboutX;  // camera turn from the top view
        bool main;
    };
    // The ray runs into the screen: from the top it is 180° from Z, from below 0°.
    const case_t cases[] = {{0, true},      {0.015, true},   {-0.019, true}, {0.025, false},
                            {180, true},    {180.008, true}, {180.015, false}, {30, false}};
    for (const auto& k : cases) {
        rig r(oxtest::turn({1, 0, 0}, k.degreesAboutX));
        r.control->setModifyInMainViewsOnly(true);
        EXPECT_EQ(r.hoverAt({5, 0, 0}), k.main ? kMoveRotMoveX : kMoveRotNone) << k.degreesAboutX;
        r.control->setModifyInMainViewsOnly(false);
        EXPECT_EQ(r.hoverAt({5, 0, 0}), kMoveRotMoveX) << k.degreesAboutX;
    }
}

TEST_F(moveRotationControlTest, besideTheGripsOtherDrawablesTheCatchZoneTheSphereAndTheArea) {
    {   // Another drawable moves in XY; with the tilt it tilts; without XY movement it is nothing.
        rig r(oxtest::topView());
        r.view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({-7, 7, 0}, 3, {200, 200, 200})));
        EXPECT_EQ(r.hoverAt({-7, 7, 0}), kMoveRotMoveXY);
        r.control->setTiltInsteadMove(true);
        EXPECT_EQ(r.hoverAt({-7, 7, 0}), kMoveRotTiltXY);
        EXPECT_EQ(r.hoverAt({2.5, 2.5, 0}), kMoveRotTiltXY);
        r.control->enableXYMovement(false);
        EXPECT_EQ(r.hoverAt({-7, 7, 0}), kMoveRotNone);
    }
    {   // A near miss of the thin Z arrow is caught by the second pick.
        rig r(oxtest::obliqueView());
        const point3d nearMiss = point3d(0, 0, 7) + r.viewAxis(0) * 0.75;  // 5 pixels aside
        EXPECT_EQ(r.hoverAt(nearMiss), kMoveRotMoveZ);
        EXPECT_EQ(r.hoverAt(point3d(0, 0, 7) + r.viewAxis(0) * 3), kMoveRotNone);
        r.control->enableZMovement(false);
        EXPECT_EQ(r.hoverAt(nearMiss), kMoveRotNone);
    }
    {   // The sphere: looking along Z or along Y, inside the radius.
        rig r(oxtest::topView());
        EXPECT_EQ(r.hoverAt({-3, -3, 0}), kMoveRotNone);
        r.control->setRotationShpereRadius(6);
        EXPECT_EQ(r.hoverAt({-3, -3, 0}), kMoveRotRotView);
        EXPECT_EQ(r.hoverAt({-5, -5, 0}), kMoveRotNone);  // 7.07 from the centre
        r.view->camera()->setRotation(oxtest::sideView());
        EXPECT_EQ(r.hoverAt({-3, 0, -3}), kMoveRotRotView);
        r.view->camera()->setRotation(oxtest::obliqueView());
        EXPECT_EQ(r.hoverAt({3, -3, 0}), kMoveRotNone);
    }
    {   // The Z rotation area, in the handle's XY plane.
        rig r(oxtest::topView(), oxtest::translation({1, 1, 0}));
        r.control->setZRotationArea(oxGeo::polyline2d({{-9, -9}, {-5, -9}, {-5, -5}, {-9, -5}}));
        EXPECT_EQ(r.hoverAt({-6, -6, 0}), kMoveRotRotZ);
        EXPECT_EQ(r.hoverAt({-8.5, -8.5, 0}), kMoveRotNone);  // outside once moved by (1, 1)
    }
}

TEST_F(moveRotationControlTest, hoverFiresOnlyWhenTheHotGripChanges) {
    rig r(oxtest::topView());
    ox::refPtr<oxtest::eventCounter> events(new oxtest::eventCounter());
    r.view->addObserver(events);
    const point3d empty{-8, -8, 0}, xArrow{5, 0, 0}, yArrow{0, 5, 0};
    const struct {
        point3d at;
        int events;
    } steps[] = {{empty, 0}, {xArrow, 1}, {xArrow, 1}, {yArrow, 2}, {empty, 3}, {empty, 3}};
    for (const auto& step : steps) {
        r.hoverAt(step.at);
        EXPECT_EQ(events->changed.load(), step.events);
    }
    r.view->removeObserver(events.get());
}

// --- refusals ---------------------------------------------------------------------------------------------

TEST_F(moveRotationControlTest, aDetachedControlIgnoresEverything) {
    rig r(oxtest::topView());
    const auto p = r.pixel({5, 0, 0});
    r.control->detachFromScene();
    EXPECT_FALSE(r.control->isAttached());
    ox::refPtr<oxtest::eventCounter> events(new oxtest::eventCounter());
    r.view->addObserver(events);
    r.control->hover(p.x(), p.y(), kPick);
    EXPECT_EQ(r.control->hotOperation(), kMoveRotNone);
    EXPECT_FALSE(r.control->startModify(p.x(), p.y(), kPick));
    r.control->startModify(kMoveRotMoveX, p.x(), p.y());
    r.control->modify(p.x() + 10, p.y());
    r.control->endModify(p.x() + 10, p.y());
    r.control->performModify(kMoveRotRotZStep, kMoveRotDirUp, 90);
    EXPECT_FALSE(r.control->isModifying());
    EXPECT_TRUE(r.host.begins.empty() && r.host.trafos.empty() && r.host.ends.empty());
    EXPECT_EQ(events->changed.load(), 0);
    EXPECT_TRUE(r.view->implementation()->drawables().empty());

    // Detaching in the middle of a drag drops it; attached again, it works.
    r.control->attachToScene();
    ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
    r.control->detachFromScene();
    r.control->modify(p.x() + 10, p.y());
    EXPECT_TRUE(r.host.trafos.empty());
    r.view->removeObserver(events.get());
}

TEST_F(moveRotationControlTest, aHostExceptionInsideModifyGoesBackToTheHostWithNothingHeld) {
    class throwingHost : public trafoRecorder {
    public:
        bool setTrafo(const matrix3d& trafo) override {
            if (trafos.size() == 1) throw std::runtime_error("host refuses");
            return trafoRecorder::setTrafo(trafo);
        }
    } host;
    rig r(oxtest::topView());
    r.control->setFunctor(&host);
    const auto p = r.pixel({5, 0, 0});
    ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
    r.control->modify(p.x() + 10, p.y());
    const auto references = r.control->refCount();
    EXPECT_THROW(r.control->modify(p.x() + 20, p.y()), std::runtime_error);
    EXPECT_EQ(r.control->refCount(), references);
    // The drag is still there and ends with what was accepted.
    EXPECT_TRUE(r.control->isModifying());
    r.control->setFunctor(nullptr);
    r.control->endModify(p.x() + 20, p.y());
    EXPECT_FALSE(r.control->isModifying());
}

TEST_F(moveRotationControlTest, valuesThatAreNoNumbersAreRefusedWithAWarning) {
    oxlog::logCapture capture;
    matrix3d broken;
    broken(0, 3) = kNaN;
    {
        rig r(oxtest::topView(), broken);
        EXPECT_TRUE(matricesNear(r.control->baseSystem(), matrix3d(), 0)); // kept the identity
        EXPECT_EQ(r.hoverAt({5, 0, 0}), kMoveRotMoveX);                   // and works there

        EXPECT_FALSE(r.control->startModify(kNaN, 50, kPick));
        EXPECT_FALSE(r.control->startModify(50, std::numeric_limits<double>::infinity(), kPick));
        const auto p = r.pixel({5, 0, 0});
        ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
        r.control->modify(p.x() + 10, p.y());
        r.control->modify(kNaN, p.y());
        EXPECT_EQ(r.host.trafos.size(), 1u);
        r.control->endModify(kNaN, kNaN);  // ends with what it had
        EXPECT_TRUE(matricesNear(r.control->currentPlacement(), oxtest::translation({1.5, 0, 0}), kTolerance));

        r.control->setBaseSystem(broken);
        r.control->setAddViewTrafo(broken);
        r.control->setGripSize(kNaN);
        r.control->setXSize(-1);
        r.control->setRotationShpereRadius(std::numeric_limits<double>::infinity());
        r.control->setConstantScreenSize(true, kNaN);
        r.control->performModify(kMoveRotRotZStep, kMoveRotDirUp, kNaN);
        r.control->setZRotationArea(oxGeo::polyline2d({{0, 0}, {kNaN, 1}, {1, 1}}));
        EXPECT_EQ(r.control->gripSize(), 1.0);
        EXPECT_EQ(r.control->xSize(), 10.0);
        EXPECT_EQ(r.control->rotationSphereRadius(), 0.0);
        EXPECT_FALSE(r.control->constantScreenSize());
        EXPECT_TRUE(matricesNear(r.control->addViewTrafo(), matrix3d(), 0));
        EXPECT_EQ(r.hoverAt({6.5, 0, 0}), kMoveRotMoveX);  // still drawn where it was moved to
    }
    const auto warnings = capture.messages(kLogger);
    EXPECT_GE(warnings.size(), 12u);
    EXPECT_EQ(moveRotationControl::create({}, matrix3d(), true), nullptr);
}

TEST_F(moveRotationControlTest, theLastReferenceTakesTheHandleOutOfTheScene) {
    rig r(oxtest::topView());
    EXPECT_EQ(r.view->implementation()->drawables().size(), 1u);
    r.control.reset();
    EXPECT_TRUE(r.view->implementation()->drawables().empty());
}

TEST_F(moveRotationControlTest, theOptionsAndMoveListsOutliveADetach) {
    rig r(oxtest::topView());
    r.control->enableXYMovement(false);
    r.control->setGripSize(2);
    r.control->setTiltInsteadMove(true);
    ox::refPtr<iDrawable> part(new oxtest::testSquare({-7, 7, 0}, 3, {200, 200, 200}));
    r.control->addToXYMove(part);
    r.control->addToXYMove(part);
    r.control->addToZMove(part);
    r.control->detachFromScene();
    EXPECT_FALSE(r.control->XYMovementEnabled());
    r.control->enableXRotation(true);
    r.control->attachToScene();
    EXPECT_FALSE(r.control->XYMovementEnabled());
    EXPECT_TRUE(r.control->XRotationEnabled());
    EXPECT_TRUE(r.control->tiltInsteadMove());
    EXPECT_EQ(r.control->gripSize(), 2.0);
    EXPECT_EQ(r.hoverAt({5, 0, 0}), kMoveRotNone);  // no X arrow without XY movement
    EXPECT_EQ(r.control->xyMoveList().size(), 1u);
    r.control->removeFromXYMove(part);
    EXPECT_TRUE(r.control->xyMoveList().empty());
    EXPECT_EQ(r.control->zMoveList().size(), 1u);
}

TEST_F(moveRotationControlTest, theViewTestsNameTheAxisTheViewLooksAlong) {
    struct case_t {
        const char* what;
        oxGeo::quaternion look;
        bool xy, xz, yz, zLocal, zWorld;
    };
    const case_t cases[] = {
        {"top", oxtest::topView(), true, false, false, false, false},
        {"along Y", oxtest::sideView(), false, true, false, true, true},
        {"along X", oxtest::turn({0, 1, 0}, 90), false, false, true, true, false},
        {"oblique", oxtest::obliqueView(), false, false, false, true, true},
    };
    for (const auto& k : cases) {
        rig r(k.look);
        EXPECT_EQ(r.control->isViewXYPlane(1.0), k.xy) << k.what;
        EXPECT_EQ(r.control->isViewXZPlane(1.0), k.xz) << k.what;
        EXPECT_EQ(r.control->isViewYZPlane(1.0), k.yz) << k.what;
        EXPECT_EQ(r.control->isViewMainPlane(1.0), k.xy || k.xz || k.yz) << k.what;
        EXPECT_EQ(r.control->ZMovementViewDirValid(), k.zLocal) << k.what;
        r.control->setLocalXYZOperations(false);
        EXPECT_EQ(r.control->ZMovementViewDirValid(), k.zWorld) << k.what;
        // Turned a quarter about X, the handle's own XY plane faces a viewer looking along world Y.
        r.control->setBaseSystem(oxtest::rotation(90, {1, 0, 0}));
        EXPECT_EQ(r.control->isViewXYPlane(1.0), k.xz) << k.what;
    }
}

TEST_F(moveRotationControlTest, theHandleIsShownThroughTheAdditionalViewTransformation) {
    // Shown turned a quarter about Z: its X arrow runs along world Y on the screen, while the host
    // still gets its moves in the placement's own world.
    rig r(oxtest::topView());
    r.control->setAddViewTrafo(oxtest::rotation(90, {0, 0, 1}));
    EXPECT_EQ(r.hoverAt({0, 5, 0}), kMoveRotMoveX);
    const matrix3d world = r.drag({0, 5, 0}, {0, 6.5, 0});
    EXPECT_TRUE(matricesNear(world, oxtest::translation({1.5, 0, 0}), kTolerance));
    EXPECT_EQ(r.hoverAt({0, 11, 0}), kMoveRotMoveX);  // the shown tip moved on to 11.5
}

TEST_F(moveRotationControlTest, theDrawableFollowsTheDragBeforeItEnds) {
    rig r(oxtest::topView());
    const auto p = r.pixel({5, 0, 0});
    const auto tip = r.pixel({12.5, 0, 0});  // beyond the arrow's end at 10 and the ring at 8
    const auto hitsAtTip = [&] {
        return r.view->pickSelectRect(unsigned(tip.x()) - 2, unsigned(tip.y()) - 2, unsigned(tip.x()) + 2,
                                      unsigned(tip.y()) + 2).size();
    };
    EXPECT_EQ(hitsAtTip(), 0u);
    ASSERT_TRUE(r.control->startModify(p.x(), p.y(), kPick));
    r.control->modify(p.x() + 20, p.y());  // 3 units
    EXPECT_EQ(hitsAtTip(), 1u);
    r.control->endModify(p.x() + 20, p.y());
    EXPECT_EQ(hitsAtTip(), 1u);  // now by its placement, without a pending transformation
}

TEST_F(moveRotationControlTest, isFinishedAsksBothJobQueues) {
    rig r(oxtest::topView());
    auto& async = ox::iJobsQueueAsync::get();
    auto& sync = ox::iJobsQueueSync::get();
    async.waitFinished();
    sync.processPending();
    EXPECT_TRUE(r.control->isFinished());
    sync.post([] {});
    EXPECT_FALSE(r.control->isFinished());
    sync.processPending();
    EXPECT_TRUE(r.control->isFinished());
    std::atomic<bool> release{false};
    async.post([&release] {
        while (!release.load()) std::this_thread::yield();
    });
    EXPECT_FALSE(r.control->isFinished());
    release = true;
    async.waitFinished();
    EXPECT_TRUE(r.control->isFinished());
}

// --- sizes and the constant screen size -------------------------------------------------------------------

TEST_F(moveRotationControlTest, aConstantScreenSizeKeepsThePixelsButOperationsStayInWorldUnits) {
    rig r(oxtest::topView());
    const oxGeo::point2d centre = r.pixel({});
    const auto hotAtPixels = [&](double dx) {
        r.control->hover(centre.x() + dx, centre.y(), kPick);
        return r.control->hotOperation();
    };
    // 10 units at 0.15 a pixel reach 66 pixels; zoomed out to 0.3 a pixel, 33.
    EXPECT_EQ(hotAtPixels(60), kMoveRotMoveX);
    r.view->resize(200, 200, 60.0, 0, 0, 0, 0);
    EXPECT_EQ(hotAtPixels(60), kMoveRotNone);
    r.control->setConstantScreenSize(true, 100);
    for (const double viewSize : {60.0, 15.0, 30.0}) {
        r.view->resize(200, 200, viewSize, 0, 0, 0, 0);
        EXPECT_EQ(hotAtPixels(90), kMoveRotMoveX) << viewSize;
        EXPECT_EQ(hotAtPixels(110), kMoveRotNone) << viewSize;
    }
    r.view->resize(200, 200, 60.0, 0, 0, 0, 0);  // 0.3 a pixel
    ASSERT_TRUE(r.control->startModify(centre.x() + 80, centre.y(), kPick));
    r.control->modify(centre.x() + 120, centre.y());
    r.control->endModify(centre.x() + 120, centre.y());
    EXPECT_TRUE(matricesNear(r.host.trafos.back(), oxtest::translation({12, 0, 0}), kTolerance));
}

// --- the picture ------------------------------------------------------------------------------------------

using moveRotationControlImageTest = oxtest::shaderSwitchTest;

TEST_F(moveRotationControlImageTest, theHandleWithAHotRingMatchesItsReferenceOnBothShadingPaths) {
    for (const bool shaders : {false, true}) {
        openGL::glShaderProgram::enableGlShadersGlobally(shaders);
        rig r(oxtest::obliqueView(), oxtest::translation({0, 0, -3}), true, 4);
        r.view->resize(200, 200, 26.0, 0, 0, 0, 0);
        r.control->setGripSize(1.6);
        r.control->enableXRotation(true);
        r.control->enableYRotation(true);
        r.control->setRotationShpereRadius(6);
        r.control->setZRotationArea(oxGeo::polyline2d({{-11, -11}, {-4, -11}, {-4, -4}, {-11, -4}}));
        r.control->showRotationArea(true);
        const double a = 20.0 * ox::angle::kPi / 180.0;
        ASSERT_EQ(r.hoverAt(point3d(8 * std::cos(a), 8 * std::sin(a), -3)), kMoveRotRotZ);
        oxtest::paint(*r.view);
        std::unique_ptr<char[]> pixels(r.view->writeToBuffer());
        const auto image = oxtest::imageOf(pixels.get(), 200, 200);
        const std::string name = std::string("manipulator/handle_") + (shaders ? "shader" : "fixed");
        EXPECT_TRUE(oxtest::matchesReferenceImage(image, name, 24, 0.5)) << name;
    }
}

} // namespace
