#pragma once
// pickCapture: what a drawable emitted through a drawer, kept on the CPU so that a rectangle
// selection can be answered without selection mode.
//
// It holds the primitives exactly as the driver received them (single-precision vertices, the
// same degenerate faces left out, quads split the same way), and the operations a display list
// compiles besides geometry that change a selection's answer: name pushes and pops and matrix
// pushes, multiplications and pops, in emission order. Geometry between two such operations forms
// one batch; within a batch the order does not matter to selection mode (a hit only widens a depth
// interval), so a batch is free to store its primitives in hierarchy order.
//
// A capture is filled while its recording compiles and sealed when the drawer ends the recording;
// afterwards it is read only, apart from the hierarchy each large batch builds on its first pick.
// It is not replayable (the owner falls back to selection mode) when it is not sealed, when it
// contains something that is not captured (GLU quadrics, nested display lists), or when a vertex
// or matrix is not finite. Used on the GL thread only, like the recording that owns it.
#include "pickfrustum.h"
#include "pickhierarchy.h"

#include "oxgeomatrix.h"
#include "oxgeomesh.h"
#include "oxgeopoint.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace oxGraphics::openGL {

class pickCapture {
public:
    enum class opKind : std::uint8_t {
        filledTriangles, ///< triangles, 3 indices each
        wireTriangles,   ///< triangles drawn in polygon mode GL_LINE: their edges hit
        lines,           ///< segments, 2 indices each
        points,          ///< 1 index each
        pushName,
        popName,
        pushMatrix,
        multMatrix,
        popMatrix,
    };
    struct op_t {
        opKind kind;
        std::uint32_t value = 0; ///< the name, or the matrix's number
        std::size_t first = 0;   ///< geometry: where its corner indices start
        std::size_t count = 0;   ///< primitives
    };

    /// Polygon mode 1 is wire-frame, every other value filled (as the drawer sets it).
    /// `strictDegenerate`: faces with a normal shorter than 1e-6 are left out (the gradient mesh);
    /// otherwise also those of exactly 1e-6 (every other mesh operation).
    void addMesh(const oxGeo::mesh3d& mesh, int mode, bool strictDegenerate = false);
    void addPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode);
    void addPoints(const oxGeo::point3d* points, std::size_t count);
    void addLine(const oxGeo::point3d& a, const oxGeo::point3d& b);
    /// An open line strip compiled into a display list. A strip of a single vertex hits as a point
    /// there (the driver's list compiler keeps it as one; drawn immediately it draws nothing, so the
    /// capturing drawer does not add it).
    void addPolyline(const std::vector<oxGeo::point3d>& points);
    void pushName(std::uint32_t name);
    void popName();
    void pushMatrix();
    void multMatrix(const oxGeo::matrix3d& m);
    void popMatrix();
    /// Something was emitted that this capture does not reproduce.
    void markUnsupported() { mUnsupported = true; }
    void seal() { mSealed = true; }
    /// Empties it for reuse (the drawer's scratch capture of immediate primitives).
    void clear();

    bool isReplayable() const { return mSealed && !mUnsupported && !mNonFinite; }
    bool hasNonFinite() const { return mNonFinite; }
    bool isUnsupported() const { return mUnsupported; }
    const std::vector<op_t>& ops() const { return mOps; }
    /// Column-major, as the driver stores it (single precision).
    const double* matrix(std::uint32_t number) const { return &mMatrices[static_cast<std::size_t>(number) * 16]; }
    std::size_t triangleCount() const;

    /// Widens `span` by what geometry op `op` leaves inside the frustum. Batches of kIndexedBatch
    /// primitives or more are searched through their hierarchy, built on the first call.
    void hitTest(std::size_t op, const pickFrustum& frustum, pickDepthSpan_t& span) const;
    /// Builds every hierarchy now (what the first pick would do).
    void buildIndex() const;
    /// Memory held: vertices, indices, operations, hierarchies.
    std::size_t bytes() const;

    static constexpr std::size_t kIndexedBatch = 64;

private:
    std::uint32_t addVertex(const oxGeo::point3d& p);
    /// Starts a batch of `kind` unless the last operation already is one.
    op_t& batch(opKind kind);
    void buildHierarchy(std::size_t op) const;
    template <class Visit>
    void forEachPrimitive(const op_t& op, std::size_t first, std::size_t count, Visit&& visit) const;

    std::vector<float> mVertices;             // x, y, z
    mutable std::vector<std::uint32_t> mCorners; // reordered per batch when its hierarchy is built
    std::vector<op_t> mOps;
    std::vector<double> mMatrices;
    mutable std::vector<std::unique_ptr<pickHierarchy>> mHierarchies; // per op, null until built
    bool mSealed = false;
    bool mUnsupported = false;
    bool mNonFinite = false;
};

} // namespace oxGraphics::openGL
