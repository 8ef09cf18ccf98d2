#pragma once
#include "oxcamera.h"
#include "oxscenetypes.h"

#include "oxgeomatrix.h"

#include <mutex>

namespace oxGraphics::openGL {

/// The one camera implementation. The scene owns one and shares it; saved views are copies.
///
/// Initial state (chosen for a CAD view of a model around the origin): look-at mode, eye at
/// (0, 0, 1) looking at the origin with Y up, so the model's X runs right and Y up on screen; Euler
/// angles 0 (the top view in angles mode); identity rotation, zero translation, unit scale.
///
/// The scene switches the mode with setAnglesMode (planar views); iCamera offers no setter.
///
/// The animated view transfer writes rotation, translation and scale from a worker thread while
/// the host may draw. Every field is guarded by one mutex; applyModelView and the scene read a
/// consistent copy through modelState(). The reference-returning getters are for the thread that
/// owns the view.
class glCamera final : public iCamera, public iSavedView, public ox::refObj {
public:
    glCamera();
    glCamera(const glCamera& other);
    glCamera& operator=(const glCamera&) = delete;

    void setEye(const oxGeo::point3d& eye) override;
    const oxGeo::point3d& eye() const override { return mEye; }
    void setAzimuth(ox::angle azimuth) override;
    ox::angle azimuth() const override;
    void setElevation(ox::angle elevation) override;
    ox::angle elevation() const override;
    void setTwist(ox::angle twist) override;
    ox::angle twist() const override;
    void setTopAngles() override { setAngles(0, 0, 0); }
    void setBottomAngles() override { setAngles(0, 180, 0); }
    void setFrontAngles() override { setAngles(0, 90, 0); }
    void setBackAngles() override { setAngles(0, 90, -180); }
    void setLeftAngles() override { setAngles(0, 90, 90); }
    void setRightAngles() override { setAngles(0, 90, -90); }
    void clone(iSavedView** out) const override;
    void assign(iSavedView* view) override;
    bool anglesMode() const override;
    void setRotation(const oxGeo::quaternion& rotation) override;
    const oxGeo::quaternion& rotation() const override { return mRotation; }
    void setTranslation(const oxGeo::vector3d& translation) override;
    const oxGeo::vector3d& translation() const override { return mTranslation; }
    void setScale(const oxGeo::vector3d& scale) override;
    const oxGeo::vector3d& scale() const override { return mScale; }

    void setAnglesMode(bool anglesMode);
    const oxGeo::vector3d& up() const { return mUp; }
    const oxGeo::vector3d& centre() const { return mCentre; }
    void setLookAt(const oxGeo::point3d& eye, const oxGeo::vector3d& centre, const oxGeo::vector3d& up);

    /// Rotation, translation and scale read together under the lock.
    using modelState_t = cameraModelState_t;
    modelState_t modelState() const;
    void setModelState(const modelState_t& state);

    /// The model transform as one matrix: translation · scale · rotation.
    oxGeo::matrix3d modelTransform() const;
    /// The whole model-view matrix that applyModelView loads, computed without GL.
    oxGeo::matrix3d modelViewMatrix() const;

    /// Loads the model-view matrix into GL (GL_MODELVIEW).
    void applyModelView() const;
    /// Multiplies the current GL matrix by translation, scale and rotation.
    void applyModelTransform() const;

    /// Turns centre and up about the eye by q; the eye stays.
    void rotateAboutEye(const oxGeo::quaternion& q);
    /// Moves eye and centre by d.
    void pan(const oxGeo::vector3d& d);
    /// Clamps each scale component into [0.0001, 10000] and normalises the rotation.
    void normalize();

private:
    void setAngles(float azimuth, float elevation, float twist);
    void copyFieldsFrom(const glCamera& other);
    static void applyModelTransform(const modelState_t& state);

    mutable std::mutex mMutex;
    float mAzimuth = 0.0f;   // degrees
    float mElevation = 0.0f; // degrees
    float mTwist = 0.0f;     // degrees
    oxGeo::point3d mEye;
    bool mAnglesMode = false;
    oxGeo::vector3d mUp;
    oxGeo::vector3d mCentre;
    oxGeo::quaternion mRotation;
    oxGeo::vector3d mTranslation;
    oxGeo::vector3d mScale;
};

/// The translation that keeps `pivot` at the same place on screen when the model rotation of
/// `state` changes from `from` to `to` (the view after the model transform is unchanged).
oxGeo::vector3d translationKeepingPivot(const cameraModelState_t& state, const oxGeo::quaternion& from,
                                        const oxGeo::quaternion& to, const oxGeo::point3d& pivot);

/// Rotation, translation and scale interpolated at f in [0, 1] (rotation along the shorter
/// way, normalised); f >= 1 gives `to` exactly.
cameraModelState_t interpolateModelState(const cameraModelState_t& from, const cameraModelState_t& to,
                                         double f);

} // namespace oxGraphics::openGL
