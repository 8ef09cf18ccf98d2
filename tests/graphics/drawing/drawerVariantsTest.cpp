#include "drawingTestSupport.h"

#include "drawing/glhighlightdrawer.h"
#include "drawing/glnulldrawer.h"
#include "drawing/glrenderdrawer.h"
#include "drawing/glselectdrawer.h"

#include "oxrefobj.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using namespace oxGraphics::openGL;

namespace {

class variantsTest : public oxtest::glTest {
protected:
    void SetUp() override {
        oxtest::glTest::SetUp();
        oxtest::setUpLitView(64);
    }
    oxtest::drawingHost mHost;
};

struct nothingDrawable : oxGraphics::iDrawable, ox::refObj {
    bool draw(oxGraphics::iDrawer*, oxGraphics::eRendermode, oxGraphics::shaderProgram*) override { return true; }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}
};

/// The current colour as 8-bit channels and alpha.
std::array<int, 4> currentColor() {
    const auto c = oxtest::readGlFloats(GL_CURRENT_COLOR, 4);
    return {int(std::lround(c[0] * 255)), int(std::lround(c[1] * 255)), int(std::lround(c[2] * 255)),
            int(std::lround(c[3] * 1000))};
}

} // namespace

TEST_F(variantsTest, renderDrawerDefersTransparentDrawablesOnceAndDrawsThemInTheTransparentPass) {
    glEnable(GL_BLEND);
    glDepthMask(GL_FALSE);
    glRenderDrawer drawer(&mHost);
    EXPECT_FALSE(oxtest::readGlBoolean(GL_BLEND));
    EXPECT_TRUE(oxtest::readGlBoolean(GL_DEPTH_WRITEMASK));

    const ox::refPtr<oxGraphics::iDrawable> a(new nothingDrawable), b(new nothingDrawable);
    drawer.setCurrentDrawable(a);
    drawer.setColor({255, 0, 51}, 0.00005f);
    EXPECT_FALSE(drawer.isSkipping()) << "within the opaque threshold of 0.0001";
    EXPECT_EQ(currentColor(), (std::array<int, 4>{255, 0, 51, 1000}));
    drawer.setColor({0, 255, 0}, 0.5f);
    drawer.setColor({0, 255, 0}, 0.5f);
    EXPECT_TRUE(drawer.isSkipping());
    EXPECT_EQ(currentColor()[1], 0) << "a deferred colour is not applied";
    EXPECT_EQ(oxtest::countPrimitives(oxtest::feedback([&] { drawer.drawPoint({0, 0, 0}); }), GL_POINT_TOKEN), 0);
    drawer.setCurrentDrawable(b);
    drawer.setColor({0, 0, 255}, -0.3f);
    EXPECT_EQ(drawer.deferredDrawables(), (glRenderDrawer::deferredSet{a, b})) << "each once";

    drawer.beginTransparentPass(false);
    EXPECT_FALSE(oxtest::readGlBoolean(GL_BLEND)) << "no GL state without applyGlState";
    drawer.beginTransparentPass(true);
    EXPECT_TRUE(drawer.isTransparentPass());
    EXPECT_TRUE(oxtest::readGlBoolean(GL_BLEND));
    EXPECT_FALSE(oxtest::readGlBoolean(GL_DEPTH_WRITEMASK));
    EXPECT_EQ(oxtest::readGlInteger(GL_BLEND_SRC_RGB), GL_SRC_ALPHA);
    EXPECT_EQ(oxtest::readGlInteger(GL_BLEND_DST_RGB), GL_ONE_MINUS_SRC_ALPHA);
    drawer.setColor({0, 255, 0}, 0.5f);
    EXPECT_FALSE(drawer.isSkipping());
    EXPECT_EQ(currentColor(), (std::array<int, 4>{0, 255, 0, 500}));
    const auto diffuse = oxtest::readGlFloats(GL_CURRENT_COLOR, 4);
    std::array<GLfloat, 4> material{};
    glGetMaterialfv(GL_BACK, GL_DIFFUSE, material.data());
    EXPECT_EQ(std::vector<GLfloat>(material.begin(), material.end()), diffuse) << "front-and-back material follows";
    drawer.endTransparentPass(true);
    EXPECT_FALSE(oxtest::readGlBoolean(GL_BLEND));
    EXPECT_TRUE(oxtest::readGlBoolean(GL_DEPTH_WRITEMASK));
    drawer.clearDeferredDrawables();
    EXPECT_TRUE(drawer.deferredDrawables().empty());
}

TEST_F(variantsTest, highlightDrawerUsesItsColourOrMixesWithTiesToEven) {
    struct mixCase {
        ox::rgbColor highlight, color;
        bool mix;
        ox::rgbColor exempt, expected;
    };
    const mixCase cases[] = {
        {{255, 0, 0}, {0, 0, 255}, true, {}, {108, 0, 108}},       // 127.5 · 0.85 = 108.375
        {{255, 0, 0}, {0, 0, 255}, false, {}, {255, 0, 0}},        // no mixing: the plain highlight
        {{255, 0, 0}, {0, 0, 255}, true, {0, 0, 255}, {255, 0, 0}}, // the exempt colour: plain highlight
        {{10, 30, 50}, {10, 30, 50}, true, {}, {8, 26, 42}},        // 8.5, 25.5, 42.5: ties go to even
        {{255, 255, 255}, {255, 255, 255}, true, {}, {217, 217, 217}},
    };
    for (const auto& c : cases) {
        glHighlightDrawer drawer(&mHost, c.highlight);
        drawer.setMixColors(c.mix);
        drawer.setExemptColor(c.exempt);
        drawer.setColor(c.color, 0.25f);
        const auto e = c.expected;
        EXPECT_EQ(currentColor(), (std::array<int, 4>{e.red(), e.green(), e.blue(), 750}))
            << int(c.highlight.red()) << "+" << int(c.color.red()) << " mix " << c.mix;
        EXPECT_FALSE(drawer.isSkipping()) << "transparent colours are drawn at once";
    }
}

TEST_F(variantsTest, selectDrawerReportsItsNamesAndPopsWhatIsLeftWhenItDies) {
    std::array<GLuint, 64> hits{};
    glSelectBuffer(GLsizei(hits.size()), hits.data());
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(0xFFFFFFFFu);
    {
        glHighlightDrawer plain(&mHost, {});
        plain.popName();   // nothing pushed by it: must not pop the outer name
        EXPECT_EQ(oxtest::readGlInteger(GL_NAME_STACK_DEPTH), 1);
        glSelectDrawer drawer(&mHost);
        drawer.setColor({10, 20, 30}, 0.7f);
        EXPECT_EQ(currentColor(), (std::array<int, 4>{10, 20, 30, 1000})) << "transparency is ignored";
        drawer.pushName(7);
        drawer.pushName(9);
        drawer.drawPoint({0, 0, 0});
        EXPECT_EQ(oxtest::readGlInteger(GL_NAME_STACK_DEPTH), 3);
    }
    EXPECT_EQ(oxtest::readGlInteger(GL_NAME_STACK_DEPTH), 1) << "the destructor popped 7 and 9";
    ASSERT_EQ(glRenderMode(GL_RENDER), 1);
    EXPECT_EQ(hits[0], 3u);
    EXPECT_EQ((std::array<GLuint, 3>{hits[3], hits[4], hits[5]}), (std::array<GLuint, 3>{0xFFFFFFFFu, 7, 9}));
}

TEST_F(variantsTest, nullDrawerEmitsNothingButKeepsMatricesAndColours) {
    glNullDrawer drawer(&mHost);
    const auto tokens = oxtest::feedback([&] {
        drawer.drawPoint({0, 0, 0});
        drawer.drawLine({0, 0, 0}, {1, 0, 0}, true);
        drawer.drawSphere({0, 0, 0}, 1, 4, 4, 0);
        drawer.drawText(L"T", L"");
    });
    EXPECT_TRUE(tokens.empty());
    EXPECT_EQ(oxtest::readGlFloat(GL_POINT_SIZE), 1.0f);
    drawer.setColor({0, 128, 0}, 0);
    EXPECT_EQ(currentColor()[1], 128);
    drawer.pushMatrix();
    EXPECT_EQ(oxtest::readGlInteger(GL_MODELVIEW_STACK_DEPTH), 2);
    drawer.popMatrix();
}

TEST_F(variantsTest, sceneQueriesGoToTheHost) {
    glRenderDrawer drawer(&mHost);
    EXPECT_STREQ(drawer.sceneName(), L"drawing test scene");
    oxGeo::ray3d ray;
    EXPECT_TRUE(drawer.sceneViewRayAt(3, 4, ray));
    EXPECT_EQ(mHost.mLastFlags, 0);
    EXPECT_EQ(ray.origin(), oxGeo::point3d(3, 4, 0));
    glRenderDrawer orphan(nullptr);
    EXPECT_STREQ(orphan.sceneName(), L"");
    EXPECT_FALSE(orphan.sceneViewRayAt(3, 4, ray));
    orphan.beginRecording();
    EXPECT_FALSE(orphan.isRecording());
}
