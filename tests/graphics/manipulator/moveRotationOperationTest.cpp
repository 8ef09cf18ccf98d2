// The manipulator's operations as pure arithmetic on view rays (no GL): a drag from one window
// position to another must move or turn the handle so that the grabbed point lands under the
// cursor, in the right frame.
#include "manipulatorTestSupport.h"

#include "manipulator/moverotationoperations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <typeinfo>

namespace {

using namespace oxGraphics;
using oxGeo::matrix3d;
using oxGeo::point3d;
using oxGeo::vector3d;
using oxtest::column;
using oxtest::matricesNear;
using oxtest::orthoRays;
using oxtest::originOf;

constexpr double kTolerance = 1e-6;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

struct dragRig {
    ox::refPtr<orthoRays> rays;
    matrix3d placement;

    operationSetup_t setup(const point3d& grab, bool local = true) const {
        operationSetup_t s;
        s.views = rays;
        s.placement = placement;
        s.local = local;
        const auto p = rays->pixelOf(grab);
        s.x = p.x();
        s.y = p.y();
        return s;
    }
    /// The operation's result as a world transformation.
    matrix3d worldResult(const moveRotationOperation& op) const {
        matrix3d local;
        op.transformation(local);
        return placement * local * placement.inverse();
    }
    bool dragTo(moveRotationOperation& op, const point3d& target) const {
        const auto p = rays->pixelOf(target);
        return op.update(p.x(), p.y());
    }
};

dragRig obliqueRig() { return {ox::refPtr<orthoRays>(new orthoRays(oxtest::obliqueView())), oxtest::tiltedPlacement()}; }

// --- which class an operation value makes ---------------------------------------------------------

TEST(moveRotationOperationTest, eachValueMakesTheOperationOfItsFrame) {
    const dragRig rig = obliqueRig();
    struct case_t {
        eMoveRotOperation op;
        bool local, viewPlane;
        const std::type_info& type;
    };
    const case_t cases[] = {
        {kMoveRotMoveX, false, false, typeid(moveLocalXOperation)},
        {kMoveRotMoveY, false, false, typeid(moveLocalYOperation)},
        {kMoveRotMoveZ, true, false, typeid(moveLocalZOperation)},
        {kMoveRotMoveZ, false, false, typeid(moveWorldZOperation)},
        {kMoveRotMoveXY, true, false, typeid(moveLocalXYOperation)},
        {kMoveRotMoveXY, false, false, typeid(moveWorldXYOperation)},
        {kMoveRotMoveXY, true, true, typeid(moveViewXYOperation)},
        {kMoveRotMoveXY, false, true, typeid(moveViewXYOperation)},
        {kMoveRotMoveViewStep, true, false, typeid(moveViewXYFixedOperation)},
        {kMoveRotRotZ, true, false, typeid(rotLocalZOperation)},
        {kMoveRotRotZ, false, false, typeid(rotWorldZOperation)},
        {kMoveRotRotZStep, false, false, typeid(rotZFixedOperation)},
        {kMoveRotRotXY, false, false, typeid(rotXYOperation)},
        {kMoveRotTiltXY, false, false, typeid(rotXY2Operation)},
        {kMoveRotTiltXYStep, false, false, typeid(rotXYFixedOperation)},
        {kMoveRotRotView, false, false, typeid(rotViewZOperation)},
    };
    for (const auto& c : cases) {
        auto s = rig.setup(originOf(rig.placement), c.local);
        s.viewPlane = c.viewPlane;
        const auto op = createMoveRotationOperation(c.op, s);
        ASSERT_TRUE(op) << c.op;
        EXPECT_EQ(typeid(*op), c.type) << c.op << " local " << c.local << " view " << c.viewPlane;
    }
    for (const int unused : {-1, 5, 8, 11, 18, 1000})
        EXPECT_FALSE(createMoveRotationOperation(static_cast<eMoveRotOperation>(unused), rig.setup({})));
}

// --- moves: the grabbed point follows the cursor -----------------------------------------------------

TEST(moveRotationOperationTest, aMoveCarriesTheGrabbedPointToTheCursor) {
    const dragRig rig = obliqueRig();
    const matrix3d& c = rig.placement;
    const point3d o = originOf(c);
    const vector3d x = column(c, 0), y = column(c, 1), z = column(c, 2);
    const vector3d right = rig.rays->axis(0), up = rig.rays->axis(1);
    struct case_t {
        const char* what;
        eMoveRotOperation op;
        bool local, viewPlane;
        point3d grab;
        vector3d travel;  // world
    };
    const case_t cases[] = {
        {"along local X", kMoveRotMoveX, true, false, o + x * 5, x * 3},
        {"back along local X", kMoveRotMoveX, false, false, o + x * 5, x * -7.5},
        {"along local Y", kMoveRotMoveY, true, false, o + y * 4, y * 2.25},
        {"along local Z", kMoveRotMoveZ, true, false, o + z * 5, z * 3},
        {"along world Z", kMoveRotMoveZ, false, false, o + vector3d(0, 0, 5), vector3d(0, 0, -4)},
        {"in the local XY plane", kMoveRotMoveXY, true, false, c * point3d(2.5, 2.5, 0), x * 2 - y * 1.5},
        {"in the world XY plane", kMoveRotMoveXY, false, false, o + vector3d(2.5, 2.5, 0), vector3d(2, -1.5, 0)},
        {"in the view plane", kMoveRotMoveXY, true, true, o + right, right * 2 - up * 3},
    };
    for (const auto& k : cases) {
        auto s = rig.setup(k.grab, k.local);
        s.viewPlane = k.viewPlane;
        auto op = createMoveRotationOperation(k.op, s);
        ASSERT_TRUE(op) << k.what;
        ASSERT_TRUE(rig.dragTo(*op, k.grab + k.travel)) << k.what;
        EXPECT_TRUE(matricesNear(rig.worldResult(*op), oxtest::translation(k.travel), kTolerance)) << k.what;
    }
}

TEST(moveRotationOperationTest, anAxisMoveKeepsToItsAxisWhateverTheCursorDoesBesideIt) {
    const dragRig rig = obliqueRig();
    const vector3d x = column(rig.placement, 0);
    const point3d grab = originOf(rig.placement) + x * 5;
    auto op = createMoveRotationOperation(kMoveRotMoveX, rig.setup(grab));
    // The cursor goes 2 units along X and 3 across it on the screen: only the part along X counts.
    const vector3d across = rig.rays->axis(2).cross(x).norm();
    const point3d onAxis = grab + x * 2;
    const auto aside = rig.rays->pixelOf(onAxis + across * 3);
    ASSERT_TRUE(op->update(aside.x(), aside.y()));
    const matrix3d world = rig.worldResult(*op);
    EXPECT_LT(column(world, 3).cross(x).length(), kTolerance) << "the move left the axis";
    EXPECT_NEAR(world.translation().dot(x), 2.0, kTolerance);
}

// --- rotations: the angle swept about the right axis through the right point --------------------------

TEST(moveRotationOperationTest, aRotationTurnsByTheSweptAngleAboutItsAxisThroughItsCentre) {
    const dragRig rig = obliqueRig();
    const matrix3d& c = rig.placement;
    const point3d o = originOf(c);
    const vector3d x = column(c, 0), y = column(c, 1), z = column(c, 2);
    const vector3d right = rig.rays->axis(0), up = rig.rays->axis(1), towards = rig.rays->axis(2);
    const double a = 20.0 * ox::angle::kPi / 180.0;
    struct case_t {
        const char* what;
        eMoveRotOperation op;
        bool local;
        vector3d xyAxis;
        point3d start;
        vector3d axis;  // world
    };
    const case_t cases[] = {
        {"local Z", kMoveRotRotZ, true, {}, c * point3d(8 * std::cos(a), 8 * std::sin(a), 0), z},
        {"world Z", kMoveRotRotZ, false, {}, o + vector3d(8 * std::cos(a), 8 * std::sin(a), 0), {0, 0, 1}},
        {"local X ring", kMoveRotRotXY, true, {1, 0, 0}, c * point3d(0, 8 * std::cos(a), 8 * std::sin(a)), x},
        {"local Y ring", kMoveRotRotXY, false, {0, 1, 0}, c * point3d(8 * std::sin(a), 0, 8 * std::cos(a)), y},
        {"view", kMoveRotRotView, true, {}, o + right * (6 * std::cos(a)) + up * (6 * std::sin(a)), towards},
    };
    for (const auto& k : cases)
        for (const double degrees : {35.0, -50.0, 170.0}) {
            auto s = rig.setup(k.start, k.local);
            s.xyAxis = k.xyAxis;
            auto op = createMoveRotationOperation(k.op, s);
            ASSERT_TRUE(op) << k.what;
            const matrix3d expected = oxtest::rotation(degrees, k.axis, o);
            ASSERT_TRUE(rig.dragTo(*op, expected * k.start)) << k.what << " " << degrees;
            EXPECT_TRUE(matricesNear(rig.worldResult(*op), expected, kTolerance)) << k.what << " " << degrees;
        }
}

TEST(moveRotationOperationTest, theTiltRollsLikeABallOfItsRadiusTowardsTheDrag) {
    const dragRig rig = obliqueRig();
    const matrix3d& c = rig.placement;
    auto s = rig.setup(c * point3d(2.5, 2.5, 0));
    s.tiltRadius = 8.0;
    auto op = createMoveRotationOperation(kMoveRotTiltXY, s);
    ASSERT_TRUE(rig.dragTo(*op, c * point3d(2.5 + 3, 2.5 + 4, 0)));
    // A drag d = (3, 4) turns about Z × d by atan(|d| / r).
    const vector3d axis = column(c, 2).cross(column(c, 0) * 3 + column(c, 1) * 4);
    const matrix3d expected = oxtest::rotation(std::atan2(5.0, 8.0) * 180.0 / ox::angle::kPi, axis, originOf(c));
    EXPECT_TRUE(matricesNear(rig.worldResult(*op), expected, kTolerance));
}

// --- what leaves the value where it is ----------------------------------------------------------------

TEST(moveRotationOperationTest, aRayParallelToThePlaneOrNoNumberLeavesTheValueAsItWas) {
    // Identity placement: the side view sees the XY plane edge-on.
    const dragRig rig{ox::refPtr<orthoRays>(new orthoRays(oxtest::obliqueView())), matrix3d()};
    for (const eMoveRotOperation kind : {kMoveRotMoveXY, kMoveRotRotZ, kMoveRotTiltXY}) {
        auto op = createMoveRotationOperation(kind, rig.setup(point3d(3, 2, 0)));
        ASSERT_TRUE(rig.dragTo(*op, point3d(4, 3.5, 0))) << kind;
        matrix3d before;
        op->transformation(before);
        ASSERT_FALSE(before.isIdentity()) << kind;

        rig.rays->look(oxtest::sideView());
        EXPECT_FALSE(op->update(100, 40)) << kind;
        EXPECT_FALSE(op->update(kNaN, 40)) << kind;
        EXPECT_FALSE(op->update(100, std::numeric_limits<double>::infinity())) << kind;
        matrix3d after;
        EXPECT_EQ(op->transformation(after), before) << kind;
        rig.rays->look(oxtest::obliqueView());
    }
}

TEST(moveRotationOperationTest, anOperationWithoutAnUpdateIsTheIdentity) {
    const dragRig rig = obliqueRig();
    const point3d o = originOf(rig.placement);
    for (const eMoveRotOperation kind : {kMoveRotMoveX, kMoveRotMoveY, kMoveRotMoveZ, kMoveRotMoveXY, kMoveRotRotZ,
                                         kMoveRotRotXY, kMoveRotTiltXY, kMoveRotRotView})
        for (const bool local : {true, false}) {
            auto op = createMoveRotationOperation(kind, rig.setup(rig.placement * point3d(3, 2, 1), local));
            matrix3d result;
            EXPECT_TRUE(matricesNear(op->transformation(result), matrix3d(), 1e-12)) << kind;
            // Nor does a start where the value cannot be measured (the centre of a rotation) jump later.
            auto centred = createMoveRotationOperation(kind, rig.setup(o, local));
            EXPECT_TRUE(matricesNear(centred->transformation(result), matrix3d(), 1e-12)) << kind;
        }
}

// --- keyboard steps -------------------------------------------------------------------------------------

TEST(moveRotationOperationTest, keyboardStepsGoWhereTheirDirectionSays) {
    const dragRig rig = obliqueRig();
    const matrix3d& c = rig.placement;
    const vector3d right = rig.rays->axis(0), up = rig.rays->axis(1);
    struct step_t {
        int dir;
        vector3d world;
    };
    const step_t steps[] = {{1, up * 2.5}, {4, up * -2.5}, {7, right * -2.5}, {8, right * 2.5},
                            {2, {}},       {0, {}},        {9, {}}};
    for (const auto& step : steps) {
        auto s = rig.setup({});
        s.direction = static_cast<eMoveRotDirection>(step.dir);
        s.value = 2.5;
        auto op = createMoveRotationOperation(kMoveRotMoveViewStep, s);
        EXPECT_FALSE(op->update(10, 10));
        EXPECT_TRUE(matricesNear(rig.worldResult(*op), oxtest::translation(step.world), kTolerance)) << step.dir;
    }

    // A turn step: a quarter turn about local Z takes local X to local Y.
    auto s = rig.setup({});
    s.value = 90;
    auto quarter = createMoveRotationOperation(kMoveRotRotZStep, s);
    const point3d o = originOf(c);
    EXPECT_TRUE((rig.worldResult(*quarter) * (o + column(c, 0))).isEqualTo(o + column(c, 1), kTolerance));

    // A tilt step turns the top of the handle towards its direction.
    s.value = 30;
    s.direction = kMoveRotDirUp;
    auto tilt = createMoveRotationOperation(kMoveRotTiltXYStep, s);
    const point3d top = rig.worldResult(*tilt) * (o + column(c, 2));
    const double h = 30.0 * ox::angle::kPi / 180.0;
    EXPECT_TRUE(top.isEqualTo(o + column(c, 2) * std::cos(h) + column(c, 1) * std::sin(h), kTolerance));
    s.direction = static_cast<eMoveRotDirection>(5);
    EXPECT_TRUE(matricesNear(rig.worldResult(*createMoveRotationOperation(kMoveRotTiltXYStep, s)), matrix3d(), 1e-12));
}

} // namespace
