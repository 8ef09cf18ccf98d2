#pragma once
// glFlatTriangles: emits mesh patches as flat-shaded GL_TRIANGLES, the geometry of the drawers'
// mesh operations.
//
// Per patch: n = (p1 − p0) × (p2 − p0); a face with |n| <= 1e-6 is skipped; otherwise n is
// normalised and given to each vertex. A triangle gives (p0, p1, p2), a quad (p0, p1, p2) and
// (p2, p3, p0) with the normal of its first three corners.
//
// The vertices are not sent one glNormal3f/glVertex3f pair at a time: they are collected as
// interleaved floats (GL_N3F_V3F) and drawn with glDrawArrays(GL_TRIANGLES) in chunks. Inside
// glNewList(GL_COMPILE) the driver copies the array contents into the list, so the list holds
// exactly the triangles, normals and order the immediate-mode form would give, and records many
// times faster (bench/drawMeshBench.cpp). Afterwards the current normal is the last face's, as it
// would be after immediate mode. Client array state, the array-buffer binding and the vertex
// array binding are restored.
#include "oxgeomesh.h"

#include <cstddef>

namespace oxGraphics::openGL {

class glFlatTriangles {
public:
    glFlatTriangles() = default;
    /// Draws whatever is still pending and restores the array state.
    ~glFlatTriangles();
    glFlatTriangles(const glFlatTriangles&) = delete;
    glFlatTriangles& operator=(const glFlatTriangles&) = delete;

    void add(const oxGeo::indexedTrianglePatch3d& patch);
    void add(const oxGeo::mesh3d& mesh) {
        for (const auto& patch : mesh.patches()) add(patch);
    }

    /// Triangles emitted so far (skipped faces not counted).
    std::size_t triangleCount() const { return mTriangles; }

    /// Triangles per glDrawArrays call.
    static constexpr std::size_t kChunkTriangles = 4096;

private:
    struct vertex_t {
        float n[3];
        float p[3];
    };
    void emit(const float n[3], const oxGeo::point3d& a, const oxGeo::point3d& b, const oxGeo::point3d& c);
    void flush();
    void beginArrays();
    void endArrays();

    vertex_t* mVertices = nullptr;   // the chunk buffer, taken on first use
    std::size_t mPending = 0;        // vertices in the buffer not yet drawn
    std::size_t mTriangles = 0;
    bool mArraysSet = false;
    int mPreviousVertexArray = 0;
    float mLastNormal[3] = {0.0f, 0.0f, 0.0f};
};

} // namespace oxGraphics::openGL
