// The library's entities against a software drawer: when they record, what they emit, where it
// lands, and their bounds.
#include "recordingDrawer.h"

#include "oxboundeddrawable.h"
#include "oxcsentity.h"
#include "oxmeshentity.h"
#include "oxpointentity.h"
#include "oxpolylineentity.h"

#include "assertRecorder.h"

#include "oxgeomeshfactory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

using namespace oxGraphics;
using oxGeo::boundBox3d;
using oxGeo::matrix3d;
using oxGeo::point3d;
using oxtest::recordingDrawer;

std::shared_ptr<oxGeo::mesh3d> boxMesh(double edge) {
    auto mesh = std::make_shared<oxGeo::mesh3d>();
    oxGeo::meshfactory::appendBoxMesh(edge, edge, edge, *mesh, true);
    return mesh;
}
ox::const_sharedPtr<oxGeo::polyline3d> twoPointLine() {
    return ox::const_sharedPtr<oxGeo::polyline3d>::make(std::vector<point3d>{{0, 0, 0}, {1, 2, 3}});
}
matrix3d translation(double x, double y, double z) { return matrix3d().setToTranslation({x, y, z}); }
bool draw(iDrawable& drawable, recordingDrawer& drawer) { return drawable.draw(&drawer, eRendermode::opaque, nullptr); }
boundBox3d boxOf(const std::vector<oxtest::drawnItem>& items) {
    boundBox3d box;
    for (const auto& item : items)
        for (const auto& p : item.worldPoints) box.grow(p);
    return box;
}

TEST(entityTest, meshRecordsOnceAndAgainOnlyWhenInvalid) {
    const auto shared = boxMesh(1);
    auto a = meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(shared)), b = meshEntity::create(shared);
    EXPECT_EQ(a->refCount(), 1u);
    a->invalidate();   // never drawn: harmless
    recordingDrawer drawer;
    EXPECT_TRUE(draw(*a, drawer));
    EXPECT_TRUE(draw(*a, drawer));
    EXPECT_EQ(drawer.count("beginRecording"), 1);
    EXPECT_EQ(drawer.count("drawMesh"), 1);
    EXPECT_EQ(drawer.count("drawRecording"), 2);
    EXPECT_EQ(drawer.mDrawn.at(1).color, ox::rgbColor(255, 255, 255));
    draw(*b, drawer);   // the same mesh in another entity is its own recording
    EXPECT_EQ(drawer.count("beginRecording"), 2);

    // The shared mesh changes behind the entity's back: the old geometry stays until invalidate.
    shared->transformBy(translation(10, 0, 0));
    drawer.clearLog();
    draw(*a, drawer);
    a->invalidate();
    draw(*a, drawer);
    EXPECT_EQ(drawer.count("beginRecording"), 1);
    EXPECT_TRUE(boxOf({drawer.mDrawn.at(0)}).isEqualTo({{-0.5, -0.5, -0.5}, {0.5, 0.5, 0.5}}));
    EXPECT_TRUE(boxOf({drawer.mDrawn.at(1)}).isEqualTo({{9.5, -0.5, -0.5}, {10.5, 0.5, 0.5}}));
    // A recording the drawer no longer accepts (its context was lost) is made anew.
    drawer.mMade.back()->mValid = false;
    draw(*a, drawer);
    EXPECT_EQ(drawer.count("beginRecording"), 2);
}

// For every entity: a matrix within 1e-12 of the identity removes the transformation, one just
// outside is kept, overwriting the first allocation in place.
template <class Entity> void checkIdentityRule(const ox::refPtr<Entity>& entity) {
    SCOPED_TRACE(typeid(Entity).name());
    recordingDrawer drawer;
    for (const double offset : {0.9e-12, 1.1e-12, -1.1e-12, 0.0}) {
        const bool kept = std::fabs(offset) > 1e-12;
        entity->setTransformation(translation(1, 2, 3));
        const matrix3d* held = entity->transformation();
        matrix3d nearIdentity;
        nearIdentity(0, 1) = offset;
        nearIdentity(2, 2) = 1.0 + offset;
        entity->setTransformation(nearIdentity);
        EXPECT_EQ(entity->transformation(), kept ? held : nullptr) << offset;
        if (kept && entity->transformation() != nullptr) {
            EXPECT_EQ(*entity->transformation(), nearIdentity);
        }
        drawer.clearLog();
        draw(*entity, drawer);
        EXPECT_EQ(drawer.count("multMatrix"), kept ? 1 : 0) << offset;
    }
}

TEST(entityTest, nearIdentityTransformationIsDroppedForEveryEntity) {
    checkIdentityRule(meshEntity::create(boxMesh(1)));
    checkIdentityRule(pointEntity::create(point3d(1, 1, 1)));
    checkIdentityRule(polylineEntity::create(twoPointLine()));
    auto triad = csEntity::create(translation(5, 0, 0));
    recordingDrawer warmUp;   // the triad's cs product is recorded once, then only replayed
    draw(*triad, warmUp);
    checkIdentityRule(triad);
}

TEST(entityTest, emptySharedGeometryAssertsOnEveryDrawAndDrawsNothing) {
    oxtest::assertRecorder asserts;
    const ox::refPtr<iDrawable> entities[] = {meshEntity::create(nullptr), polylineEntity::create(nullptr)};
    for (const auto& entity : entities) {
        recordingDrawer drawer;
        EXPECT_FALSE(draw(*entity, drawer));
        EXPECT_FALSE(draw(*entity, drawer));
        EXPECT_EQ(drawer.count("beginRecording") + drawer.count("drawRecording"), 0);
    }
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>(4, L"m_p != nullptr"));
}

TEST(entityTest, pointsAndPolylinesDrawWhereGivenWithTheirSizes) {
    oxtest::assertRecorder asserts;
    const struct { ox::refPtr<pointEntity> entity; std::vector<point3d> expected; } cases[] = {
        {pointEntity::create(oxGeo::point2d(3, 4)), {{3, 4, 0}}},
        {pointEntity::create(std::vector<oxGeo::point2d>{{1, 2}, {-1, -2}}), {{1, 2, 0}, {-1, -2, 0}}},
        {pointEntity::create(std::vector<point3d>{}), {}},
    };
    for (const auto& c : cases) {
        recordingDrawer drawer;
        EXPECT_TRUE(draw(*c.entity, drawer));
        EXPECT_EQ(drawer.mPointSize, 2.0f);
        EXPECT_EQ(drawer.count("drawPoints"), c.expected.empty() ? 0 : 1);
        EXPECT_EQ(boxOf(drawer.mDrawn).isValid() ? drawer.mDrawn.at(0).worldPoints : std::vector<point3d>{}, c.expected);
    }
    auto line = polylineEntity::create(twoPointLine());
    recordingDrawer drawer;
    draw(*line, drawer);
    EXPECT_EQ(drawer.mLineWidth, 1.0f);
    line->setLineWidth(3);
    line->setColor({0, 255, 0});
    draw(*line, drawer);
    EXPECT_EQ(drawer.mLineWidth, 3.0f);
    EXPECT_EQ(drawer.count("beginRecording"), 1);   // neither width nor colour re-records
    EXPECT_EQ(drawer.mDrawn.at(1).color, ox::rgbColor(0, 255, 0));
    EXPECT_EQ(drawer.mDrawn.at(1).worldPoints, twoPointLine()->points());
    EXPECT_EQ(asserts.count(), 0u);
}

TEST(entityTest, triadReplaysFourRecordingsYellowRedGreenBlueAlongTheirAxes) {
    auto triad = csEntity::create(matrix3d());
    recordingDrawer drawer;
    draw(*triad, drawer);
    EXPECT_TRUE(draw(*triad, drawer));
    EXPECT_EQ(drawer.count("beginRecording"), 4);
    EXPECT_EQ(drawer.count("drawRecording"), 8);
    EXPECT_EQ(drawer.mStack, std::vector<matrix3d>{matrix3d()}) << "the cs product must not outlive the draw";
    const ox::rgbColor colors[] = {{255, 255, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    const boundBox3d parts[] = {{{-0.05, -0.05, -0.05}, {0.05, 0.05, 0.05}}, {{0.05, -0.05, -0.05}, {1.2, 0.05, 0.05}},
                                {{-0.05, 0.05, -0.05}, {0.05, 1.2, 0.05}}, {{-0.05, -0.05, 0.05}, {0.05, 0.05, 1.2}}};
    ASSERT_EQ(drawer.mDrawn.size(), 8u);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(drawer.mDrawn[i].color, colors[i % 4]) << i;
        EXPECT_TRUE(boxOf({drawer.mDrawn[i]}).isEqualTo(parts[i % 4], 1e-9)) << i;
    }
}

TEST(entityTest, triadSizeIsStoredAbsoluteAndRebuildsOnlyOnAChange) {
    auto triad = csEntity::create(matrix3d());
    recordingDrawer drawer;
    draw(*triad, drawer);
    const struct { double set, stored; bool rebuilds; } steps[] = {{-2.0, 2.0, true}, {2.0, 2.0, false}, {-2.0, 2.0, false},
        {2.0 + 0.5e-12, 2.0 + 0.5e-12, false}, {2.0 + 2e-12, 2.0 + 2e-12, true}, {0.0, 0.0, true}};
    for (const auto& step : steps) {
        triad->setSize(step.set);
        EXPECT_EQ(triad->size(), step.stored);
        drawer.clearLog();
        EXPECT_TRUE(draw(*triad, drawer));
        EXPECT_EQ(drawer.count("beginRecording"), step.rebuilds ? 4 : 0) << step.set;
    }
    // Size 0: a point-sized cube and empty arrows.
    EXPECT_TRUE(boxOf(drawer.mDrawn).isEqualTo({point3d(), point3d()}));
    EXPECT_TRUE(triad->boundingBox().isEqualTo({point3d(), point3d()}));
}

TEST(entityTest, boundingBoxesFollowTheTransformationAndMatchWhatIsDrawn) {
    const double r = std::sqrt(2.0);
    const matrix3d turnAndShift = translation(5, 0, 0) * matrix3d().setToRotation(ox::angle::fromDegree(45), {0, 0, 1});
    auto mesh = meshEntity::create(boxMesh(2));
    auto points = pointEntity::create(std::vector<point3d>{{1, 1, 0}, {-1, -1, 2}});
    auto line = polylineEntity::create(twoPointLine());
    auto triad = csEntity::create(translation(10, 0, 0));
    triad->setSize(2);
    // The turn maps (x, y) to ((x − y)/√2, (x + y)/√2). For the triad at x = 10, x − y runs from the
    // Y tip (10, 2.4) to the X tip (12.4, 0), x + y from the cube corner (9.9, −0.1) to either tip.
    const struct { iDrawable* entity; std::function<boundBox3d()> bounds; boundBox3d expected; } cases[] = {
        {mesh.get(), [&] { return mesh->boundingBox(); }, {{5 - r, -r, -1}, {5 + r, r, 1}}},
        {points.get(), [&] { return points->boundingBox(); }, {{5, -r, 0}, {5, r, 2}}},
        {line.get(), [&] { return line->boundingBox(); }, {{5 - r / 2, 0, 0}, {5, 3 * r / 2, 3}}},
        {triad.get(), [&] { return triad->boundingBox(); }, {{5 + 7.6 / r, 9.8 / r, -0.1}, {5 + 12.4 / r, 12.4 / r, 2.4}}},
    };
    for (const auto& c : cases) {
        (void)c.bounds(); // an untransformed box, kept until the transformation changes
        c.entity->setTransformation(turnAndShift);
        recordingDrawer drawer;
        draw(*c.entity, drawer);
        EXPECT_TRUE(c.bounds().isEqualTo(c.expected, 1e-9)) << typeid(*c.entity).name();
        EXPECT_TRUE(c.bounds().isEqualTo(boxOf(drawer.mDrawn), 1e-9)) << typeid(*c.entity).name();
    }
    EXPECT_FALSE(meshEntity::create(nullptr)->boundingBox().isValid());

    // The box is kept until invalidate: the host calls it after changing shared geometry.
    auto shared = std::make_shared<oxGeo::mesh3d>();
    shared->addVertex({0, 0, 0});
    auto grown = meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(shared));
    EXPECT_TRUE(grown->boundingBox().isEqualTo({point3d(), point3d()}, 0.0));
    shared->addVertex({4, 5, 6});
    EXPECT_TRUE(grown->boundingBox().isEqualTo({point3d(), point3d()}, 0.0));
    grown->invalidate();
    EXPECT_TRUE(grown->boundingBox().isEqualTo({point3d(), point3d(4, 5, 6)}, 0.0));
}

TEST(entityTest, boundedDrawableForwardsAndProvidesBounds) {
    oxtest::assertRecorder asserts;
    auto mesh = meshEntity::create(boxMesh(2));
    const ox::refPtr<iDrawable> adapter = boundedDrawable::create(mesh);
    recordingDrawer drawer;
    EXPECT_TRUE(adapter->draw(&drawer, eRendermode::opaque, nullptr));
    adapter->setTransformation(translation(0, 0, 7));
    adapter->invalidate();
    adapter->draw(&drawer, eRendermode::opaque, nullptr);
    EXPECT_EQ(drawer.count("beginRecording"), 2);
    EXPECT_TRUE(boxOf({drawer.mDrawn.at(1)}).isEqualTo({{-1, -1, 6}, {1, 1, 8}}));
    EXPECT_TRUE(ox::dynamicRefCast<iBoundBoxProvider>(adapter)->worldBoundingBox().isEqualTo({{-1, -1, 6}, {1, 1, 8}}));

    // The library's entities themselves stay plain drawables.
    const ox::refPtr<iDrawable> plain[] = {mesh, pointEntity::create(point3d()), polylineEntity::create(twoPointLine()),
                                           csEntity::create(matrix3d())};
    for (const auto& entity : plain) EXPECT_FALSE(ox::dynamicRefCast<iBoundBoxProvider>(entity)) << typeid(*entity).name();

    const boundBox3d custom({1, 2, 3}, {4, 5, 6});
    EXPECT_TRUE(boundedDrawable::create(mesh, [&] { return custom; })->worldBoundingBox().isEqualTo(custom));
    EXPECT_FALSE(boundedDrawable::create(mesh, {})->worldBoundingBox().isValid());
    EXPECT_EQ(asserts.count(), 0u);
    EXPECT_FALSE(boundedDrawable::create(ox::refPtr<csEntity>()));
    EXPECT_EQ(asserts.conditions(), std::vector<std::wstring>{L"drawable"});
}

} // namespace
