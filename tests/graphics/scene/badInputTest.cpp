// What the scene answers to values no host should send but some do: NaN and infinities from
// their own arithmetic, coordinates no drawing can resolve, sizes beyond the driver, extreme
// pointer positions. Each is refused or corrected where it enters, and a fit always brings the
// content back.
#include "sceneTestSupport.h"

#include "oxboundeddrawable.h"
#include "oxmeshentity.h"
#include "oxscene.h"

#include "oxgeolimits.h"
#include "oxlog.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <limits>
#include <memory>

namespace {

using oxGeo::point3d;
using oxGeo::vector3d;
using oxtest::testSquare;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr oxtest::rgba8 kRed{255, 0, 0, 255};

class badInputTest : public oxtest::glTest {};

// 100 x 100 pixels, 10 units across, black background, 4 samples.
ox::refPtr<oxGraphics::scene> blackScene() {
    auto view = oxtest::makeScene(100, 100, 4);
    view->setColor({0, 0, 0}, 1 | 2);
    return view;
}

oxtest::rgba8 centreAfterPaint(oxGraphics::scene& view) {
    oxtest::paint(view);
    std::unique_ptr<char[]> pixels(view.writeToBuffer());
    return oxtest::pixelOf(pixels.get(), view.viewportWidth(), view.viewportWidth() / 2, view.viewportHeight() / 2);
}

bool cameraIsFinite(const oxGraphics::iCamera& camera) {
    return oxGeo::isFinite(camera.rotation()) && oxGeo::isFinite(camera.translation()) &&
           oxGeo::isFinite(camera.scale()) && oxGeo::isFinite(camera.eye());
}

TEST_F(badInputTest, nonFiniteCameraAndViewValuesAreRefusedAndAFitAlwaysBringsTheContentBack) {
    auto view = blackScene();
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({0, 0, 0}, 2, {255, 0, 0})));
    ASSERT_EQ(centreAfterPaint(*view), kRed);

    const auto camera = view->camera();
    camera->setEye({kNaN, 0, 1});
    camera->setAzimuth(ox::angle::fromRadians(kInf));
    camera->setElevation(ox::angle::fromRadians(kNaN));
    camera->setTwist(ox::angle::fromRadians(-kInf));
    camera->setRotation(oxGeo::quaternion(kNaN, 0, 0, 0));
    camera->setTranslation({kInf, 0, 0});
    camera->setScale({1, kNaN, 1});
    EXPECT_TRUE(cameraIsFinite(*camera));
    EXPECT_EQ(camera->azimuth().degree(), 0.0);
    for (const double size : {kNaN, kInf, -5.0, 0.0}) {
        view->resize(100, 100, size, 0, 0, 0, 0);
        EXPECT_EQ(view->viewSize(), 10.0) << size;
    }
    view->setViewPreceding({kNaN, 0, 1}, 10);
    view->setViewOrientation({0, 0, 1}, kInf);
    EXPECT_EQ(view->viewPrecedingAngle(), 0.0);
    EXPECT_EQ(view->viewOrientationAngle(), 0.0);
    oxGeo::matrix3d brokenModel;
    brokenModel(1, 1) = kNaN;
    const auto rotationBefore = camera->rotation();
    view->setCustomViewDirection(kNaN, 0, -1, /*animate*/ false, point3d());
    view->setFrontView(/*animate*/ true, brokenModel, point3d());
    view->setTopView(false, oxGeo::matrix3d(), point3d(0, kInf, 0), vector3d(0, 1, 0));
    EXPECT_TRUE(camera->rotation().isEqualTo(rotationBefore, 0.0));
    for (const double factor : {kNaN, kInf, 0.0, -2.0}) view->zoomDynamic(50, 50, factor);
    EXPECT_EQ(view->viewSize(), 10.0);
    EXPECT_EQ(centreAfterPaint(*view), kRed);

    view->resize(-7, -3, 10, 0, 0, 0, 0); // a negative window is an empty one
    EXPECT_EQ(view->viewportWidth(), 0);
    EXPECT_EQ(view->viewportHeight(), 0);
    view->resize(100, 100, 10, 0, 0, 0, 0);

    // Zooming without end stops at the view size limits, and a fit comes back from either.
    for (const bool zoomIn : {true, false}) {
        for (int i = 0; i < 3000; ++i) view->zoomWheel(50, 50, zoomIn);
        EXPECT_GT(view->viewSize(), 0.0);
        EXPECT_TRUE(std::isfinite(view->viewSize()));
        view->zoomAll();
        EXPECT_EQ(centreAfterPaint(*view), kRed) << zoomIn;
    }

    // Degenerate but finite values are taken (normalize repairs them), and a fit repairs them.
    camera->setScale({0, 0, 0});
    camera->setRotation(oxGeo::quaternion(0, 0, 0, 0));
    view->zoomAll();
    EXPECT_EQ(centreAfterPaint(*view), kRed);

    // Pointer positions at the ends of the int range: no overflow, nothing non-finite.
    view->rotateCamera(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
    view->rotateCamera(INT_MAX, INT_MAX, INT_MIN, INT_MIN, point3d(1e15, -1e15, 0));
    view->moveCamera(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
    view->zoom(INT_MIN, INT_MIN, INT_MAX, INT_MAX);
    view->zoom(5, 5, 5, 5);
    EXPECT_TRUE(cameraIsFinite(*camera));
    camera->setRotation(oxGeo::quaternion());
    view->zoomAll();
    EXPECT_EQ(centreAfterPaint(*view), kRed);
}

TEST_F(badInputTest, unusableVerticesAndPlacementsStayOutOfBoxesAndFits) {
    auto mesh = std::make_shared<oxGeo::mesh3d>();
    const auto a = mesh->addVertex({-1, -1, 0}), b = mesh->addVertex({1, -1, 0});
    const auto c = mesh->addVertex({1, 1, 0}), d = mesh->addVertex({-1, 1, 0});
    mesh->addTriangle(a, b, c);
    mesh->addTriangle(a, c, d);
    mesh->addTriangle(a, b, mesh->addVertex({kInf, 0, 0}));
    mesh->addTriangle(a, b, mesh->addVertex({0, kNaN, 0}));
    mesh->addTriangle(a, b, mesh->addVertex({0, 0, 1e308}));
    mesh->addTriangle(a, b, mesh->addVertex({-2 * oxGeo::kMaxCoordinate, 0, 0}));
    auto entity = oxGraphics::meshEntity::create(mesh);
    const oxGeo::boundBox3d square(point3d(-1, -1, 0), point3d(1, 1, 0));
    EXPECT_TRUE(entity->boundingBox().isEqualTo(square));

    oxGeo::matrix3d broken;
    broken(0, 3) = kNaN;
    oxlog::logCapture capture;
    entity->setTransformation(broken);
    EXPECT_TRUE(entity->boundingBox().isEqualTo(square));
    EXPECT_EQ(capture.messages("oxGraphics::entity::setTransformation").size(), 1u);

    // A placement that sends the vertices beyond the usable range leaves them out as well.
    oxGeo::matrix3d huge;
    huge.setToScale(1e300);
    entity->setTransformation(huge);
    EXPECT_FALSE(entity->boundingBox().isValid());
    entity->setTransformation(oxGeo::matrix3d());

    auto view = blackScene();
    view->resize(100, 100, 1e6, 0, 0, 0, 0); // far out: only the fit can show the mesh
    entity->setColor({255, 0, 0});
    view->add(oxGraphics::boundedDrawable::create(entity));
    view->zoomAll();
    EXPECT_NEAR(view->viewSize(), 2.0 / 0.95, 0.01);
    EXPECT_EQ(centreAfterPaint(*view), kRed);
}

TEST_F(badInputTest, readBackGivesExactlyTheViewportWhateverSizeTheTargetsHave) {
    auto view = blackScene();
    view->add(ox::refPtr<oxGraphics::iDrawable>(new testSquare({0, 0, 0}, 2, {255, 0, 0})));
    oxtest::paint(*view);
    std::unique_ptr<char[]> expected(view->writeToBuffer());
    EXPECT_TRUE(view->targetsComplete());

    // Larger targets: the viewport's corner of them, no byte beyond the buffer (the sanitizers
    // watch the copy).
    view->initFBOWithMultiSampling(400, 300);
    oxtest::paint(*view);
    std::unique_ptr<char[]> fromLarger(view->writeToBuffer());
    EXPECT_EQ(std::memcmp(expected.get(), fromLarger.get(), 100 * 100 * 4), 0);

    // Smaller targets: what they hold (the square covers pixels 40 to 59), nothing beyond them.
    view->initFBOWithMultiSampling(60, 55);
    oxtest::paint(*view);
    std::unique_ptr<char[]> fromSmaller(view->writeToBuffer());
    EXPECT_EQ(oxtest::pixelOf(fromSmaller.get(), 100, 50, 50), kRed);
    EXPECT_EQ(oxtest::pixelOf(fromSmaller.get(), 100, 20, 20), (oxtest::rgba8{0, 0, 0, 255}));
    EXPECT_EQ(oxtest::pixelOf(fromSmaller.get(), 100, 50, 58), (oxtest::rgba8{0, 0, 0, 0}));
    EXPECT_EQ(oxtest::pixelOf(fromSmaller.get(), 100, 80, 20), (oxtest::rgba8{0, 0, 0, 0}));

    // Targets the driver cannot build are reported, not only logged.
    const GLint largest = oxtest::readGlInteger(GL_MAX_RENDERBUFFER_SIZE);
    expectGlError(GL_INVALID_VALUE);
    view->initFBOWithMultiSampling(largest + 1, 8);
    EXPECT_FALSE(view->targetsComplete());
    view->refreshFBOWithMultiSampling();
    EXPECT_TRUE(view->targetsComplete());
    EXPECT_EQ(view->actualMultisamples(), 4);
    view->refreshFBOWithMultiSampling(0, 100); // a zero side builds nothing
    EXPECT_FALSE(view->targetsComplete());

    // A window scene without samples draws straight into its back buffer: always ready.
    auto window = oxtest::makeScene(16, 16, 0, /*presentToWindow*/ true);
    EXPECT_TRUE(window->targetsComplete());
}

} // namespace
