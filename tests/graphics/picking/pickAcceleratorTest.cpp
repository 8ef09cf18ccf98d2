// The accelerated rectangle selection against OpenGL selection mode on generated scenes.
#include "../scene/sceneTestSupport.h"

#include "entities/entitydrawscheme.h"

#include "oxcsentity.h"
#include "oxmeshentity.h"
#include "oxpointentity.h"
#include "oxpolylineentity.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <typeinfo>

namespace {

using oxGeo::point3d;
using oxGeo::vector3d;

// Accelerated depths may differ from selection mode's by this much (2^-16 of the depth range; the
// reasoning is in picking/pickselection.h).
constexpr std::int64_t kDepthTolerance = 65536;

struct generator {
    std::mt19937 random;
    double real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(random); }
    int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); }
    bool chance(double p) { return real(0.0, 1.0) < p; }
    point3d point(double reach) { return {real(-reach, reach), real(-reach, reach), real(-reach, reach)}; }

    oxGeo::matrix3d placement() {
        oxGeo::matrix3d m;
        m.setCoordSystem(point(2.0), vector3d(real(0.5, 1.5), real(-0.5, 0.5), real(-0.5, 0.5)),
                         vector3d(real(-0.5, 0.5), real(0.5, 1.5), real(-0.5, 0.5)),
                         vector3d(real(-0.5, 0.5), real(-0.5, 0.5), real(0.5, 1.5)));
        return m;
    }
    /// A bumpy grid, sometimes with quads and degenerate faces.
    oxGeo::mesh3d surface() {
        oxGeo::mesh3d mesh;
        const int nx = integer(1, 12), ny = integer(1, 12);
        const point3d origin = point(4.0);
        const double step = real(0.05, 0.8), bump = real(0.0, 1.0);
        for (int j = 0; j <= ny; ++j)
            for (int i = 0; i <= nx; ++i)
                mesh.addVertex({origin.x() + i * step, origin.y() + j * step, origin.z() + real(-bump, bump)});
        const bool quads = chance(0.3);
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i) {
                const auto a = static_cast<std::uint32_t>(j * (nx + 1) + i), b = a + 1,
                           c = a + static_cast<std::uint32_t>(nx + 1) + 1, d = c - 1;
                if (quads) {
                    mesh.addQuad(a, b, c, d);
                } else {
                    mesh.addTriangle(a, b, c);
                    mesh.addTriangle(a, c, chance(0.05) ? a : d); // now and then a degenerate face
                }
            }
        return mesh;
    }
    std::vector<point3d> points(int count, double reach) {
        std::vector<point3d> out;
        for (int i = 0; i < count; ++i) out.push_back(point(reach));
        return out;
    }
};

// A host drawable that uses most of the drawer: names around and inside its recording, matrices
// inside the recording, wire-frame or filled meshes (plain, gradient, coloured by patch or patch
// by patch), lines, points, now and then a quadric (which selection mode answers) and a name left
// pushed.
class mixedDrawable : public oxGraphics::iDrawable, public ox::refObj {
public:
    explicit mixedDrawable(generator& g)
        : mMesh(g.surface()), mLine(g.points(g.integer(0, 6), 4.0)), mPoints(g.points(g.integer(0, 20), 4.5)),
          mInner(g.placement()), mMode(g.chance(0.4) ? 1 : 0), mMeshOperation(g.integer(0, 3)),
          mRecorded(g.chance(0.7)), mQuadric(g.chance(0.15)), mLeaveName(g.chance(0.2)),
          mNames{static_cast<unsigned>(g.integer(0, 1000)), static_cast<unsigned>(g.integer(0, 1000))} {}

    bool draw(oxGraphics::iDrawer* drawer, oxGraphics::eRendermode, oxGraphics::shaderProgram*) override {
        drawer->pushName(mNames[0]);
        drawer->setColor({200, 100, 50}, 0.0f);
        const auto emit = [&] {
            drawer->pushMatrix();
            drawer->multMatrix(mInner);
            drawer->pushName(mNames[1]);
            switch (mMeshOperation) {
            case 0: drawer->drawMesh(mMesh, mMode); break;
            case 1: drawer->drawMeshGradient(mMesh, 0.0f, {0, 0, 0}, {255, 255, 255}, {0, 0, 0}, {1, 1, 1}); break;
            case 2: drawer->drawMeshPatchColors(mMesh, {{255, 0, 0}}, {0, 255, 0}, {0, 0, 255}, mMode); break;
            default:
                for (const auto& patch : mMesh.patches()) drawer->drawPatch(patch, mMode);
                if (!mPoints.empty()) drawer->drawPoint(mPoints[0]);
                break;
            }
            drawer->popName();
            drawer->drawPolyline(mLine);
            drawer->popMatrix();
            drawer->drawPoints(mPoints);
            if (mLine.size() >= 2) drawer->drawStippledLine(mLine[0], mLine[1], 2, false);
        };
        if (mRecorded) {
            oxGraphics::entityScheme::ensureRecording(*drawer, mRecording, emit);
            drawer->drawRecording(mRecording);
        } else {
            emit();
        }
        if (mQuadric) drawer->drawSphere({0, 0, 0}, 1.0f, 8, 8, 0);
        if (!mLeaveName) drawer->popName();
        return true;
    }
    void invalidate() override { mRecording.reset(); }
    void setTransformation(const oxGeo::matrix3d&) override {}

private:
    oxGeo::mesh3d mMesh;
    std::vector<point3d> mLine, mPoints;
    oxGeo::matrix3d mInner;
    int mMode, mMeshOperation;
    bool mRecorded, mQuadric, mLeaveName;
    unsigned mNames[2];
    ox::refPtr<oxGraphics::iRecorded> mRecording;
};

void addGeneratedDrawables(generator& g, oxGraphics::scene& view) {
    const int count = g.integer(1, 6);
    for (int i = 0; i < count; ++i) {
        ox::refPtr<oxGraphics::iDrawable> drawable;
        switch (g.integer(0, 4)) {
        case 0: {
            auto mesh = oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(
                std::make_shared<oxGeo::mesh3d>(g.surface())));
            if (g.chance(0.5)) mesh->setTransformation(g.placement());
            drawable = mesh;
            break;
        }
        case 1: {
            auto points = oxGraphics::pointEntity::create(g.points(g.integer(1, 30), 4.5));
            points->setPointSize(g.integer(1, 9));
            drawable = points;
            break;
        }
        case 2: {
            auto line = std::make_shared<oxGeo::polyline3d>();
            for (const auto& p : g.points(g.integer(2, 8), 4.5)) line->addPoint(p);
            auto polyline = oxGraphics::polylineEntity::create(ox::const_sharedPtr<oxGeo::polyline3d>(line));
            polyline->setLineWidth(g.integer(1, 6));
            if (g.chance(0.5)) polyline->setTransformation(g.placement());
            drawable = polyline;
            break;
        }
        case 3:
            if (g.chance(0.3)) {
                drawable = oxGraphics::csEntity::create(g.placement()); // quadrics: selection mode answers
                break;
            }
            [[fallthrough]];
        default: drawable = ox::refPtr<oxGraphics::iDrawable>(new mixedDrawable(g)); break;
        }
        view.add(drawable);
    }
}

std::string describe(const std::vector<oxGraphics::pickHit_t>& hits);
std::string describe(const oxGraphics::pickHit_t& hit) {
    std::string text = typeid(*hit.drawable.get()).name();
    for (const auto name : hit.names) text += " " + std::to_string(name);
    return text + " [" + std::to_string(hit.minDepth) + ", " + std::to_string(hit.maxDepth) + "]";
}

std::string describe(const std::vector<oxGraphics::pickHit_t>& hits) {
    std::string text;
    for (const auto& hit : hits) text += describe(hit) + "; ";
    return text;
}

class pickAcceleratorTest : public oxtest::glTest {};

// The property: on generated scenes and random rectangles, the accelerated selection reports the
// same drawables with the same names in the same order as selection mode, with depths within
// kDepthTolerance, and pickSelect (with preferred types) chooses the same drawable.
TEST_F(pickAcceleratorTest, answersAsSelectionModeOnGeneratedScenes) {
    constexpr int kWidth = 160, kHeight = 120;
    std::int64_t worstDepth = 0;
    std::size_t hitsCompared = 0;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        generator g{std::mt19937(seed)};
        auto view = oxtest::makeScene(kWidth, kHeight, 0);
        addGeneratedDrawables(g, *view);
        if (g.chance(0.3)) view->setPreferredPickTypes({typeid(oxGraphics::pointEntity).name()});
        // Recordings made by a frame, or by the first pick itself.
        if (g.chance(0.5)) oxtest::paint(*view);
        for (int pick = 0; pick < 40; ++pick) {
            unsigned x1 = static_cast<unsigned>(g.integer(0, kWidth - 1)), y1 = static_cast<unsigned>(g.integer(0, kHeight - 1));
            unsigned x2 = x1 + static_cast<unsigned>(g.integer(0, 40)), y2 = y1 + static_cast<unsigned>(g.integer(0, 40));
            if (pick == 0) x1 = y1 = 0, x2 = kWidth, y2 = kHeight;
            view->setPickAccelerated(true);
            const auto fast = view->pickSelectRect(x1, y1, x2, y2);
            ox::refPtr<ox::iRefObj> fastChoice;
            view->pickSelect((x1 + x2) / 2, (y1 + y2) / 2, 5, fastChoice);
            view->setPickAccelerated(false);
            const auto reference = view->pickSelectRect(x1, y1, x2, y2);
            ox::refPtr<ox::iRefObj> referenceChoice;
            view->pickSelect((x1 + x2) / 2, (y1 + y2) / 2, 5, referenceChoice);

            SCOPED_TRACE("rectangle " + std::to_string(x1) + "," + std::to_string(y1) + " - " + std::to_string(x2) +
                         "," + std::to_string(y2));
            ASSERT_EQ(fast.size(), reference.size()) << describe(fast) << " / " << describe(reference);
            for (std::size_t i = 0; i < fast.size(); ++i) {
                ASSERT_EQ(fast[i].drawable, reference[i].drawable) << describe(fast[i]) << " / " << describe(reference[i]);
                ASSERT_EQ(fast[i].names, reference[i].names) << describe(fast[i]) << " / " << describe(reference[i]);
                const std::int64_t dMin = std::llabs(std::int64_t{fast[i].minDepth} - reference[i].minDepth);
                const std::int64_t dMax = std::llabs(std::int64_t{fast[i].maxDepth} - reference[i].maxDepth);
                worstDepth = std::max({worstDepth, dMin, dMax});
                ASSERT_LE(std::max(dMin, dMax), kDepthTolerance) << describe(fast[i]) << " / " << describe(reference[i]);
                ++hitsCompared;
            }
            EXPECT_EQ(fastChoice, referenceChoice);
        }
    }
    EXPECT_GT(hitsCompared, 1000u); // the generated scenes are hit often enough to mean something
    std::printf("compared %zu hits; largest depth difference %lld (tolerance %lld)\n", hitsCompared,
                static_cast<long long>(worstDepth), static_cast<long long>(kDepthTolerance));
}

// A drawable that emits one hostile thing through the drawer.
class emitting : public oxGraphics::iDrawable, public ox::refObj {
public:
    explicit emitting(std::function<void(oxGraphics::iDrawer&)> emit) : mEmit(std::move(emit)) {}
    bool draw(oxGraphics::iDrawer* drawer, oxGraphics::eRendermode, oxGraphics::shaderProgram*) override {
        mEmit(*drawer);
        return true;
    }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}

private:
    std::function<void(oxGraphics::iDrawer&)> mEmit;
};

// Non-finite matrices and points, empty and huge geometry, unbalanced matrices and names: the
// accelerated selection neither crashes nor hangs and answers as selection mode does (mostly by
// leaving such drawables to it).
TEST_F(pickAcceleratorTest, hostileDrawablesAnswerAsSelectionMode) {
    expectGlError(GL_STACK_UNDERFLOW); // selection mode drawing the unbalanced drawables
    expectGlError(GL_STACK_OVERFLOW);
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    oxGeo::matrix3d nanMatrix;
    nanMatrix(0, 0) = nan;
    oxGeo::mesh3d nanMesh, hugeMesh, emptyMesh;
    nanMesh.addVertex({nan, 0, 0});
    nanMesh.addVertex({1, 0, 0});
    nanMesh.addVertex({0, 1, 0});
    nanMesh.addTriangle(0, 1, 2);
    hugeMesh.addVertex({-1e30, -1e30, 0});
    hugeMesh.addVertex({1e30, -1e30, 0});
    hugeMesh.addVertex({0, 1e30, 0});
    hugeMesh.addTriangle(0, 1, 2);
    const std::function<void(oxGraphics::iDrawer&)> cases[] = {
        [&](oxGraphics::iDrawer& d) { d.multMatrix(nanMatrix); d.drawMesh(hugeMesh, 0); },
        [&](oxGraphics::iDrawer& d) { d.drawMesh(nanMesh, 0); d.drawMesh(nanMesh, 1); },
        [&](oxGraphics::iDrawer& d) { d.drawMesh(hugeMesh, 0); d.drawMesh(emptyMesh, 1); },
        [&](oxGraphics::iDrawer& d) { d.drawPoints({{inf, 0, 0}, {0, 0, 0}}); d.drawPolyline({}); d.drawPolyline({{0, 0, 0}}); },
        [&](oxGraphics::iDrawer& d) { d.drawLine({-1e300, 0, 0}, {1e300, 0, 0}, false); },
        [&](oxGraphics::iDrawer& d) { d.popMatrix(); d.popMatrix(); d.drawPoint({0, 0, 0}); },
        [&](oxGraphics::iDrawer& d) {
            for (int i = 0; i < 40; ++i) d.pushMatrix();
            for (unsigned i = 0; i < 70; ++i) d.pushName(i);
            d.drawPoint({0, 0, 0});
            d.popName();
        },
    };
    for (std::size_t c = 0; c < std::size(cases); ++c) {
        SCOPED_TRACE("case " + std::to_string(c));
        auto view = oxtest::makeScene(100, 100, 0);
        view->add(ox::refPtr<oxGraphics::iDrawable>(new emitting(cases[c])));
        view->add(ox::refPtr<oxGraphics::iDrawable>(new oxtest::testSquare({0, 0, 0}, 2, {255, 0, 0})));
        for (const auto& [x1, y1, x2, y2] : {std::array<unsigned, 4>{45, 45, 55, 55}, {0, 0, 0, 0}, {0, 0, 4000000000u, 4000000000u}}) {
            view->setPickAccelerated(true);
            const auto fast = view->pickSelectRect(x1, y1, x2, y2);
            view->setPickAccelerated(false);
            const auto reference = view->pickSelectRect(x1, y1, x2, y2);
            ASSERT_EQ(fast.size(), reference.size()) << describe(fast) << " / " << describe(reference);
            for (std::size_t i = 0; i < fast.size(); ++i) {
                EXPECT_EQ(fast[i].drawable, reference[i].drawable);
                EXPECT_EQ(fast[i].names, reference[i].names);
                EXPECT_LE(std::llabs(std::int64_t{fast[i].minDepth} - reference[i].minDepth), kDepthTolerance);
            }
        }
    }

    // A host's clip plane changes what selection mode reports: such picks are left to it. This
    // plane clips everything away.
    auto view = oxtest::makeScene(100, 100, 0);
    view->add(ox::refPtr<oxGraphics::iDrawable>(new oxtest::testSquare({0, 0, 0}, 2, {255, 0, 0})));
    const GLdouble nothing[4] = {0.0, 0.0, 0.0, -1.0};
    glClipPlane(GL_CLIP_PLANE0, nothing);
    glEnable(GL_CLIP_PLANE0);
    view->setPickAccelerated(true);
    EXPECT_TRUE(view->pickSelectRect(45, 45, 55, 55).empty());
    glDisable(GL_CLIP_PLANE0);
    EXPECT_EQ(view->pickSelectRect(45, 45, 55, 55).size(), 1u);
}

} // namespace

namespace {

// A square whose recording pushes two names and never pops them.
class unbalancedRecording : public oxGraphics::iDrawable, public ox::refObj {
public:
    bool draw(oxGraphics::iDrawer* drawer, oxGraphics::eRendermode, oxGraphics::shaderProgram*) override {
        if (!drawer->isRecordingValid(mRecording)) {
            drawer->beginRecording();
            drawer->pushName(7);
            drawer->pushName(8);
            drawer->drawMesh(mSquare, 0);
            mRecording = drawer->endRecording();
        }
        drawer->drawRecording(mRecording);
        return true;
    }
    void invalidate() override { mRecording = ox::refPtr<oxGraphics::iRecorded>(); }
    void setTransformation(const oxGeo::matrix3d&) override {}

private:
    oxGeo::mesh3d mSquare = [] {
        oxGeo::mesh3d m;
        m.addQuad(m.addVertex({-3, -1, 0}), m.addVertex({-2, -1, 0}), m.addVertex({-2, 1, 0}), m.addVertex({-3, 1, 0}));
        return m;
    }();
    ox::refPtr<oxGraphics::iRecorded> mRecording;
};

// Every drawable is picked under its own names, and in the scene's own viewport whatever another
// scene or the host left set.
TEST_F(pickAcceleratorTest, picksUseTheScenesOwnNamesAndViewport) {
    auto view = oxtest::makeScene(100, 100, 0);
    ox::refPtr<oxGraphics::iDrawable> pushing(new unbalancedRecording), plain(new oxtest::testSquare({2.5, 0, 0}, 1, {255, 0, 0}));
    view->add(pushing);
    view->add(plain);
    oxtest::paint(*view);
    for (const bool accelerated : {true, false}) {
        SCOPED_TRACE(accelerated ? "accelerated" : "selection mode");
        view->setPickAccelerated(accelerated);
        const auto hits = view->pickSelectRect(0, 0, 99, 99);
        ASSERT_EQ(hits.size(), 2u) << describe(hits);
        EXPECT_EQ(hits[0].drawable, pushing);
        EXPECT_EQ(hits[0].names, (std::vector<std::uint32_t>{7, 8}));
        EXPECT_EQ(hits[1].drawable, plain);
        EXPECT_TRUE(hits[1].names.empty());

        const oxGeo::point2d at = view->worldToWinCoordinates({2.5, 0, 0});
        const auto x = static_cast<unsigned>(at.x()), y = static_cast<unsigned>(at.y());
        glViewport(0, 0, 10, 7);  // as a smaller scene on the same context leaves it
        const auto square = view->pickSelectRect(x - 2, y - 2, x + 2, y + 2);
        ASSERT_EQ(square.size(), 1u) << describe(square);
        EXPECT_EQ(square[0].drawable, plain);
    }
    view->resize(0, 0, 10.0, 0, 0, 0, 0);
    EXPECT_TRUE(view->pickSelectRect(0, 0, 10, 10).empty()) << "a view without pixels has nothing to pick";
}

} // namespace
