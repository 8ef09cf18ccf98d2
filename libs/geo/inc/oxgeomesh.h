#pragma once
// oxGeo::mesh3d: an indexed mesh of triangles and quads; oxGeo::indexedTrianglePatch3d: one face
// of it as the drawing code walks it.
//
// The mesh stores its vertices and, per face, four vertex indices (the fourth is kNoIndex for a
// triangle). Patches are not stored: iterating builds each one on the fly from the mesh's
// vertex array and the face's indices, so corner access is an index load plus a point load, with
// no virtual call and no allocation, and a copied or moved mesh hands out patches of its own
// vertices without any rebinding pass. A patch refers to the vertex array of the mesh it came
// from: it stays valid while that mesh lives and is not modified (adding vertices may move the
// array).
#include "oxgeo_export.h"
#include "oxgeoboundbox.h"
#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeovector.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace oxGeo {

/// The four vertex indices of a face.
struct meshFace_t {
    std::uint32_t mIndex[4];
};

class indexedTrianglePatch3d {
public:
    static constexpr std::uint32_t kNoIndex = 0xFFFFFFFFu;

    indexedTrianglePatch3d() = default;
    indexedTrianglePatch3d(const point3d* vertices, const meshFace_t& face) : mVertices(vertices), mFace(face) {}

    bool isTriangle() const { return mFace.mIndex[3] == kNoIndex; }
    bool isQuad() const { return mFace.mIndex[3] != kNoIndex; }
    int cornerCount() const { return isTriangle() ? 3 : 4; }
    /// Corner i, 0 <= i < cornerCount(); not range-checked (this is the drawing hot path).
    const point3d& corner(int i) const { return mVertices[mFace.mIndex[i]]; }
    /// The mesh vertex index of corner i.
    std::uint32_t index(int i) const { return mFace.mIndex[i]; }
    /// (p1 − p0) × (p2 − p0): the face normal scaled by twice the triangle's area (for a quad,
    /// of its first three corners). Counter-clockwise corners give a normal towards the viewer.
    vector3d calculatePatchNormalNotNormalized() const {
        const point3d& p0 = corner(0);
        return (corner(1) - p0).cross(corner(2) - p0);
    }

private:
    const point3d* mVertices = nullptr;
    meshFace_t mFace{{kNoIndex, kNoIndex, kNoIndex, kNoIndex}};
};

class OX_GEO_API mesh3d {
public:
    /// Random-access iterator over the patches. Dereferencing yields a patch by value (built from
    /// the mesh's arrays), so `const auto& p = *it;` and `it->corner(0)` both work.
    class patchIterator {
    public:
        using iterator_concept = std::random_access_iterator_tag;
        using iterator_category = std::random_access_iterator_tag;
        using value_type = indexedTrianglePatch3d;
        using difference_type = std::ptrdiff_t;
        using reference = indexedTrianglePatch3d;
        struct pointer {
            indexedTrianglePatch3d mPatch;
            const indexedTrianglePatch3d* operator->() const { return &mPatch; }
        };

        patchIterator() = default;
        patchIterator(const point3d* vertices, const meshFace_t* face) : mVertices(vertices), mFace(face) {}

        reference operator*() const { return {mVertices, *mFace}; }
        pointer operator->() const { return {**this}; }
        reference operator[](difference_type n) const { return {mVertices, mFace[n]}; }

        patchIterator& operator++() { ++mFace; return *this; }
        patchIterator operator++(int) { patchIterator t(*this); ++mFace; return t; }
        patchIterator& operator--() { --mFace; return *this; }
        patchIterator operator--(int) { patchIterator t(*this); --mFace; return t; }
        patchIterator& operator+=(difference_type n) { mFace += n; return *this; }
        patchIterator& operator-=(difference_type n) { mFace -= n; return *this; }
        friend patchIterator operator+(patchIterator it, difference_type n) { return it += n; }
        friend patchIterator operator+(difference_type n, patchIterator it) { return it += n; }
        friend patchIterator operator-(patchIterator it, difference_type n) { return it -= n; }
        friend difference_type operator-(const patchIterator& a, const patchIterator& b) { return a.mFace - b.mFace; }
        friend bool operator==(const patchIterator& a, const patchIterator& b) { return a.mFace == b.mFace; }
        friend auto operator<=>(const patchIterator& a, const patchIterator& b) { return a.mFace <=> b.mFace; }

    private:
        const point3d* mVertices = nullptr;
        const meshFace_t* mFace = nullptr;
    };

    /// The patches as a range, for range-for.
    struct patchRange {
        patchIterator mBegin, mEnd;
        patchIterator begin() const { return mBegin; }
        patchIterator end() const { return mEnd; }
        std::size_t size() const { return static_cast<std::size_t>(mEnd - mBegin); }
    };

    mesh3d() = default;

    /// Returns the new vertex's index.
    std::uint32_t addVertex(const point3d& p) {
        mVertices.push_back(p);
        return static_cast<std::uint32_t>(mVertices.size() - 1);
    }
    /// Indices must name existing vertices; a face with an out-of-range index asserts and is
    /// not added, so patches never read outside the vertex array.
    void addTriangle(std::uint32_t i0, std::uint32_t i1, std::uint32_t i2);
    void addQuad(std::uint32_t i0, std::uint32_t i1, std::uint32_t i2, std::uint32_t i3);
    void reserve(std::size_t vertices, std::size_t patches) {
        mVertices.reserve(vertices);
        mFaces.reserve(patches);
    }
    void clear() {
        mVertices.clear();
        mFaces.clear();
    }

    const std::vector<point3d>& vertices() const { return mVertices; }
    std::size_t vertexCount() const { return mVertices.size(); }
    std::size_t patchCount() const { return mFaces.size(); }
    /// No vertices and no patches.
    bool empty() const { return mVertices.empty() && mFaces.empty(); }
    indexedTrianglePatch3d patch(std::size_t i) const { return {mVertices.data(), mFaces[i]}; }
    const std::vector<meshFace_t>& faces() const { return mFaces; }

    patchIterator patchesBegin() const { return {mVertices.data(), mFaces.data()}; }
    patchIterator patchesEnd() const { return {mVertices.data(), mFaces.data() + mFaces.size()}; }
    patchIterator begin() const { return patchesBegin(); }
    patchIterator end() const { return patchesEnd(); }
    patchRange patches() const { return {patchesBegin(), patchesEnd()}; }

    /// Transforms every vertex. A mirroring matrix also mirrors the faces' orientation.
    mesh3d& transformBy(const matrix3d& m);
    /// The box of all vertices; invalid for a mesh without vertices.
    boundBox3d boundingBox() const;

private:
    friend class mesh3dManipulator;
    std::vector<point3d> mVertices;
    std::vector<meshFace_t> mFaces;
};

static_assert(std::random_access_iterator<mesh3d::patchIterator>);

/// Edits of a mesh beyond appending.
class OX_GEO_API mesh3dManipulator {
public:
    /// Removes all vertices and patches and gives their memory back.
    static void clearMesh(mesh3d& mesh);
};

} // namespace oxGeo
