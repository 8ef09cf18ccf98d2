// The camera's own arithmetic, without GL: angles, presets, normalising, saved views and moves.
// What it hands to GL is checked in scene/cameraGlTest.cpp.
#include "scene/glcamera.h"

#include <gtest/gtest.h>

namespace {

using oxGraphics::openGL::glCamera;
using oxGeo::point3d;
using oxGeo::quaternion;
using oxGeo::vector3d;

TEST(cameraTest, anglesNormaliseAndPresetsSetAllThree) {
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

TEST(cameraTest, normalizeClampsScaleAndNormalisesRotation) {
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

TEST(cameraTest, cloneCopiesEveryFieldAndAssignIgnoresItselfAndStrangers) {
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

TEST(cameraTest, rotateAboutEyeKeepsTheEyeAndPanMovesBoth) {
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
