#pragma once
// The orthographic projection of one view and the conversions between window pixels, eye space
// and world space. Window pixels count y downwards from the top-left corner, as mouse positions
// do; pixel (x, y) names the point at the pixel's top-left corner.

#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeoray.h"

namespace oxGraphics::openGL {

class glViewProjection {
public:
    /// The view size used when the first one given is not a positive number.
    static constexpr double kDefaultViewSize = 100.0;
    /// The range of view sizes: from far below any machined feature to well beyond the largest
    /// coordinate the library treats as geometry (oxGeo::kMaxCoordinate).
    static constexpr double kMinViewSize = 1e-9;
    static constexpr double kMaxViewSize = 1e17;

    /// Stores the viewport and, only when both sides are positive, the extents: with s the view
    /// size, the longer window side spans s eye units. A zero or negative side keeps the previous
    /// extents. A view size that is not a positive finite number keeps the previous one; any other
    /// is clamped to [kMinViewSize, kMaxViewSize].
    void resize(int width, int height, double viewSize);

    int width() const { return mWidth; }
    int height() const { return mHeight; }
    /// The view size the current extents were made from.
    double viewSize() const { return mViewSize; }
    /// Width and height of the visible area in eye units.
    double extentWidth() const { return mExtentWidth; }
    double extentHeight() const { return mExtentHeight; }
    bool hasExtents() const { return mExtentWidth > 0.0 && mExtentHeight > 0.0; }

    /// Loads glOrtho(-W/2, W/2, -H/2, H/2, -100 s, 100 s) into GL_PROJECTION; the depth range
    /// depends on the view size only, so zooming never clips the model.
    void applyProjection() const;

    /// Eye space to window pixels (x right, y down); z is dropped.
    oxGeo::point2d eyeToWindow(const oxGeo::point3d& eye) const;
    /// The eye-space point at window pixel (x, y) and eye depth z.
    oxGeo::point3d windowToEye(double x, double y, double z) const;

    oxGeo::point2d worldToWindow(const oxGeo::point3d& world, const oxGeo::matrix3d& modelView) const;
    /// The viewing ray through window pixel (x, y) in world space: it starts on the near plane
    /// and runs into the screen (unit direction). False when the view has no extents yet or the
    /// model-view cannot be inverted.
    bool viewRayAt(double x, double y, const oxGeo::matrix3d& modelView, oxGeo::ray3d& out) const;

private:
    int mWidth = 0;
    int mHeight = 0;
    double mViewSize = 0.0;
    double mExtentWidth = 0.0;
    double mExtentHeight = 0.0;
};

} // namespace oxGraphics::openGL
