// The transparent pass: order independence with shaders at every sample count, the sorted
// fallback without them, lazily made targets, and a reference frame of transparent faces, lines
// and points over opaque geometry.
#include "sceneTestSupport.h"

#include "oxglcontext.h"
#include "oxgltexturemanager.h"
#include "scene/oxglscene.h"
#include "oxglshader.h"

#include <GL/glew.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace oxGraphics;
using oxGeo::point3d;

constexpr int kSize = 64;

oxGeo::mesh3d square(const point3d& centre, double side) {
    oxGeo::mesh3d mesh;
    const double h = side / 2;
    mesh.addQuad(mesh.addVertex({centre.x() - h, centre.y() - h, centre.z()}),
                 mesh.addVertex({centre.x() + h, centre.y() - h, centre.z()}),
                 mesh.addVertex({centre.x() + h, centre.y() + h, centre.z()}),
                 mesh.addVertex({centre.x() - h, centre.y() + h, centre.z()}));
    return mesh;
}

// Transparent squares, lines and points that one drawable emits in the order it is given, so a
// test decides the order the transparent pass sees them in.
class transparentSketch : public iDrawable, public ox::refObj {
public:
    struct part_t {
        oxGeo::mesh3d mesh;
        std::vector<point3d> line;    // a polyline when not empty
        std::vector<point3d> points;  // points when not empty
        ox::rgbColor color;
        float transparency;
        int mode = 0;  // 1: wire frame
    };
    explicit transparentSketch(std::vector<part_t> parts) : mParts(std::move(parts)) {}
    bool draw(iDrawer* drawer, eRendermode, shaderProgram*) override {
        for (const part_t& part : mParts) {
            drawer->setColor(part.color, part.transparency);
            if (!part.line.empty()) {
                drawer->setLineWidth(3);
                drawer->drawPolyline(part.line);
            } else if (!part.points.empty()) {
                drawer->setPointSize(7);
                drawer->drawPoints(part.points);
            } else {
                drawer->drawMesh(part.mesh, part.mode);
            }
        }
        return true;
    }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}

private:
    std::vector<part_t> mParts;
};

ox::refPtr<openGL::glScene> rendererOf(const ox::refPtr<scene>& view) {
    return ox::dynamicRefCast<openGL::glScene>(view->implementation());
}

// An opaque blue floor, with two overlapping transparent squares above it drawn in the order given.
ox::refPtr<scene> overlapScene(int samples, bool redFirst) {
    auto view = oxtest::makeScene(kSize, kSize, samples);
    view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 0}, 8, {0, 0, 255})));
    transparentSketch::part_t red{square({-1, 0, 1}, 4), {}, {}, {255, 0, 0}, 0.5f};
    transparentSketch::part_t green{square({1, 0, 2}, 4), {}, {}, {0, 255, 0}, 0.6f};
    std::vector<transparentSketch::part_t> parts = redFirst ? std::vector{red, green} : std::vector{green, red};
    view->add(ox::refPtr<iDrawable>(new transparentSketch(std::move(parts))));
    return view;
}

using transparencyTest = oxtest::shaderSwitchTest;

TEST_F(transparencyTest, blendingDoesNotDependOnDrawingOrderAtAnySampleCount) {
    for (const int samples : {0, 1, 4, 8}) {
        auto first = overlapScene(samples, true);
        auto second = overlapScene(samples, false);
        // Nothing transparent has been drawn yet: the targets are only described.
        EXPECT_FALSE(rendererOf(first)->transparencyTargets().isAllocated());
        const auto a = oxtest::frameImage(*first);
        const auto b = oxtest::frameImage(*second);
        EXPECT_TRUE(rendererOf(first)->transparencyPass().lastPassWasOrderIndependent()) << samples;
        EXPECT_TRUE(rendererOf(first)->transparencyTargets().isAllocated());
        EXPECT_EQ(rendererOf(first)->transparencyTargets().accumDesc().numSamples,
                  std::max(1, rendererOf(first)->actualMultisamples()));
        const auto difference = oxtest::compareImages(a, b);
        EXPECT_LE(difference.maxDelta, 2) << samples << " samples";

        // The overlap shows all three colours; each square alone over the floor shows its own.
        const std::uint8_t* overlap = a.at(kSize / 2, kSize / 2);
        EXPECT_GT(overlap[0], 40) << samples;
        EXPECT_GT(overlap[1], 40) << samples;
        EXPECT_GT(overlap[2], 20) << samples;
        const std::uint8_t* redOnly = a.at(kSize / 2 - 12, kSize / 2);
        EXPECT_GT(redOnly[0], 80);
        EXPECT_LT(redOnly[1], 10);
    }

    // Targets beyond what the driver makes are not attempted: no GL error, and no targets.
    openGL::glTextureManager manager;
    openGL::glTransparencyTargets tooLarge(manager);
    tooLarge.bringTo(oxtest::readGlInteger(GL_MAX_TEXTURE_SIZE) + 1, 8, 4);
    EXPECT_FALSE(tooLarge.allocate());
    tooLarge.bringTo(8, 8, 1000);
    EXPECT_FALSE(tooLarge.allocate());

    // The debugging view of the revealage: white where nothing transparent lies, darker where two
    // layers do than where one does.
    auto view = overlapScene(0, true);
    rendererOf(view)->transparencyPass().setDebugView(openGL::eTransparencyDebugView::revealage);
    const auto revealage = oxtest::frameImage(*view);
    EXPECT_EQ(revealage.at(2, 2)[0], 255);
    EXPECT_LT(revealage.at(kSize / 2, kSize / 2)[0], revealage.at(kSize / 2 - 12, kSize / 2)[0]);
    EXPECT_LT(revealage.at(kSize / 2 - 12, kSize / 2)[0], 255);
}

TEST_F(transparencyTest, oneLayerBlendsAsFixedFunctionDoesAndTheFallbackSortsBackToFront) {
    // One transparent layer: the weighted average is that layer, blended like fixed function.
    // Transparencies beyond 0..1 give alphas a fixed-point frame buffer clamps.
    auto oneLayer = [](bool shaders, float transparency) {
        openGL::glShaderProgram::enableGlShadersGlobally(shaders);
        auto view = oxtest::makeScene(kSize, kSize, 0);
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 0}, 8, {0, 0, 255})));
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 1}, 4, {255, 200, 0}, transparency)));
        return oxtest::frameImage(*view);
    };
    for (const float transparency : {0.3f, -0.5f, 1.5f})
        EXPECT_LE(oxtest::compareImages(oneLayer(false, transparency), oneLayer(true, transparency)).maxDelta, 3)
            << transparency;

    // Without shaders two boxes are blended far one first, whatever order the scene holds them in.
    openGL::glShaderProgram::enableGlShadersGlobally(false);
    for (const bool redNear : {true, false}) {
        auto view = oxtest::makeScene(kSize, kSize, 0);
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 0}, 8, {0, 0, 255})));
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({-1, 0, redNear ? 2.0 : 1.0}, 4, {255, 0, 0}, 0.5f)));
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({1, 0, redNear ? 1.0 : 2.0}, 4, {0, 255, 0}, 0.5f)));
        const auto image = oxtest::frameImage(*view);
        EXPECT_FALSE(rendererOf(view)->transparencyPass().lastPassWasOrderIndependent());
        // The near colour lands last and keeps half its strength; the far one a quarter.
        const std::uint8_t* overlap = image.at(kSize / 2, kSize / 2);
        const int nearChannel = redNear ? 0 : 1, farChannel = redNear ? 1 : 0;
        EXPECT_GT(overlap[nearChannel], overlap[farChannel] + 40) << "red near " << redNear;
    }
}

TEST_F(transparencyTest, aSceneInAContextThatSharesNothingStillDrawsWithTheShaderPath) {
    const auto frameIn = [](const ox::refPtr<iGlContext>& context) {
        auto view = scene::create(context, false, false);
        view->setMultisamples(4);
        view->initGfxApiState();
        view->resize(kSize, kSize, 10.0, 0, 0, 0, 0);
        view->refreshFBOWithMultiSampling();
        view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 0}, 4, {255, 0, 0}, 0.5f)));
        const auto image = oxtest::frameImage(*view);
        EXPECT_TRUE(rendererOf(view)->transparencyPass().lastPassWasOrderIndependent());
        return image;
    };
    const auto inShared = frameIn(oxtest::sharedGlContext());
    auto own = openGL::createHeadlessContext();
    ASSERT_TRUE(own);
    const auto inOwn = frameIn(own);
    EXPECT_LE(oxtest::compareImages(inShared, inOwn).maxDelta, 1);
    own->destroy();
    oxtest::sharedGlContext()->makeCurrent();
}

TEST_F(transparencyTest, transparentFacesLinesAndPointsOverOpaqueGeometryMatchTheirReference) {
    auto view = oxtest::makeScene(kSize * 2, kSize * 2, 4);
    view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({0, 0, 0}, 6, {70, 130, 200})));
    view->add(ox::refPtr<iDrawable>(new transparentSketch({
        {square({1.5, 1.5, 1}, 5), {}, {}, {255, 140, 0}, 0.5f},
        {{}, {{-4, -3, 2}, {4, 3, 2}, {4, -3, 2}}, {}, {255, 255, 255}, 0.4f},
        {{}, {}, {{-3, 3, 3}, {0, 0, 3}, {3, -3, 3}, {2, 2, 3}}, {0, 255, 0}, 0.3f},
        // Drawn last, a wire frame leaves its polygon mode behind; the composite still fills.
        {square({-2, -2, 2}, 3), {}, {}, {255, 0, 255}, 0.5f, 1},
    })));
    const auto image = oxtest::frameImage(*view);
    EXPECT_TRUE(rendererOf(view)->transparencyPass().lastPassWasOrderIndependent());
    EXPECT_TRUE(oxtest::matchesReferenceImage(image, "scene/transparency_4samples", 24, 0.5));
}

} // namespace
