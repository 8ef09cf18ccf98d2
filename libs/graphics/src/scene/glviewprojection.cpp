#include "glviewprojection.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>

namespace oxGraphics::openGL {

void glViewProjection::resize(int width, int height, double viewSize) {
    mWidth = width;
    mHeight = height;
    if (width <= 0 || height <= 0) return;
    const double w = width, h = height;
    // A size that is no number keeps the one there is; any other is held to what the depth range
    // and single-precision drawing can still resolve, so no zoom ever leaves a blank view behind.
    if (!std::isfinite(viewSize) || viewSize <= 0.0) viewSize = mViewSize > 0.0 ? mViewSize : kDefaultViewSize;
    viewSize = std::clamp(viewSize, kMinViewSize, kMaxViewSize);
    mViewSize = viewSize;
    if (w <= h) {
        mExtentWidth = (w / h) * viewSize;
        mExtentHeight = viewSize;
    } else {
        mExtentWidth = viewSize;
        mExtentHeight = (h / w) * viewSize;
    }
}

void glViewProjection::applyProjection() const {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-mExtentWidth / 2, mExtentWidth / 2, -mExtentHeight / 2, mExtentHeight / 2, -100.0 * mViewSize,
            100.0 * mViewSize);
    glMatrixMode(GL_MODELVIEW);
}

oxGeo::point2d glViewProjection::eyeToWindow(const oxGeo::point3d& eye) const {
    if (!hasExtents()) return {};
    return {(eye.x() / mExtentWidth + 0.5) * mWidth, (0.5 - eye.y() / mExtentHeight) * mHeight};
}

oxGeo::point3d glViewProjection::windowToEye(double x, double y, double z) const {
    if (mWidth == 0 || mHeight == 0) return {0.0, 0.0, z};
    return {(x / mWidth - 0.5) * mExtentWidth, (0.5 - y / mHeight) * mExtentHeight, z};
}

oxGeo::point2d glViewProjection::worldToWindow(const oxGeo::point3d& world, const oxGeo::matrix3d& modelView) const {
    return eyeToWindow(modelView * world);
}

bool glViewProjection::viewRayAt(double x, double y, const oxGeo::matrix3d& modelView, oxGeo::ray3d& out) const {
    if (!hasExtents()) return false;
    oxGeo::matrix3d eyeToWorld;
    if (!modelView.inverse(eyeToWorld)) return false;
    const oxGeo::point3d nearPoint = windowToEye(x, y, 100.0 * mViewSize);
    const oxGeo::point3d farPoint = windowToEye(x, y, -100.0 * mViewSize);
    const oxGeo::point3d origin = eyeToWorld * nearPoint;
    const oxGeo::vector3d direction = eyeToWorld * farPoint - origin;
    if (direction.length() == 0.0) return false;
    out = oxGeo::ray3d(origin, direction.norm());
    return true;
}

} // namespace oxGraphics::openGL
