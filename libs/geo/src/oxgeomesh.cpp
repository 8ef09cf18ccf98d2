#include "oxgeomesh.h"

#include "oxassert.h"

namespace oxGeo {

void mesh3d::addTriangle(std::uint32_t i0, std::uint32_t i1, std::uint32_t i2) {
    const std::size_t n = mVertices.size();
    if (i0 >= n || i1 >= n || i2 >= n) {
        OX_ASSERT(i0 < n && i1 < n && i2 < n);
        return;
    }
    mFaces.push_back({{i0, i1, i2, indexedTrianglePatch3d::kNoIndex}});
}

void mesh3d::addQuad(std::uint32_t i0, std::uint32_t i1, std::uint32_t i2, std::uint32_t i3) {
    const std::size_t n = mVertices.size();
    if (i0 >= n || i1 >= n || i2 >= n || i3 >= n) {
        OX_ASSERT(i0 < n && i1 < n && i2 < n && i3 < n);
        return;
    }
    mFaces.push_back({{i0, i1, i2, i3}});
}

mesh3d& mesh3d::transformBy(const matrix3d& m) {
    for (point3d& p : mVertices) p = m * p;
    return *this;
}

boundBox3d mesh3d::boundingBox() const {
    boundBox3d box;
    for (const point3d& p : mVertices) box.grow(p);
    return box;
}

void mesh3dManipulator::clearMesh(mesh3d& mesh) {
    std::vector<point3d>().swap(mesh.mVertices);
    std::vector<meshFace_t>().swap(mesh.mFaces);
}

} // namespace oxGeo
