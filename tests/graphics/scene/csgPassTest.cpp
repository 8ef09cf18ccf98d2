// The cut pass: a box stock with a pocket, a through hole and a hole drilled into its front face.
#include "sceneTestSupport.h"

#include "resources/oxglprogramlibrary.h"
#include "scene/glcsgpass.h"

#include "oxgeomeshfactory.h"
#include "oxgeopolylinefactory.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <set>
#include <string>
#include <vector>
#include <stdexcept>

namespace {

using namespace oxGraphics;
using oxGeo::point3d;

const ox::rgbColor kStock(150, 160, 175);
const ox::rgbColor kOutsideBlank(200, 100, 50);
const ox::rgbColor kBackground(20, 30, 40);

class csgPart : public iDrawable, public iBoundBoxProvider, public ox::refObj {
public:
    bool draw(iDrawer* drawer, eRendermode, shaderProgram*) override { return emit(drawer); }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d& m) override { mPlacement = m; }
    oxGeo::boundBox3d worldBoundingBox() const override { return mMesh.boundingBox(); }

    oxGeo::mesh3d mMesh;
    oxGeo::matrix3d mPlacement;
    ox::rgbColor mColor = kStock;
    bool mThrows = false;

protected:
    bool emit(iDrawer* drawer) {
        if (mThrows) throw std::runtime_error("broken part");
        drawer->setColor(mColor, 0.0f);
        drawer->multMatrix(mPlacement);
        drawer->drawMesh(mMesh, 0);
        return true;
    }
};

class stock : public csgPart, public iCsgSolid {
public:
    stock() { oxGeo::meshfactory::appendBoxMesh(6, 4, 2, mMesh, true); }
    bool drawCsgSolid(iDrawer* drawer) override { return emit(drawer); }
};

/// A cylinder along Z from z0 to z1; `capped` false leaves it open (not closed).
class cutter : public csgPart, public iCsgVolume {
public:
    cutter(double x, double y, double radius, double z0, double z1, bool capped = true) {
        oxGeo::polyline3d bottom, top;
        oxGeo::polylinefactory::generateCircularPolyline(radius, 0.002, {x, y, z0}, bottom);
        oxGeo::polylinefactory::generateCircularPolyline(radius, 0.002, {x, y, z1}, top);
        oxGeo::meshfactory::appendRuledMesh(bottom, top, mMesh, true, false);
        if (!capped) return;
        oxGeo::meshfactory::appendRuledMesh(point3d(x, y, z0), bottom, mMesh, true, false);
        oxGeo::meshfactory::appendRuledMesh(point3d(x, y, z1), top, mMesh, true, true);
    }
    bool drawCsgVolume(iDrawer* drawer) override { return emit(drawer); }
};

std::vector<ox::refPtr<iDrawable>> gAdded;  // every part added, in order

template <class part, class... args> ox::refPtr<part> add(scene& view, args&&... a) {
    ox::refPtr<part> p(new part(std::forward<args>(a)...));
    gAdded.emplace_back(p.get());
    view.add(gAdded.back());
    return p;
}

// The stock with its three cuts; the front hole lies along Y, turned into place by its placement.
ox::refPtr<scene> makeCutScene(int samples) {
    gAdded.clear();
    auto view = oxtest::makeScene(160, 120, samples);
    view->setColor(kBackground, kColorBackgroundTop | kColorBackgroundBottom);
    view->setColor(kOutsideBlank, kColorOutsideBlank);
    add<stock>(*view);
    add<cutter>(*view, -1.5, 0.0, 1.2, 0.5, 1.5);   // pocket, half deep
    add<cutter>(*view, 1.6, 0.0, 0.7, -1.5, 1.5);   // through hole
    auto front = add<cutter>(*view, 0.0, 0.2, 0.5, 1.0, 2.5);  // turned to enter the front face 1 deep
    front->mPlacement.setToRotation(ox::angle::fromDegree(90), {1, 0, 0});
    return view;
}

oxtest::rgba8 pixelAt(const oxtest::rgbaImage& image, const oxGeo::point2d& p) {
    const auto* c = image.at(static_cast<int>(std::lround(p.x())), static_cast<int>(std::lround(p.y())));
    return {c[0], c[1], c[2], c[3]};
}

// Each channel of `colour` times `share`, within one step of rounding either way.
void expectShareOf(const oxtest::rgba8& seen, const ox::rgbColor& colour, double share, const char* what) {
    const int expected[] = {colour.red(), colour.green(), colour.blue()};
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(seen[c], expected[c] * share, 1.5) << what << " channel " << c;
}

using csgPassTest = oxtest::shaderSwitchTest;

oxtest::rgbaImage cutFrame(void (*setView)(scene&), const std::string& reference = {}) {
    auto view = makeCutScene(4);
    setView(*view);
    view->zoomAll();
    const auto image = oxtest::frameImage(*view);
    if (!reference.empty()) {
        EXPECT_TRUE(oxtest::matchesReferenceImage(image, "scene/csg_stock_" + reference, 24, 0.5));
    }
    return image;
}

void topView(scene& v) { v.setTopView(false, {}, {}, {0, 1, 0}); }
void isoView(scene& v) { v.setFrontRightView(false, {}, {}); }
void frontView(scene& v) { v.setFrontView(false, {}, {}); }
// 60 degrees off the vertical: a face turned up has a cosine of 0.5 to the head light.
void obliqueView(scene& v) { v.setCustomViewDirection(0, std::sin(std::numbers::pi / 3), -0.5, false, {}); }

TEST_F(csgPassTest, cutStockMatchesItsReferencesAndLightsCutFacesBetweenFloorAndFull) {
    constexpr double floor = openGL::glCsgPass::kCutFaceFloor, full = openGL::glCsgPass::kCutFaceFull;
    auto view = makeCutScene(4);  // the same camera as cutFrame's, to find points in the images
    topView(*view);
    view->zoomAll();
    const auto top = cutFrame(topView, "top_shader_4samples");
    expectShareOf(pixelAt(top, view->worldToWinCoordinates({-1.5, 0.4, 0.5})), kOutsideBlank, full, "pocket floor");
    expectShareOf(pixelAt(top, view->worldToWinCoordinates({1.6, 0.0, 1.0})), kBackground, 1.0, "through the hole");
    const auto iso = cutFrame(isoView, "iso_shader_4samples");
    cutFrame(frontView, "front_shader_4samples");
    obliqueView(*view);
    view->zoomAll();
    const auto floorPixel = view->worldToWinCoordinates({-1.5, 0.0, 0.5});
    expectShareOf(pixelAt(cutFrame(obliqueView), floorPixel), kOutsideBlank, floor + (full - floor) * 0.5, "shader");

    openGL::glShaderProgram::enableGlShadersGlobally(false);
    expectShareOf(pixelAt(cutFrame(obliqueView), floorPixel), kOutsideBlank, floor + (full - floor) * 0.5, "fixed");
    EXPECT_LT(oxtest::compareImages(cutFrame(isoView, "iso_fixed_4samples"), iso).meanDelta, 1.0);
}

// Everything the pass changes, with the light and material it lights cut faces with.
std::vector<double> passState() {
    std::vector<double> values;
    for (const GLenum query :
         {GL_STENCIL_TEST, GL_DEPTH_CLAMP, GL_CULL_FACE, GL_POLYGON_OFFSET_FILL, GL_DEPTH_FUNC, GL_DEPTH_WRITEMASK,
          GL_COLOR_WRITEMASK, GL_CULL_FACE_MODE, GL_FRONT_FACE, GL_POLYGON_OFFSET_FACTOR, GL_POLYGON_OFFSET_UNITS,
          GL_STENCIL_FUNC, GL_STENCIL_REF, GL_STENCIL_VALUE_MASK, GL_STENCIL_FAIL, GL_STENCIL_PASS_DEPTH_FAIL,
          GL_STENCIL_PASS_DEPTH_PASS, GL_STENCIL_WRITEMASK, GL_STENCIL_BACK_FUNC, GL_STENCIL_BACK_REF,
          GL_STENCIL_BACK_VALUE_MASK, GL_STENCIL_BACK_FAIL, GL_STENCIL_BACK_PASS_DEPTH_FAIL,
          GL_STENCIL_BACK_PASS_DEPTH_PASS, GL_STENCIL_BACK_WRITEMASK, GL_STENCIL_CLEAR_VALUE, GL_CURRENT_PROGRAM,
          GL_LIGHT_MODEL_AMBIENT}) {
        GLdouble v[4] = {0, 0, 0, 0};
        glGetDoublev(query, v);
        values.insert(values.end(), v, v + 4);
    }
    GLfloat v[4] = {0, 0, 0, 0};
    for (const GLenum light : {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR}) {
        glGetLightfv(GL_LIGHT0, light, v);
        values.insert(values.end(), v, v + 4);
    }
    glGetMaterialfv(GL_FRONT, GL_EMISSION, v);
    values.insert(values.end(), v, v + 4);
    return values;
}

// Values unlike the defaults where the frame leaves a piece of state to the host, or the defaults.
void setUnusualState(bool unusual) {
    glPolygonOffset(unusual ? 3.0f : 0.0f, unusual ? 2.0f : 0.0f);
    glCullFace(unusual ? GL_FRONT_AND_BACK : GL_BACK);
    glFrontFace(unusual ? GL_CW : GL_CCW);
    unusual ? glEnable(GL_DEPTH_CLAMP) : glDisable(GL_DEPTH_CLAMP);
    glStencilFuncSeparate(GL_FRONT, unusual ? GL_NOTEQUAL : GL_ALWAYS, unusual ? 3 : 0, unusual ? 0x0F : 0xFF);
    glStencilFuncSeparate(GL_BACK, unusual ? GL_GEQUAL : GL_ALWAYS, unusual ? 5 : 0, unusual ? 0xF0 : 0xFF);
    glStencilOpSeparate(GL_FRONT, unusual ? GL_INVERT : GL_KEEP, unusual ? GL_ZERO : GL_KEEP,
                        unusual ? GL_REPLACE : GL_KEEP);
    glStencilOpSeparate(GL_BACK, unusual ? GL_INCR : GL_KEEP, unusual ? GL_DECR : GL_KEEP, GL_KEEP);
    glClearStencil(unusual ? 7 : 0);
}

TEST_F(csgPassTest, passRestoresTheFrameStateAndVolumesAloneCostNothing) {
    for (const bool shaders : {true, false}) {
        openGL::glShaderProgram::enableGlShadersGlobally(shaders);
        auto view = makeCutScene(0);
        isoView(*view);
        view->zoomAll();
        oxtest::paint(*view);  // the camera's matrices and the frame's lights
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        const oxtest::rgba8 cleared = oxtest::readPixel(80, 60);
        setUnusualState(true);
        const auto participants = openGL::glCsgPass::collect(gAdded, {});
        EXPECT_EQ(participants.members.size(), 4u);
        const std::set<ox::refPtr<iDrawable>> none;
        const openGL::drawableEffectsMap noEffects;
        const openGL::frameContent_t content{
            gAdded, none, none, {}, noEffects, eSelectionStyle::highlight, false, &participants.members};
        openGL::glRenderDrawer render(nullptr);
        openGL::glHighlightDrawer selection(nullptr, {255, 255, 0}), modify(nullptr, {255, 220, 0});
        auto* library = shaders ? openGL::glProgramLibrary::forCurrentContext() : nullptr;
        shaderProgram* standard = library ? library->program("standardLightingShaderProgram").get() : nullptr;
        if (standard) standard->activate();
        const auto before = passState();
        openGL::glOverrideColorDrawer overrideColor(nullptr);
        openGL::glCsgPass({render, selection, modify, overrideColor}).draw(participants, content, {standard, nullptr}, {}, kOutsideBlank);
        EXPECT_EQ(passState(), before) << shaders;
        EXPECT_NE(oxtest::readPixel(80, 60), cleared) << "the pass drew nothing";
        glUseProgram(0);
        setUnusualState(false);
    }

    // Without volumes a solid is an ordinary drawable; volumes without solids are never drawn.
    const auto frameOf = [](auto fill) {
        auto view = oxtest::makeScene(96, 72, 4);
        isoView(*view);
        view->resize(96, 72, 8.0, 0, 0, 0, 0);
        fill(*view);
        return oxtest::frameImage(*view).pixels;
    };
    const auto plain =
        frameOf([](scene& v) { oxGeo::meshfactory::appendBoxMesh(6, 4, 2, add<csgPart>(v)->mMesh, true); });
    EXPECT_EQ(frameOf([](scene& v) { add<stock>(v); }), plain);
    EXPECT_EQ(frameOf([](scene& v) { add<cutter>(v, 0.0, 0.0, 1.0, -1.0, 1.0); }), frameOf([](scene&) {}));
}

TEST_F(csgPassTest, aToolInACutShowsBrokenPartsAreSurvivedAndSelectedSolidsAreHighlighted) {
    auto view = makeCutScene(4);
    topView(*view);
    view->zoomAll();
    const point3d stockTop(-2.5, 1.5, 1.0);
    auto tool = add<csgPart>(*view);  // an ordinary drawable below the removed top, above the pocket floor
    tool->mColor = {220, 30, 30};
    oxGeo::meshfactory::appendBoxMesh(0.6, 0.6, 0.5, tool->mMesh, true);
    tool->mPlacement.setToTranslation({-1.5, -0.5, 0.55});
    view->add(ox::refPtr<iDrawable>(new oxtest::testSquare({1.6, 0.0, -2.0}, 1.0, {255, 255, 255}, 0.5f)));
    add<cutter>(*view, 2.5, 1.5, 0.3, 0.0, 1.5, false);  // open: no caps
    add<cutter>(*view, 0.0, 0.0, 0.3, 0.0, 1.5)->mThrows = true;
    oxGeo::matrix3d notANumber;
    notANumber(0, 0) = std::numeric_limits<double>::quiet_NaN();
    add<cutter>(*view, 0.0, -1.0, 0.3, 0.0, 1.5)->setTransformation(notANumber);
    auto brokenSolid = add<stock>(*view);
    brokenSolid->mThrows = true;
    const auto image = oxtest::frameImage(*view);
    const oxtest::rgba8 uncut = pixelAt(image, view->worldToWinCoordinates(stockTop));
    EXPECT_GT(uncut[2], uncut[0]) << "the stock is still drawn in its colour";
    const oxtest::rgba8 inCut = pixelAt(image, view->worldToWinCoordinates({-1.5, -0.5, 0.8}));
    EXPECT_TRUE(inCut[0] > 240 && inCut[1] < 60) << "the tool, not the pocket's floor over it";
    const oxtest::rgba8 belowHole = pixelAt(image, view->worldToWinCoordinates({1.6, 0.0, 1.0}));
    expectShareOf(belowHole, {137, 142, 147}, 1.0, "a transparent square half over the background, below the hole");

    // Volumes are never shown, so a pick through the through hole finds only what is behind it.
    const oxGeo::point2d hole = view->worldToWinCoordinates({1.6, 0.0, 1.0});
    for (const pickHit_t& hit : view->pickSelectRect(static_cast<unsigned>(hole.x()), static_cast<unsigned>(hole.y()),
                                                     static_cast<unsigned>(hole.x()) + 2, static_cast<unsigned>(hole.y()) + 2))
        EXPECT_FALSE(dynamic_cast<iCsgVolume*>(hit.drawable.get())) << "a volume was picked";

    drawableEffects_t layered;  // a blank with cuts still shows its layers
    layered.multilayer = true;
    layered.blank.layers = {{-10.0, 10.0, {255, 0, 255}}};
    view->setDrawableEffects(gAdded.front(), layered);
    const oxtest::rgba8 magenta = pixelAt(oxtest::frameImage(*view), view->worldToWinCoordinates(stockTop));
    EXPECT_TRUE(magenta[0] > magenta[1] + 60 && magenta[2] > magenta[1] + 60) << "the blank's layer colour";
    view->setDrawableEffects(gAdded.front(), {});

    view->addToSelection(gAdded.front());
    const oxtest::rgba8 selected = pixelAt(oxtest::frameImage(*view), view->worldToWinCoordinates(stockTop));
    EXPECT_GT(selected[1], 200) << "selection yellow";
    EXPECT_LT(selected[2], 60) << "selection yellow";
}

} // namespace
