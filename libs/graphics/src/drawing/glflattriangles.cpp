#include "glflattriangles.h"

#include <GL/glew.h>

#include <cmath>
#include <memory>

namespace oxGraphics::openGL {

namespace {

constexpr double kDegenerateNormal = 1e-6;

} // namespace

glFlatTriangles::~glFlatTriangles() {
    flush();
    endArrays();
}

void glFlatTriangles::add(const oxGeo::indexedTrianglePatch3d& patch) {
    const oxGeo::point3d& p0 = patch.corner(0);
    const oxGeo::point3d& p1 = patch.corner(1);
    const oxGeo::point3d& p2 = patch.corner(2);
    const oxGeo::vector3d n = (p1 - p0).cross(p2 - p0);
    const double length = n.length();
    if (length <= kDegenerateNormal) return;
    const float unit[3] = {static_cast<float>(n.x() / length), static_cast<float>(n.y() / length),
                           static_cast<float>(n.z() / length)};
    emit(unit, p0, p1, p2);
    if (patch.isQuad()) emit(unit, p2, patch.corner(3), p0);
}

void glFlatTriangles::emit(const float n[3], const oxGeo::point3d& a, const oxGeo::point3d& b,
                           const oxGeo::point3d& c) {
    if (mVertices == nullptr) {
        // One buffer per thread, reused by every mesh drawn on it: drawing a single patch must not
        // allocate a chunk.
        thread_local std::unique_ptr<vertex_t[]> buffer(new vertex_t[kChunkTriangles * 3]);
        mVertices = buffer.get();
    }
    vertex_t* v = mVertices + mPending;
    for (const oxGeo::point3d* p : {&a, &b, &c}) {
        v->n[0] = n[0];
        v->n[1] = n[1];
        v->n[2] = n[2];
        v->p[0] = static_cast<float>(p->x());
        v->p[1] = static_cast<float>(p->y());
        v->p[2] = static_cast<float>(p->z());
        ++v;
    }
    mPending += 3;
    ++mTriangles;
    mLastNormal[0] = n[0];
    mLastNormal[1] = n[1];
    mLastNormal[2] = n[2];
    if (mPending == kChunkTriangles * 3) flush();
}

void glFlatTriangles::flush() {
    if (mPending == 0) return;
    beginArrays();
    // The pointer is set per chunk: glInterleavedArrays is not compiled into lists, and the
    // driver dereferences the arrays at glDrawArrays time (also while compiling).
    glInterleavedArrays(GL_N3F_V3F, 0, mVertices);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(mPending));
    mPending = 0;
}

void glFlatTriangles::beginArrays() {
    if (mArraysSet) return;
    mArraysSet = true;
    // Client arrays need no vertex array object and no array buffer bound; both bindings and the
    // array enables are put back in endArrays. None of these calls is compiled into a list.
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &mPreviousVertexArray);
    if (mPreviousVertexArray != 0) glBindVertexArray(0);
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void glFlatTriangles::endArrays() {
    if (!mArraysSet) return;
    mArraysSet = false;
    glPopClientAttrib();
    if (mPreviousVertexArray != 0) glBindVertexArray(static_cast<GLuint>(mPreviousVertexArray));
    // Immediate mode would leave the last face's normal current; array drawing leaves it undefined.
    glNormal3fv(mLastNormal);
}

} // namespace oxGraphics::openGL
