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

class cameraTest : public oxtest::glTest {};

TEST_F(cameraTest, lookAtModelViewMatchesItsCpuFormAndPassesTheRotationTransposed) {
    ox::refPtr<glCamera> camera(new glCamera);
    const quaternion q(vector3d(1, 2, 3), ox::angle::fromDegree(37));
    camera->setRotation(q);
    camera->setTranslation(vector3d(1, -2, 0.5));
    camera->setScale(vector3d(2, 3, 4));
    camera->setLookAt(point3d(1, 2, 10), vector3d(1, 2, 0), vector3d(0, 1, 0));
    camera->applyModelView();
    expectGlMatrix(glModelView(), camera->modelViewMatrix(), 1e-5);
    EXPECT_TRUE(glIsEnabled(GL_NORMALIZE));

    // The model transform alone: translation, scale, then the quaternion's stored matrix handed
    // over row by row, so GL holds its transpose.
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    camera->applyModelTransform();
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
    const vector3d turned = camera->modelTransform() * vector3d(1, 0, 0);
    const vector3d r = q.rotate(vector3d(1, 0, 0));
    EXPECT_TRUE(turned.isEqualTo(vector3d(2 * r.x(), 3 * r.y(), 4 * r.z()), 1e-9));
}

TEST_F(cameraTest, anglesModeUsesEyeAsZoomAndAPositiveTwist) {
    ox::refPtr<glCamera> camera(new glCamera);
    camera->setAnglesMode(true);
    camera->setEye(point3d(3, 4, 2));
    camera->setAzimuth(ox::angle::fromDegree(30));
    camera->setElevation(ox::angle::fromDegree(60));
    camera->setTwist(ox::angle::fromDegree(20));
    glDisable(GL_NORMALIZE);
    camera->applyModelView();
    const auto gl = glModelView();
    expectGlMatrix(gl, camera->modelViewMatrix(), 1e-5);
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

TEST_F(cameraTest, anglesNormaliseAndPresetsSetAllThree) {
    ox::refPtr<glCamera> camera(new glCamera);
    camera->setElevation(ox::angle::fromDegree(450));
    EXPECT_NEAR(camera->elevation().degree(), 90.0, 1e-4);
    camera->setAzimuth(ox::angle::fromDegree(-270));
    EXPECT_NEAR(camera->azimuth().degree(), 90.0, 1e-4);

    struct preset { void (glCamera::*set)(); double azimuth, elevation, twist; };
    const preset presets[] = {{&glCamera::setTopAngles, 0, 0, 0},     {&glCamera::setBottomAngles, 0, 180, 0},
                              {&glCamera::setFrontAngles, 0, 90, 0},  {&glCamera::setBackAngles, 0, 90, -180},
                              {&glCamera::setLeftAngles, 0, 90, 90},  {&glCamera::setRightAngles, 0, 90, -90}};
    for (const auto& p : presets) {
        camera->setTwist(ox::angle::fromDegree(11));
        (camera.get()->*p.set)();
        EXPECT_NEAR(camera->azimuth().degree(), p.azimuth, 1e-4);
        EXPECT_NEAR(camera->elevation().degree(), p.elevation, 1e-4);
        EXPECT_NEAR(camera->twist().degree(), p.twist, 1e-4);
    }
}

TEST_F(cameraTest, normalizeClampsScaleAndNormalisesRotation) {
    ox::refPtr<glCamera> camera(new glCamera);
    camera->setScale(vector3d(0, 5, 20000));
    camera->setRotation(quaternion(2, 0, 0, 0));
    camera->normalize();
    EXPECT_TRUE(camera->scale().isEqualTo(vector3d(0.0001, 5, 10000), 0.0));
    EXPECT_TRUE(camera->rotation().isEqualTo(quaternion(), 1e-15));
    camera->setScale(vector3d(-1, 0.0001, 10000));
    camera->normalize();
    EXPECT_TRUE(camera->scale().isEqualTo(vector3d(0.0001, 0.0001, 10000), 0.0));
}

TEST_F(cameraTest, cloneCopiesEveryFieldAndAssignIgnoresItselfAndStrangers) {
    ox::refPtr<glCamera> camera(new glCamera);
    camera->setAnglesMode(true);
    camera->setEye(point3d(1, 2, 3));
    camera->setTwist(ox::angle::fromDegree(45));
    camera->setRotation(quaternion(vector3d(0, 0, 1), ox::angle::fromDegree(10)));
    camera->setTranslation(vector3d(4, 5, 6));
    camera->setScale(vector3d(7, 8, 9));

    oxGraphics::iSavedView* saved = nullptr;
    camera->clone(&saved);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(saved->refCount(), 1u);
    auto* copy = dynamic_cast<glCamera*>(saved);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, camera.get());
    EXPECT_TRUE(copy->anglesMode());
    EXPECT_TRUE(copy->eye().isEqualTo(point3d(1, 2, 3), 0.0));
    EXPECT_NEAR(copy->twist().degree(), 45.0, 1e-4);
    EXPECT_TRUE(copy->scale().isEqualTo(vector3d(7, 8, 9), 0.0));

    camera->setEye(point3d(0, 0, 9));
    camera->setTranslation(vector3d());
    camera->assign(saved);
    EXPECT_TRUE(camera->eye().isEqualTo(point3d(1, 2, 3), 0.0));
    EXPECT_TRUE(camera->translation().isEqualTo(vector3d(4, 5, 6), 0.0));

    camera->setEye(point3d(5, 5, 5));
    camera->assign(camera.get());  // itself
    camera->assign(nullptr);
    struct stranger : oxGraphics::iSavedView, ox::refObj {};
    ox::refPtr<stranger> other(new stranger);
    camera->assign(other.get());
    EXPECT_TRUE(camera->eye().isEqualTo(point3d(5, 5, 5), 0.0));
    saved->release();
}

TEST_F(cameraTest, rotateAboutEyeKeepsTheEyeAndPanMovesBoth) {
    ox::refPtr<glCamera> camera(new glCamera);
    camera->setLookAt(point3d(0, 0, 5), vector3d(0, 0, 0), vector3d(0, 1, 0));
    const quaternion q(vector3d(0, 1, 0), ox::angle::fromDegree(90));
    camera->rotateAboutEye(q);
    const vector3d expectedCentre = q.matrixRotation() * vector3d(0, 0, -5) + vector3d(0, 0, 5);
    EXPECT_TRUE(camera->eye().isEqualTo(point3d(0, 0, 5), 0.0));
    EXPECT_TRUE(camera->centre().isEqualTo(expectedCentre, 1e-12));
    EXPECT_NEAR((camera->centre() - vector3d(0, 0, 5)).length(), 5.0, 1e-12);
    EXPECT_TRUE(camera->up().isEqualTo(vector3d(0, 1, 0), 1e-12));

    camera->pan(vector3d(1, 2, 3));
    EXPECT_TRUE(camera->eye().isEqualTo(point3d(1, 2, 8), 1e-12));
    EXPECT_TRUE(camera->centre().isEqualTo(expectedCentre + vector3d(1, 2, 3), 1e-12));
}

} // namespace
