#pragma once
// glFlatTriangles: emits mesh patches as flat-shaded GL_TRIANGLES, the geometry of the drawers'
// mesh operations.
//
// Per patch: n = (p1 − p0) × (p2 − p0); a face with |n| <= 1e-6 is skipped; otherwise n is
// normalised and made current before the triangle's three vertices (glNormal3f once, then
// glVertex3f for each corner). A triangle gives (p0, p1, p2), a quad (p0, p1, p2) and (p2, p3, p0)
// with the normal of its first three corners. Every triangle reaches GL through emitTriangle.
//
// Recording speed: while a display list is compiled, drivers collect the vertices of consecutive
// glBegin/glEnd blocks and convert them when a non-vertex command arrives (Mesa: into an indexed
// vertex buffer, de-duplicating through a hash table). One block of a million triangles makes that
// conversion work on one huge store; closing the block every kChunkTriangles triangles and
// re-stating the polygon mode that is already set keeps each conversion small. With the same
// triangles, normals and order this recorded up to 40% faster in our measurements and never
// slower, and replays as fast (bench/drawMeshBench.cpp). Client arrays with glDrawArrays inside
// the list were measured too: the driver dereferences them vertex by vertex and gains nothing.
#include "oxgeomesh.h"

#include <cstddef>

namespace oxGraphics::openGL {

/// The triangles of a patch, in drawing order: (p0, p1, p2), and for a quad also (p2, p3, p0).
template <class Triangle>
void forEachTriangle(const oxGeo::indexedTrianglePatch3d& patch, Triangle&& triangle) {
    triangle(patch.corner(0), patch.corner(1), patch.corner(2));
    if (patch.isQuad()) triangle(patch.corner(2), patch.corner(3), patch.corner(0));
}

class glFlatTriangles {
public:
    static constexpr std::size_t kChunkTriangles = 4096;

    /// `polygonMode`: GL_FILL or GL_LINE, the mode the caller has set for the whole emission;
    /// it is re-stated between chunks and so must already be current.
    explicit glFlatTriangles(unsigned int polygonMode) : mPolygonMode(polygonMode) {}
    /// Closes the open block.
    ~glFlatTriangles();
    glFlatTriangles(const glFlatTriangles&) = delete;
    glFlatTriangles& operator=(const glFlatTriangles&) = delete;

    void add(const oxGeo::indexedTrianglePatch3d& patch);
    void add(const oxGeo::mesh3d& mesh) {
        for (const auto& patch : mesh.patches()) add(patch);
    }

    /// Triangles emitted so far (skipped faces not counted).
    std::size_t triangleCount() const { return mTriangles; }

private:
    /// The one place a triangle is emitted: its normal, then its corners in order.
    void emitTriangle(const float (&normal)[3], const oxGeo::point3d& a, const oxGeo::point3d& b,
                      const oxGeo::point3d& c);
    void beginTriangle();

    unsigned int mPolygonMode;
    std::size_t mTriangles = 0;
    std::size_t mInBlock = 0;
    bool mOpen = false;
};

} // namespace oxGraphics::openGL
