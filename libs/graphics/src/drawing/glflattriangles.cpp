#include "glflattriangles.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {

namespace {

constexpr double kDegenerateNormal = 1e-6;

inline void vertex(const oxGeo::point3d& p) {
    glVertex3f(static_cast<float>(p.x()), static_cast<float>(p.y()), static_cast<float>(p.z()));
}

} // namespace

glFlatTriangles::~glFlatTriangles() {
    if (mOpen) glEnd();
}

void glFlatTriangles::beginTriangle() {
    if (mOpen && mInBlock == kChunkTriangles) {
        glEnd();
        glPolygonMode(GL_FRONT_AND_BACK, mPolygonMode);   // a no-op for the state, a cut for the list compiler
        mOpen = false;
    }
    if (!mOpen) {
        glBegin(GL_TRIANGLES);
        mOpen = true;
        mInBlock = 0;
    }
    ++mInBlock;
    ++mTriangles;
}

void glFlatTriangles::add(const oxGeo::indexedTrianglePatch3d& patch) {
    const oxGeo::point3d& p0 = patch.corner(0);
    const oxGeo::point3d& p1 = patch.corner(1);
    const oxGeo::point3d& p2 = patch.corner(2);
    const oxGeo::vector3d n = (p1 - p0).cross(p2 - p0);
    const double length = n.length();
    if (length <= kDegenerateNormal) return;
    const float normal[3] = {static_cast<float>(n.x() / length), static_cast<float>(n.y() / length),
                             static_cast<float>(n.z() / length)};
    forEachTriangle(patch, [&](const oxGeo::point3d& a, const oxGeo::point3d& b, const oxGeo::point3d& c) {
        emitTriangle(normal, a, b, c);
    });
}

void glFlatTriangles::emitTriangle(const float (&normal)[3], const oxGeo::point3d& a, const oxGeo::point3d& b,
                                   const oxGeo::point3d& c) {
    beginTriangle();
    // The current normal holds for every vertex that follows, so once per flat triangle gives
    // the driver the same vertices for a third of the calls.
    glNormal3f(normal[0], normal[1], normal[2]);
    vertex(a);
    vertex(b);
    vertex(c);
}

} // namespace oxGraphics::openGL
