// Every colour operation of the drawers, drawn by a host drawable in whole frames: the shading
// program must show what fixed-function lighting shows.
#include "sceneTestSupport.h"

#include "oxglshader.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numbers>
#include <vector>

namespace {

using namespace oxGraphics;

constexpr int kSize = 96;   // pixels; the view spans 10 units
constexpr int kTolerance = 6;

/// A drawable implemented by the host: whatever the function sends through the drawer.
class hostDrawable : public iDrawable, public ox::refObj {
public:
    explicit hostDrawable(std::function<void(iDrawer&)> draw) : mDraw(std::move(draw)) {}
    bool draw(iDrawer* drawer, eRendermode, shaderProgram*) override {
        mDraw(*drawer);
        return true;
    }
    void invalidate() override {}
    void setTransformation(const oxGeo::matrix3d&) override {}

private:
    std::function<void(iDrawer&)> mDraw;
};

/// A flat parallelogram of side 3 around (x, y), turned by `aboutY` and `aboutX` degrees so the
/// head light meets it at an angle; `flipped` winds it the other way round (back face up). Flat
/// faces under the frame's directional light look the same lit per vertex or per pixel.
struct face {
    double x, y, aboutY, aboutX;
    bool flipped = false;
};

oxGeo::mesh3d faces(std::initializer_list<face> list) {
    oxGeo::mesh3d mesh;
    for (const face& f : list) {
        const double ay = f.aboutY * std::numbers::pi / 180, ax = f.aboutX * std::numbers::pi / 180;
        const auto corner = [&](double u, double v) {
            return mesh.addVertex({f.x + u * std::cos(ay), f.y + v * std::cos(ax), u * std::sin(ay) + v * std::sin(ax)});
        };
        const auto a = corner(-1.5, -1.5), b = corner(1.5, -1.5), c = corner(1.5, 1.5), d = corner(-1.5, 1.5);
        if (f.flipped) mesh.addQuad(a, d, c, b);
        else mesh.addQuad(a, b, c, d);
    }
    return mesh;
}

struct colourCase {
    const char* what;
    std::function<void(iDrawer&)> draw;
    bool selected = false;
    bool textureOnUnit1 = false;
    std::function<void(iDrawer&)> underlay = {};   // an opaque drawable of its own, drawn first
};

oxtest::rgbaImage render(const colourCase& c, bool shaders) {
    openGL::glShaderProgram::enableGlShadersGlobally(shaders);
    auto view = oxtest::makeScene(kSize, kSize, 0);
    view->setColor({0, 0, 0}, kColorBackgroundTop | kColorBackgroundBottom);
    if (c.underlay) view->add(ox::refPtr<iDrawable>(new hostDrawable(c.underlay)));
    const ox::refPtr<iDrawable> drawable(new hostDrawable(c.draw));
    view->add(drawable);
    if (c.selected) view->addToSelection(drawable);

    // A host texture left on unit 1, red everywhere, complete (no mipmaps needed).
    GLuint texture = 0;
    if (c.textureOnUnit1) {
        const std::vector<std::uint32_t> red(kSize * kSize, 0xff0000ffu);
        glGenTextures(1, &texture);
        glActiveTexture(GL_TEXTURE1);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, kSize, kSize, 0, GL_RGBA, GL_UNSIGNED_BYTE, red.data());
        glActiveTexture(GL_TEXTURE0);
    }
    oxtest::paint(*view);   // two frames: state left by the first must not change the second
    oxtest::paint(*view);
    std::unique_ptr<char[]> pixels(view->writeToBuffer());
    glDeleteTextures(1, &texture);
    return oxtest::imageOf(pixels.get(), kSize, kSize);
}

using shaderColorTest = oxtest::shaderSwitchTest;

TEST_F(shaderColorTest, everyColourOperationLooksAsWithFixedFunctionLighting) {
    const ox::rgbColor red(220, 40, 30), blue(40, 90, 230), green(60, 200, 80), back(230, 160, 40);
    const auto twoFaces = faces({{-2.5, 0, 35, 10}, {2.5, 0, -55, -20}});
    const auto patches = faces({{-2.5, 2.5, 30, 0}, {2.5, 2.5, -50, 20}, {-2.5, -2.5, 40, -30, true},
                                {2.5, -2.5, -20, 45}});
    const colourCase cases[] = {
        {"one colour per mesh, set between the meshes",
         [&](iDrawer& d) {
             d.setColor(red, 0);
             d.drawMesh(faces({{-2.5, 0, 35, 10}}), 0);
             d.setColor(blue, 0);
             d.drawMesh(faces({{2.5, 0, -55, -20}}), 0);
         }},
        {"patch colours, a default and a back colour",
         [&](iDrawer& d) { d.drawMeshPatchColors(patches, {red, blue, green}, {250, 250, 120}, back, 0); }},
        {"gradient, front and back",
         [&](iDrawer& d) {
             d.drawMeshGradient(faces({{-2.5, 0, 35, 10}, {2.5, 0, -45, -20, true}}), 0, red, blue, {-4, 0, 0},
                                {4, 0, 0});
         }},
        {"selected: the highlight colour",
         [&](iDrawer& d) {
             d.setColor(red, 0);
             d.drawMesh(twoFaces, 0);
         },
         /*selected*/ true},
        {"lit and unlit lines and points",
         [&](iDrawer& d) {
             d.setColor(green, 0);
             d.drawMesh(faces({{-2.5, 2.5, 35, 10}}), 0);
             d.setColor(red, 0);
             d.setLineWidth(3);
             d.drawLine({-4, -1, 0}, {4, -1, 0}, /*lit*/ true);
             d.drawPoint({3, 3, 0});
             d.setColor(blue, 0);
             d.drawLine({-4, -3, 0}, {4, -4, 0}, /*lit*/ false);
             d.setPointSize(7);
             d.drawPoints({{-3, -2, 0}, {0, -2, 0}, {3, -2, 0}});
             d.setLineWidth(1);
             d.setPointSize(1);
         }},
        {"two transparent colours over an opaque drawable",
         [&](iDrawer& d) {
             d.setColor(blue, 0.5f);
             d.drawMesh(faces({{-1.2, 1.2, -50, -20}}), 0);
             d.setColor(red, 0.7f);
             d.drawMesh(faces({{1.8, -1.2, 20, 40}}), 0);
         },
         false, false,
         [&](iDrawer& d) {
             d.setColor(green, 0);
             d.drawMesh(faces({{0, 0, 35, 10}}), 0);
         }},
        {"a host texture left on unit 1",
         [&](iDrawer& d) {
             d.setColor(blue, 0);
             d.drawMesh(twoFaces, 0);
         },
         false, /*textureOnUnit1*/ true},
    };

    for (const auto& c : cases) {
        const auto fixed = render(c, false);
        const auto shaded = render(c, true);
        // Pixels either path drew on, and how many of them differ by more than the tolerance in a
        // colour channel (alpha is the transparent pass's business, not the colours').
        int covered = 0, differing = 0;
        for (std::size_t i = 0; i < fixed.pixels.size(); i += 4) {
            int delta = 0;
            bool drawn = false;
            for (std::size_t k = 0; k < 3; ++k) {
                delta = std::max(delta, std::abs(int(fixed.pixels[i + k]) - int(shaded.pixels[i + k])));
                drawn = drawn || fixed.pixels[i + k] != 0 || shaded.pixels[i + k] != 0;
            }
            covered += drawn;
            differing += drawn && delta > kTolerance;
        }
        EXPECT_GT(covered, kSize * kSize / 20) << c.what;
        EXPECT_LE(differing, covered / 50) << c.what << ": " << differing << " of " << covered << " pixels differ";
    }
}

} // namespace
