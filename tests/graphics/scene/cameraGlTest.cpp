// The camera's matrices as GL receives them: what applyModelView loads against the camera's own
// arithmetic (scene/cameraTest.cpp) and against GL's matrix operations.
#include "scene/glcamera.h"

#include "glTestFixture.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <array>

namespace {

using oxGraphics::openGL::glCamera;
using oxGeo::matrix3d;
using oxGeo::point3d;
using oxGeo::quaternion;
using oxGeo::vector3d;

std::array<double, 16> glModelView() {
    std::array<double, 16> m{};
    glGetDoublev(GL_MODELVIEW_MATRIX, m.data());
    return m;
}

// GL's column-major array against a matrix3d (element (r, c) at c*4 + r).
void expectGlMatrix(const std::array<double, 16>& gl, const matrix3d& expected, double tolerance) {
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) EXPECT_NEAR(gl[c * 4 + r], expected(r, c), tolerance) << "element " << r << "," << c;
}

class cameraGlTest : public oxtest::glTest {};

TEST_F(cameraGlTest, lookAtModelViewMatchesItsCpuFormAndPassesTheRotationTransposed) {
    glCamera camera;
    const quaternion q(vector3d(1, 2, 3), ox::angle::fromDegree(37));
    camera.setRotation(q);
    camera.setTranslation(vector3d(1, -2, 0.5));
    camera.setScale(vector3d(2, 3, 4));
    camera.setLookAt(point3d(1, 2, 10), vector3d(1, 2, 0), vector3d(0, 1, 0));
    camera.applyModelView();
    expectGlMatrix(glModelView(), camera.modelViewMatrix(), 1e-5);
    EXPECT_TRUE(glIsEnabled(GL_NORMALIZE));

    // The model transform alone: translation, scale, then the quaternion's stored matrix handed
    // over row by row, so GL holds its transpose.
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    camera.applyModelTransform();
    matrix3d expected;
    expected.setToTranslation(vector3d(1, -2, 0.5));
    matrix3d scale;
    scale(0, 0) = 2;
    scale(1, 1) = 3;
    scale(2, 2) = 4;
    matrix3d transposed = q.matrixRotation();
    transposed.transposeIt();
    expectGlMatrix(glModelView(), expected * scale * transposed, 1e-5);
    // ... which is the rotation the quaternion stands for.
    const vector3d turned = camera.modelTransform() * vector3d(1, 0, 0);
    const vector3d r = q.rotate(vector3d(1, 0, 0));
    EXPECT_TRUE(turned.isEqualTo(vector3d(2 * r.x(), 3 * r.y(), 4 * r.z()), 1e-9));
}

TEST_F(cameraGlTest, anglesModeUsesEyeAsZoomAndAPositiveTwist) {
    glCamera camera;
    camera.setAnglesMode(true);
    camera.setEye(point3d(3, 4, 2));
    camera.setAzimuth(ox::angle::fromDegree(30));
    camera.setElevation(ox::angle::fromDegree(60));
    camera.setTwist(ox::angle::fromDegree(20));
    glDisable(GL_NORMALIZE);
    camera.applyModelView();
    const auto gl = glModelView();
    expectGlMatrix(gl, camera.modelViewMatrix(), 1e-5);
    EXPECT_FALSE(glIsEnabled(GL_NORMALIZE)); // no model transform in this mode

    // Independent check of the order and signs: scale 1/2, shift, Rz(-30) Rx(-60) Rz(+20).
    glLoadIdentity();
    glScaled(0.5, 0.5, 0.5);
    glTranslated(-3, -4, 0);
    glRotated(-30, 0, 0, 1);
    glRotated(-60, 1, 0, 0);
    glRotated(20, 0, 0, 1);
    const auto reference = glModelView();
    for (int i = 0; i < 16; ++i) EXPECT_NEAR(gl[i], reference[i], 1e-5);
}

} // namespace
