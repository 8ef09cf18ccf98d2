#pragma once
// A scene on the shared test context and a small drawable to put in it.
#include "oxdrawer.h"
#include "oxglshader.h"
#include "oxscene.h"

#include "glTestFixture.h"

#include "oxgeomesh.h"
#include "oxobservable.h"

#include <atomic>
#include <memory>
#include <vector>

namespace oxtest {

/// A flat square in the XY plane at height z, one colour, that knows its bounds.
class testSquare : public oxGraphics::iDrawable, public oxGraphics::iBoundBoxProvider, public ox::refObj {
public:
    testSquare(const oxGeo::point3d& centre, double side, ox::rgbColor color, float transparency = 0.0f)
        : mColor(color), mTransparency(transparency) {
        const double h = side / 2;
        const auto a = mMesh.addVertex({centre.x() - h, centre.y() - h, centre.z()});
        const auto b = mMesh.addVertex({centre.x() + h, centre.y() - h, centre.z()});
        const auto c = mMesh.addVertex({centre.x() + h, centre.y() + h, centre.z()});
        const auto d = mMesh.addVertex({centre.x() - h, centre.y() + h, centre.z()});
        mMesh.addQuad(a, b, c, d);
    }
    bool draw(oxGraphics::iDrawer* drawer, oxGraphics::eRendermode, oxGraphics::shaderProgram*) override {
        ++draws;
        drawer->setColor(mColor, mTransparency);
        drawer->drawMesh(mMesh, 0);
        return true;
    }
    void invalidate() override { ++invalidations; }
    void setTransformation(const oxGeo::matrix3d&) override {}
    oxGeo::boundBox3d worldBoundingBox() const override { return mMesh.boundingBox(); }

    std::atomic<int> draws{0};
    std::atomic<int> invalidations{0};

private:
    oxGeo::mesh3d mMesh;
    ox::rgbColor mColor;
    float mTransparency;
};

/// Counts scene events by code and remembers the threads they came from.
class eventCounter : public ox::iObserver, public ox::refObj {
public:
    void onEvent(int code, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
        if (code == 1000) ++changed;
        if (code == 2000) ++viewSteps;
    }
    std::atomic<int> changed{0};
    std::atomic<int> viewSteps{0};
};

/// An offscreen scene of the given size on the shared test context, ready to draw.
inline ox::refPtr<oxGraphics::scene> makeScene(int width, int height, int samples, bool presentToWindow = false,
                                               bool smoothView = false) {
    auto view = oxGraphics::scene::create(sharedGlContext(), presentToWindow, smoothView);
    view->setMultisamples(samples);
    view->initGfxApiState();
    view->resize(width, height, 10.0, 0, 0, 0, 0);
    view->refreshFBOWithMultiSampling(); // resize builds with at least one sample; this uses the count asked for
    return view;
}

/// One whole frame: setupForPainting, renderBefore, draw, renderAfter.
inline void paint(oxGraphics::scene& view) {
    view.setupForPainting();
    view.renderBefore();
    view.draw();
    view.renderAfter();
}

/// The BGRA pixel (x, y) of a bottom-row-first buffer as RGBA.
inline rgba8 pixelOf(const char* bgra, int width, int x, int y) {
    const auto* p = reinterpret_cast<const unsigned char*>(bgra) + (static_cast<std::size_t>(y) * width + x) * 4;
    return rgba8{p[2], p[1], p[0], p[3]};
}

} // namespace oxtest

namespace oxtest {

/// A BGRA bottom-row-first buffer as an RGBA image, top row first.
inline rgbaImage imageOf(const char* bgra, int width, int height) {
    rgbaImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const rgba8 p = pixelOf(bgra, width, x, height - 1 - y);
            std::copy(p.begin(), p.end(), image.at(x, y));
        }
    return image;
}

/// One whole frame, read back as an RGBA image, top row first.
inline rgbaImage frameImage(oxGraphics::scene& view) {
    paint(view);
    std::unique_ptr<char[]> pixels(view.writeToBuffer());
    return imageOf(pixels.get(), view.viewportWidth(), view.viewportHeight());
}

/// For tests that switch the shader path off: it is on again for the next test.
class shaderSwitchTest : public glTest {
protected:
    void TearDown() override {
        oxGraphics::openGL::glShaderProgram::enableGlShadersGlobally(true);
        glTest::TearDown();
    }
};

} // namespace oxtest
