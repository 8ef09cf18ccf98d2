// Entities drawn through the real render drawer into the headless context.
#include "glTestFixture.h"

#include "drawing/gldrawerhost.h"
#include "drawing/glrenderdrawer.h"

#include "oxcsentity.h"

#include <GL/glu.h>
#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace oxGraphics;
using oxGeo::matrix3d;
using oxGeo::point3d;

class testHost : public openGL::iDrawerHost {
public:
    ox::refPtr<iGlContext> glContext() const override { return oxtest::sharedGlContext(); }
    const ox::string& sceneName() const override { return mName; }
    bool getViewRayAt(int, int, oxGeo::ray3d&, int) const override { return false; }

private:
    ox::string mName;
};

// An orthographic view of [-1.3, 1.3]² looking down a diagonal (X right-down, Y up, Z left-down),
// lit by one white light from the viewer. Everything the test changes is restored afterwards.
class entityGlTest : public oxtest::glTest {
protected:
    void SetUp() override {
        oxtest::glTest::SetUp();
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        glOrtho(-1.3, 1.3, -1.3, 1.3, -10.0, 10.0);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
        const GLfloat direction[] = {0.0f, 0.0f, 1.0f, 0.0f}, white[] = {1.0f, 1.0f, 1.0f, 1.0f};
        glLightfv(GL_LIGHT0, GL_POSITION, direction);   // in eye space: set before the view rotation
        glLightfv(GL_LIGHT0, GL_DIFFUSE, white);
        glEnable(GL_LIGHT0);
        glEnable(GL_LIGHTING);
        glEnable(GL_DEPTH_TEST);
        glRotated(30.0, 1.0, 0.0, 0.0);
        glRotated(-45.0, 0.0, 1.0, 0.0);
        glViewport(0, 0, oxtest::kSharedContextSize, oxtest::kSharedContextSize);
    }
    void TearDown() override {
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glPopAttrib();
        oxtest::glTest::TearDown();
    }

    /// Draws a frame with a fresh render drawer, as the scene does once per pass.
    bool drawFrame(iDrawable& drawable) {
        oxtest::clearTo(0.0f, 0.0f, 0.0f, 1.0f);
        openGL::glRenderDrawer drawer(&mHost);
        return drawable.draw(&drawer, eRendermode::opaque, nullptr);
    }

    /// Pixels of a 7×7 window around the projection of `p` that satisfy `hue`.
    static int countNear(const point3d& p, const std::function<bool(const oxtest::rgba8&)>& hue) {
        GLdouble modelview[16], projection[16], x = 0, y = 0, z = 0;
        GLint viewport[4];
        glGetDoublev(GL_MODELVIEW_MATRIX, modelview);
        glGetDoublev(GL_PROJECTION_MATRIX, projection);
        glGetIntegerv(GL_VIEWPORT, viewport);
        gluProject(p.x(), p.y(), p.z(), modelview, projection, viewport, &x, &y, &z);
        const auto window = oxtest::readRegion(int(x) - 3, int(y) - 3, 7, 7);
        int count = 0;
        for (int i = 0; i < 49; ++i) {
            const auto* px = &window.pixels[std::size_t(i) * 4];
            count += hue({px[0], px[1], px[2], px[3]}) ? 1 : 0;
        }
        return count;
    }

    testHost mHost;
};

bool isYellow(const oxtest::rgba8& c) { return c[0] > 80 && c[1] > 80 && c[2] < 30; }
bool isRed(const oxtest::rgba8& c) { return c[0] > 80 && c[1] < 30 && c[2] < 30; }
bool isGreen(const oxtest::rgba8& c) { return c[1] > 80 && c[0] < 30 && c[2] < 30; }
bool isBlue(const oxtest::rgba8& c) { return c[2] > 80 && c[0] < 30 && c[1] < 30; }

TEST_F(entityGlTest, triadShowsItsFourColoursWhereItsFrameAndTransformationPutIt) {
    matrix3d cs, extra;
    cs.setToTranslation({0.1, -0.1, 0.0});
    extra.setToTranslation({0.0, 0.1, 0.0});
    auto triad = csEntity::create(cs);
    triad->setTransformation(extra);
    const matrix3d placement = extra * cs;

    // Drawn twice: the first frame records the four lists, the second only replays them; the cube's
    // list must carry cs to the arrows in both.
    for (int frame = 0; frame < 2; ++frame) {
        SCOPED_TRACE(frame);
        ASSERT_TRUE(drawFrame(*triad));
        EXPECT_GE(countNear(placement * point3d(0.04, 0.05, -0.04), isYellow), 5);
        EXPECT_GE(countNear(placement * point3d(1.1, 0.0, 0.0), isRed), 5);
        EXPECT_GE(countNear(placement * point3d(0.0, 1.1, 0.0), isGreen), 5);
        EXPECT_GE(countNear(placement * point3d(0.0, 0.0, 1.1), isBlue), 5);
        EXPECT_EQ(countNear(placement * point3d(0.0, -1.0, 0.0), [](const oxtest::rgba8& c) { return c[0] + c[1] + c[2] > 0; }), 0);
        EXPECT_TRUE(oxtest::regionMatchesReference("entities/triad", 0, 0, oxtest::kSharedContextSize,
                                                   oxtest::kSharedContextSize, 48, 0.5));
    }
    EXPECT_EQ(oxtest::readGlInteger(GL_MATRIX_MODE), GL_MODELVIEW);
}

} // namespace
