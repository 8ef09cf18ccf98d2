#pragma once
// The large mesh the benchmarks draw and pick: a wavy height field, two triangles per grid cell,
// counter-clockwise seen from +z.
#include "oxgeomesh.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace oxbench {

/// About `triangles` triangles over [x0, x0 + width] × [y0, y0 + height], heights
/// amplitude · sin(6x) · cos(5y) with x and y running over -1..1 across the rectangle.
inline oxGeo::mesh3d wavySurface(std::size_t triangles, double x0, double y0, double width, double height,
                                 double amplitude) {
    const auto cells = static_cast<std::uint32_t>(std::ceil(std::sqrt(double(triangles) / 2.0)));
    oxGeo::mesh3d mesh;
    mesh.reserve(std::size_t(cells + 1) * (cells + 1), std::size_t(cells) * cells * 2);
    for (std::uint32_t j = 0; j <= cells; ++j)
        for (std::uint32_t i = 0; i <= cells; ++i) {
            const double u = double(i) / cells, v = double(j) / cells;
            const double x = 2.0 * u - 1.0, y = 2.0 * v - 1.0;
            mesh.addVertex({x0 + width * u, y0 + height * v, amplitude * std::sin(6.0 * x) * std::cos(5.0 * y)});
        }
    const auto at = [cells](std::uint32_t i, std::uint32_t j) { return j * (cells + 1) + i; };
    for (std::uint32_t j = 0; j < cells; ++j)
        for (std::uint32_t i = 0; i < cells; ++i) {
            mesh.addTriangle(at(i, j), at(i + 1, j), at(i + 1, j + 1));
            mesh.addTriangle(at(i, j), at(i + 1, j + 1), at(i, j + 1));
        }
    return mesh;
}

} // namespace oxbench
