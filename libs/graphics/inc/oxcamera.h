#pragma once
// The camera of a scene and the opaque saved-view token.
#include "oxgraphics_export.h"

#include "oxangle.h"
#include "oxgeopoint.h"
#include "oxgeoquaternion.h"
#include "oxgeovector.h"
#include "oxrefobj.h"

namespace oxGraphics {

/// A saved copy of a camera; obtained from scene::saveView, given back to scene::restoreView.
class OX_GRAPHICS_API iSavedView : public virtual ox::iRefObj {};

/// The camera: an eye with look-at centre and up vector, three Euler angles for the planar
/// ("angles") mode, and a model transform of rotation, translation and per-axis scale.
/// Angles are normalised into (-180°, 180°] when set.
class OX_GRAPHICS_API iCamera : public virtual ox::iRefObj {
public:
    virtual void setEye(const oxGeo::point3d& eye) = 0;                 // 3
    virtual const oxGeo::point3d& eye() const = 0;                      // 4
    virtual void setAzimuth(ox::angle azimuth) = 0;                     // 5
    virtual ox::angle azimuth() const = 0;                              // 6
    virtual void setElevation(ox::angle elevation) = 0;                 // 7
    virtual ox::angle elevation() const = 0;                            // 8
    virtual void setTwist(ox::angle twist) = 0;                         // 9
    virtual ox::angle twist() const = 0;                                // 10
    virtual void setTopAngles() = 0;                                    // 11
    virtual void setBottomAngles() = 0;                                 // 12
    virtual void setFrontAngles() = 0;                                  // 13
    virtual void setBackAngles() = 0;                                   // 14
    virtual void setLeftAngles() = 0;                                   // 15
    virtual void setRightAngles() = 0;                                  // 16
    /// A new independent copy of this camera in *out, with one reference for the caller.
    virtual void clone(iSavedView** out) const = 0;                     // 17
    /// Copies every field from `view` when it is another camera; otherwise nothing.
    virtual void assign(iSavedView* view) = 0;                          // 18
    virtual bool anglesMode() const = 0;                                // 19
    virtual void setRotation(const oxGeo::quaternion& rotation) = 0;    // 20
    virtual const oxGeo::quaternion& rotation() const = 0;              // 21
    virtual void setTranslation(const oxGeo::vector3d& translation) = 0; // 22
    virtual const oxGeo::vector3d& translation() const = 0;             // 23
    virtual void setScale(const oxGeo::vector3d& scale) = 0;            // 24
    virtual const oxGeo::vector3d& scale() const = 0;                   // 25
};

} // namespace oxGraphics
