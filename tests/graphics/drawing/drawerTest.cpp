#include "drawingTestSupport.h"

#include "drawing/glrecording.h"
#include "drawing/glrenderdrawer.h"

#include "oxgeotext.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using namespace oxGraphics::openGL;
using oxGeo::point3d;

namespace {

class drawerTest : public oxtest::glTest {
protected:
    void SetUp() override {
        oxtest::glTest::SetUp();
        oxtest::setUpLitView(kSize);
        oxtest::clearTo(0, 0, 0, 1);
    }
    static constexpr int kSize = 96;
    oxtest::drawingHost mHost;
};

oxGeo::mesh3d boxMesh(double size) {
    oxGeo::mesh3d mesh;
    const double h = size / 2;
    for (int i = 0; i < 8; ++i) mesh.addVertex({i & 1 ? h : -h, i & 2 ? h : -h, i & 4 ? h : -h});
    const std::uint32_t faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& f : faces) mesh.addQuad(f[0], f[1], f[2], f[3]);
    return mesh;
}

} // namespace

TEST_F(drawerTest, rendersLikeTheReferenceImages) {
    struct imageCase {
        const char* name;
        std::function<void(glRenderDrawer&)> draw;
    };
    const oxGeo::matrix3d tilt = oxGeo::matrix3d().setToRotation(ox::angle::fromDegree(30), {1, 1, 0});
    const imageCase cases[] = {
        {"litMesh", [&](glRenderDrawer& d) { d.multMatrix(tilt); d.drawMesh(boxMesh(2), 0); }},
        {"wireMesh", [&](glRenderDrawer& d) { d.multMatrix(tilt); d.drawMesh(boxMesh(2), 1); }},
        {"sphere", [](glRenderDrawer& d) { d.drawSphere({0.3, 0, 0}, 1.2f, 8, 16, 0); }},
        // Along x the direction has z = 0: only the 1e-8 substitute turns it off the z axis.
        {"cylinderAlongX", [](glRenderDrawer& d) { d.drawCylinder({-1.5, 0, 0}, {1.5, 0, 0}, 0.8f, 0.4f, true, true, 16, 0); }},
        // Exactly along ±z the rotation axis falls back to x.
        {"arrowsAlongZ", [](glRenderDrawer& d) {
             d.multMatrix(oxGeo::matrix3d().setToRotation(ox::angle::fromDegree(60), {1, 0, 0}));
             d.drawArrowHead({-1, 0, -1.5}, {-1, 0, 1.5}, 1.0f, 0.5f);
             d.drawArrowHead({1, 0, 1.5}, {1, 0, -1.5}, 1.0f, 0.5f);
         }},
    };
    for (const auto& c : cases) {
        oxtest::clearTo(0, 0, 0, 1);
        glRenderDrawer drawer(&mHost);
        drawer.setColor({200, 160, 40}, 0.0f);
        drawer.pushMatrix();
        c.draw(drawer);
        drawer.popMatrix();
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        EXPECT_TRUE(oxtest::regionMatchesReference(std::string("drawing/") + c.name, 0, 0, kSize, kSize, 24, 0.5))
            << c.name;
    }
}

TEST_F(drawerTest, leavesTheDocumentedStateBehind) {
    glRenderDrawer drawer(&mHost);
    drawer.setPointSize(3.0f);
    drawer.drawPoints({{0, 0, 0}});
    EXPECT_EQ(oxtest::readGlFloat(GL_POINT_SIZE), 3.0f) << "drawPoints keeps the size";
    drawer.setPointSize(-1.0f);
    EXPECT_EQ(oxtest::readGlFloat(GL_POINT_SIZE), 3.0f);
    drawer.drawPoint({0, 0, 0});
    EXPECT_EQ(oxtest::readGlFloat(GL_POINT_SIZE), 5.0f) << "drawPoint sets 5 for what follows";
    drawer.setLineWidth(2.0f);
    drawer.setLineWidth(0.0f);
    EXPECT_EQ(oxtest::readGlFloat(GL_LINE_WIDTH), 2.0f);
    drawer.multMatrix(oxGeo::matrix3d().setToTranslation({1, 2, 3}));
    const auto modelView = oxtest::readGlFloats(GL_MODELVIEW_MATRIX, 16);
    EXPECT_EQ((std::vector<GLfloat>(modelView.begin() + 12, modelView.begin() + 15)), (std::vector<GLfloat>{1, 2, 3}))
        << "column-major: the translation is the last column";
    glLoadIdentity();
    EXPECT_TRUE(oxtest::readGlBoolean(GL_LIGHTING)) << "unlit drawing restores lighting";

    const std::pair<std::function<void()>, GLint> modeCases[] = {
        {[&] { drawer.drawMesh(boxMesh(1), 1); }, GL_LINE},
        {[&] { drawer.drawPatch(boxMesh(1).patch(0), 1); }, GL_LINE},
        {[&] { drawer.drawSphere({0, 0, 0}, 1, 4, 4, 1); }, GL_FILL},
        {[&] { drawer.drawCylinder({0, 0, 0}, {1, 0, 0}, 1, 1, true, true, 6, 1); }, GL_FILL},
        {[&] { drawer.drawDisk({0, 0, 0}, {0, 0, 1}, 1, 6, 1); }, GL_FILL},
        {[&] { drawer.drawMeshGradient(boxMesh(1), 0, {0, 0, 0}, {9, 9, 9}, {0, 0, 0}, {1, 0, 0}); }, GL_FILL},
    };
    for (const auto& [draw, expected] : modeCases) {
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        glEnable(GL_CULL_FACE);
        draw();
        EXPECT_EQ(oxtest::readGlIntegers(GL_POLYGON_MODE, 2), (std::vector<GLint>{expected, expected}));
    }
    EXPECT_FALSE(oxtest::readGlBoolean(GL_CULL_FACE));
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

TEST_F(drawerTest, meshFacesAreFlatTrianglesWithQuadsSplitAndDegenerateFacesSkipped) {
    oxGeo::mesh3d mesh;
    for (const point3d& p : {point3d(0, 0, 0), point3d(1, 0, 0), point3d(1, 1, 0), point3d(0, 1, 0),
                             point3d(0, 1e-6, 0), point3d(1e-6, 0, 0), point3d(0, 2e-6, 0)})
        mesh.addVertex(p);
    mesh.addQuad(0, 1, 2, 3);
    mesh.addTriangle(0, 5, 4);   // |n| = 1e-12: skipped
    mesh.addTriangle(0, 1, 4);   // |n| = 1e-6: skipped (inclusive)
    mesh.addTriangle(0, 1, 6);   // |n| = 2e-6: drawn
    glRenderDrawer drawer(&mHost);
    const auto tokens = oxtest::feedback([&] { drawer.drawMesh(mesh, 0); });
    ASSERT_EQ(oxtest::countPrimitives(tokens, GL_POLYGON_TOKEN), 3);
    // Window positions (x, y) of the first two triangles: (p0, p1, p2) and (p2, p3, p0).
    const auto window = [](double x, double y) { return std::array<float, 2>{float((x + 2) / 4 * kSize), float((y + 2) / 4 * kSize)}; };
    const std::array<float, 2> expected[6] = {window(0, 0), window(1, 0), window(1, 1), window(1, 1), window(0, 1), window(0, 0)};
    for (int t = 0; t < 2; ++t)
        for (int v = 0; v < 3; ++v)
            for (int c = 0; c < 2; ++c)
                EXPECT_NEAR(tokens[t * 11 + 2 + v * 3 + c], expected[t * 3 + v][c], 1e-3) << t << v << c;
    const auto normal = oxtest::readGlFloats(GL_CURRENT_NORMAL, 3);
    EXPECT_NEAR(normal[2], 1.0f, 1e-6) << "unit normal of the last face stays current";

    // A mesh larger than one emission chunk records exactly what is drawn directly.
    oxGeo::mesh3d big;
    for (int i = 0; i < 5000; ++i) {
        const double x = -1.5 + 3.0 * (i % 100) / 100, y = -1.5 + 3.0 * (i / 100) / 50;
        const auto a = big.addVertex({x, y, 0}), b = big.addVertex({x + 0.02, y, 0.1}), c = big.addVertex({x, y + 0.05, 0.2});
        big.addTriangle(a, b, c);
    }
    const auto direct = oxtest::feedback([&] { drawer.drawMesh(big, 0); });
    drawer.beginRecording();
    drawer.drawMesh(big, 0);
    const auto recording = drawer.endRecording();
    EXPECT_EQ(oxtest::countPrimitives(direct, GL_POLYGON_TOKEN), 5000);
    EXPECT_EQ(oxtest::feedback([&] { drawer.drawRecording(recording); }), direct);
}

TEST_F(drawerTest, gradientAndPatchColouredMeshesColourEachVertexAndFace) {
    glDisable(GL_LIGHTING);   // feedback then reports the colours as given
    oxGeo::mesh3d mesh;
    for (const point3d& p : {point3d(0, 0, 0), point3d(0.5, 1, 0), point3d(1.5, 0, 0), point3d(-1, 0, 0)})
        mesh.addVertex(p);
    mesh.addTriangle(3, 0, 1);
    mesh.addTriangle(0, 1, 2);
    // Per vertex RGB*255 (alpha*1000) of the two triangles, from a GL_3D_COLOR feedback buffer.
    const auto colours = [](const std::vector<GLfloat>& tokens) {
        std::vector<std::array<long, 4>> result;
        for (int t = 0; t < 2; ++t)
            for (int v = 0; v < 3; ++v) {
                const GLfloat* c = &tokens[std::size_t(t * 23 + 2 + v * 7 + 3)];
                result.push_back({std::lround(c[0] * 255), std::lround(c[1] * 255), std::lround(c[2] * 255), std::lround(c[3] * 1000)});
            }
        return result;
    };
    glRenderDrawer drawer(&mHost);
    const ox::rgbColor a{0, 100, 200}, b{200, 100, 0};
    const auto gradient = oxtest::feedback([&] { drawer.drawMeshGradient(mesh, 0.25f, a, b, {0, 0, 0}, {1, 0, 0}); }, GL_3D_COLOR);
    using rgba = std::array<long, 4>;
    const rgba atA{0, 100, 200, 750}, atB{200, 100, 0, 750}, half{100, 100, 100, 750};
    // Before `from` and at it: A; half way: the mix; beyond `to`, nearer to it: B.
    EXPECT_EQ(colours(gradient), (std::vector<rgba>{atA, atA, half, atA, half, atB}));
    EXPECT_EQ(oxtest::readGlFloats(GL_CURRENT_NORMAL, 3), (std::vector<GLfloat>{0, 0, -2.25f}))
        << "the last face's normal (0, 0, -1.5) times its own length";
    const auto uniform = oxtest::feedback([&] { drawer.drawMeshGradient(mesh, 0.25f, a, a, {0, 0, 0}, {1, 0, 0}); }, GL_3D_COLOR);
    EXPECT_EQ(colours(uniform), std::vector<rgba>(6, atA));

    const auto patches = oxtest::feedback([&] { drawer.drawMeshPatchColors(mesh, {{255, 0, 0}}, {0, 0, 255}, {51, 102, 153}, 0); }, GL_3D_COLOR);
    EXPECT_EQ(colours(patches), (std::vector<rgba>{{255, 0, 0, 1000}, {255, 0, 0, 1000}, {255, 0, 0, 1000},
                                                   {0, 0, 255, 1000}, {0, 0, 255, 1000}, {0, 0, 255, 1000}}))
        << "a table entry, then the default colour";
    std::array<GLfloat, 4> back{};
    glGetMaterialfv(GL_BACK, GL_DIFFUSE, back.data());
    EXPECT_EQ((rgba{std::lround(back[0] * 255), std::lround(back[1] * 255), std::lround(back[2] * 255), std::lround(back[3] * 1000)}),
              (rgba{51, 102, 153, 1000})) << "the back material";
    glEnable(GL_LIGHTING);
}

TEST_F(drawerTest, aDiskFacesAgainstItsNormal) {
    glRenderDrawer drawer(&mHost);
    // The signed window-space area of the first polygon: negative = clockwise = seen from behind.
    const auto firstArea = [](const std::vector<GLfloat>& t) {
        const int n = int(t.at(1));
        double area = 0;
        for (int i = 0; i < n; ++i) {
            const int j = (i + 1) % n;
            area += t[2 + i * 3] * t[2 + j * 3 + 1] - t[2 + j * 3] * t[2 + i * 3 + 1];
        }
        return area;
    };
    EXPECT_LT(firstArea(oxtest::feedback([&] { drawer.drawDisk({0, 0, 0}, {0, 0, 1}, 1, 8, 0); })), 0.0);
    EXPECT_GT(firstArea(oxtest::feedback([&] { drawer.drawDisk({0, 0, 0}, {0, 0.1, -1}, 1, 8, 0); })), 0.0);
    // Exactly along -z the rotation axis vanishes and, unlike the arrow head, there is no fallback:
    // the disk is not turned at all.
    EXPECT_LT(firstArea(oxtest::feedback([&] { drawer.drawDisk({0, 0, 0}, {0, 0, -1}, 1, 8, 0); })), 0.0);
}

TEST_F(drawerTest, theSkipFlagBlocksExactlyTheDrawingSlots) {
    glRenderDrawer drawer(&mHost);
    drawer.beginRecording();
    drawer.drawPoint({0, 0, 0});
    const auto recording = drawer.endRecording();
    const oxGeo::mesh3d box = boxMesh(1);
    struct slotCase {
        int slot;
        std::function<void()> op;
        bool obeysSkip;
        std::function<void()> before = [] {};
    };
    const slotCase cases[] = {
        {2, [&] { drawer.pushMatrix(); }, false},
        {3, [&] { drawer.multMatrix(oxGeo::matrix3d().setToTranslation({1, 2, 3})); }, true},
        {4, [&] { drawer.popMatrix(); }, false, [] { glPushMatrix(), glTranslatef(1, 0, 0); }},
        {6, [&] { drawer.setLineWidth(3); }, false},
        {7, [&] { drawer.setPointSize(4); }, false},
        {8, [&] { drawer.drawPoint({0, 0, 0}); }, true},
        {9, [&] { drawer.drawPoints({{0, 0, 0}}); }, true},
        {10, [&] { drawer.drawLine({0, 0, 0}, {1, 1, 0}, false); }, true},
        {11, [&] { drawer.drawArrowHead({0, 0, 0}, {1, 1, 0}, 0.5f, 0.2f); }, true},
        {12, [&] { drawer.drawStippledLine({0, 0, 0}, {1, 1, 0}, 2, true); }, true},
        {13, [&] { drawer.drawPolyline({{0, 0, 0}, {1, 1, 0}}); }, true},
        {14, [&] { drawer.drawMesh(box, 0); }, true},
        {15, [&] { drawer.drawMeshPatchColors(box, {{1, 2, 3}}, {4, 5, 6}, {7, 8, 9}, 0); }, true},
        {16, [&] { drawer.drawPatch(box.patch(0), 0); }, true},
        {17, [&] { drawer.drawCylinder({0, 0, 0}, {1, 0, 0}, 1, 1, true, true, 6, 0); }, true},
        {18, [&] { drawer.drawDisk({0, 0, 0}, {0, 0, 1}, 1, 6, 0); }, true},
        {19, [&] { drawer.drawSphere({0, 0, 0}, 1, 4, 4, 0); }, true},
        {20, [&] { drawer.drawText(L"T", L""); }, true},
        {21, [&] { drawer.drawMeshGradient(box, 0, {0, 0, 0}, {9, 9, 9}, {0, 0, 0}, {1, 0, 0}); }, true},
        {24, [&] { drawer.drawRecording(recording); }, true},
        {25, [&] { drawer.pushName(1); }, false},
        {26, [&] { drawer.popName(); }, false, [&] { drawer.pushName(1); }},
        {30, [&] { drawer.beginRecording(); }, true},
    };
    // What an operation did (or, with `run` false, what its set-up alone leaves): its feedback
    // output and the state it can change.
    const auto effect = [&](const slotCase& c, bool run) {
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glLineWidth(1);
        glPointSize(1);
        c.before();
        const std::uint64_t depth = drawer.nameDepth();
        std::vector<GLfloat> seen = oxtest::feedback(run ? c.op : [] {});
        for (GLenum state : {GL_MODELVIEW_MATRIX, GL_MODELVIEW_STACK_DEPTH, GL_LINE_WIDTH, GL_POINT_SIZE}) {
            const auto values = oxtest::readGlFloats(state, state == GL_MODELVIEW_MATRIX ? 16 : 1);
            seen.insert(seen.end(), values.begin(), values.end());
        }
        seen.push_back(float(drawer.nameDepth() - depth));
        seen.push_back(drawer.isRecording() ? 1.0f : 0.0f);
        if (drawer.isRecording()) drawer.endRecording();
        while (oxtest::readGlInteger(GL_MODELVIEW_STACK_DEPTH) > 1) glPopMatrix();
        while (drawer.nameDepth() > 0) drawer.popName();
        return seen;
    };
    for (const auto& c : cases) {
        drawer.setColor({1, 1, 1}, 0.0f);
        const auto drawn = effect(c, true);
        const auto nothing = effect(c, false);
        EXPECT_NE(drawn, nothing) << "slot " << c.slot << " has an effect to block";
        drawer.setColor({1, 1, 1}, 0.5f);
        ASSERT_TRUE(drawer.isSkipping());
        EXPECT_EQ(effect(c, true), c.obeysSkip ? nothing : drawn) << "slot " << c.slot;
    }
}

TEST_F(drawerTest, textIsDrawnAsLitLinesThroughTheDrawersOwnDrawLine) {
    struct countingDrawer : glRenderDrawer {
        using glRenderDrawer::glRenderDrawer;
        void drawLine(const point3d& a, const point3d& b, bool lit) override {
            ++mLines;
            mUnlit += lit ? 0 : 1;
            mMaxZ = std::max({mMaxZ, std::fabs(a.z()), std::fabs(b.z())});
            glRenderDrawer::drawLine(a, b, lit);
        }
        int mLines = 0, mUnlit = 0;
        double mMaxZ = 0;
    } drawer(&mHost);
    std::size_t corners = 0;
    double width = 0;
    std::vector<std::vector<oxGeo::polyline2d>> glyphs;
    oxGeo::text().getTextOutlines(L"Ox", L"", 2.0, width, glyphs);
    for (const auto& glyph : glyphs)
        for (const auto& outline : glyph) corners += outline.size();

    drawer.multMatrix(oxGeo::matrix3d().setToScale(0.5));   // all in view: nothing clipped away
    const auto tokens = oxtest::feedback([&] { drawer.drawText(L"Ox", L""); });
    EXPECT_EQ(std::size_t(drawer.mLines), corners) << "one segment per corner, closing each outline";
    EXPECT_EQ(drawer.mUnlit, 0);
    EXPECT_EQ(drawer.mMaxZ, 0.0);
    EXPECT_EQ(oxtest::countPrimitives(tokens, GL_LINE_TOKEN) + oxtest::countPrimitives(tokens, GL_LINE_RESET_TOKEN),
              drawer.mLines);
}
