#include "oxgeomeshfactory.h"

#include "oxassert.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace oxGeo::meshfactory {

void appendBoxMesh(double dx, double dy, double dz, mesh3d& mesh, bool centred) {
    const vector3d size(std::fabs(dx), std::fabs(dy), std::fabs(dz));
    const point3d lo = centred ? point3d() - size * 0.5 : point3d();
    const point3d hi = lo + size;
    mesh.reserve(mesh.vertexCount() + 8, mesh.patchCount() + 12);
    // Vertex k has x from bit 0, y from bit 1 and z from bit 2 (0 = low, 1 = high).
    const std::uint32_t base = static_cast<std::uint32_t>(mesh.vertexCount());
    for (int k = 0; k < 8; ++k)
        mesh.addVertex({k & 1 ? hi.x() : lo.x(), k & 2 ? hi.y() : lo.y(), k & 4 ? hi.z() : lo.z()});
    // Each side as a quad, counter-clockwise seen from outside, split along its first diagonal.
    static constexpr std::uint32_t kSides[6][4] = {
        {0, 2, 3, 1}, // −z
        {4, 5, 7, 6}, // +z
        {0, 1, 5, 4}, // −y
        {2, 6, 7, 3}, // +y
        {0, 4, 6, 2}, // −x
        {1, 3, 7, 5}, // +x
    };
    for (const auto& s : kSides) {
        mesh.addTriangle(base + s[0], base + s[1], base + s[2]);
        mesh.addTriangle(base + s[0], base + s[2], base + s[3]);
    }
}

namespace {

bool endsOnFirstPoint(const polyline3d& p, std::size_t count) { return p[0] == p[count - 1]; }

} // namespace

void appendRuledMesh(const polyline3d& a, const polyline3d& b, mesh3d& mesh, bool closeLoop, bool flipOrientation) {
    OX_ASSERT(a.size() == b.size());
    const std::size_t count = std::min(a.size(), b.size());
    if (count < 2) return;
    const bool closing = closeLoop && count > 2 && !(endsOnFirstPoint(a, count) && endsOnFirstPoint(b, count));
    mesh.reserve(mesh.vertexCount() + 2 * count, mesh.patchCount() + 2 * (count - 1 + (closing ? 1 : 0)));

    const std::uint32_t baseA = static_cast<std::uint32_t>(mesh.vertexCount());
    for (std::size_t i = 0; i < count; ++i) mesh.addVertex(a[i]);
    const std::uint32_t baseB = static_cast<std::uint32_t>(mesh.vertexCount());
    for (std::size_t i = 0; i < count; ++i) mesh.addVertex(b[i]);

    const auto strip = [&](std::uint32_t i, std::uint32_t j) {
        const std::uint32_t ai = baseA + i, aj = baseA + j, bi = baseB + i, bj = baseB + j;
        if (flipOrientation) {
            mesh.addTriangle(ai, bj, aj);
            mesh.addTriangle(ai, bi, bj);
        } else {
            mesh.addTriangle(ai, aj, bj);
            mesh.addTriangle(ai, bj, bi);
        }
    };
    for (std::size_t i = 0; i + 1 < count; ++i) strip(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(i + 1));
    if (closing) strip(static_cast<std::uint32_t>(count - 1), 0);
}

void appendRuledMesh(const point3d& apex, const polyline3d& b, mesh3d& mesh, bool closeLoop, bool flipOrientation) {
    const std::size_t count = b.size();
    if (count < 2) return;
    const bool closing = closeLoop && count > 2 && !endsOnFirstPoint(b, count);
    mesh.reserve(mesh.vertexCount() + 1 + count, mesh.patchCount() + count - 1 + (closing ? 1 : 0));

    const std::uint32_t top = mesh.addVertex(apex);
    const std::uint32_t baseB = static_cast<std::uint32_t>(mesh.vertexCount());
    for (std::size_t i = 0; i < count; ++i) mesh.addVertex(b[i]);

    const auto fan = [&](std::uint32_t i, std::uint32_t j) {
        if (flipOrientation) mesh.addTriangle(top, baseB + i, baseB + j);
        else mesh.addTriangle(top, baseB + j, baseB + i);
    };
    for (std::size_t i = 0; i + 1 < count; ++i) fan(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(i + 1));
    if (closing) fan(static_cast<std::uint32_t>(count - 1), 0);
}

} // namespace oxGeo::meshfactory
