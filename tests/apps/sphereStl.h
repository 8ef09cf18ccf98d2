#pragma once
// Writes a UV sphere as a binary STL file: test and benchmark input of any size.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace oxtest {

static_assert(std::endian::native == std::endian::little, "binary STL is little-endian");

struct sphereStl_t {
    int rings = 16;
    int sectors = 32;            ///< 2·rings·sectors triangles; those at the poles are degenerate
    bool lopsided = false;       ///< bent out of every symmetry plane, so no two standard views match
    long keepTriangles = -1;     ///< fewer than all: a truncated file whose header promises all
};

/// Writes the unit sphere (or its lopsided variant) to `path`; false when that fails.
inline bool writeSphereStl(const std::string& path, const sphereStl_t& shape) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    char header[80] = {};
    std::snprintf(header, sizeof header, "binary sphere %d x %d", shape.rings, shape.sectors);
    const auto count = static_cast<std::uint32_t>(2L * shape.rings * shape.sectors);
    std::fwrite(header, 1, sizeof header, file);
    std::fwrite(&count, 4, 1, file);

    auto corner = [&](int ring, int sector, float* out) {
        const double theta = M_PI * ring / shape.rings, phi = 2.0 * M_PI * sector / shape.sectors;
        double x = std::sin(theta) * std::cos(phi), y = std::sin(theta) * std::sin(phi), z = std::cos(theta);
        if (shape.lopsided) {  // each axis bent by the square of another: x by y², y by z², z by x²
            const double bx = 2.0 * x + 0.6 * y * y, by = y + 0.4 * z * z, bz = 0.6 * z + 0.3 * x * x;
            x = bx, y = by, z = bz;
        }
        out[0] = static_cast<float>(x);
        out[1] = static_cast<float>(y);
        out[2] = static_cast<float>(z);
    };
    const long keep = shape.keepTriangles < 0 ? static_cast<long>(count) : shape.keepTriangles;
    long written = 0;
    std::vector<char> buffer;
    auto face = [&](const float* a, const float* b, const float* c) {
        if (written++ >= keep) return;
        char record[50] = {};  // zero normal: readers compute their own
        std::memcpy(record + 12, a, 12);
        std::memcpy(record + 24, b, 12);
        std::memcpy(record + 36, c, 12);
        buffer.insert(buffer.end(), record, record + 50);
    };
    for (int r = 0; r < shape.rings; ++r) {
        buffer.clear();
        for (int s = 0; s < shape.sectors; ++s) {
            float p00[3], p01[3], p10[3], p11[3];
            corner(r, s, p00);
            corner(r, s + 1, p01);
            corner(r + 1, s, p10);
            corner(r + 1, s + 1, p11);
            face(p00, p10, p11);  // counter-clockwise seen from outside
            face(p00, p11, p01);
        }
        std::fwrite(buffer.data(), 1, buffer.size(), file);
    }
    const bool complete = std::ferror(file) == 0;
    return std::fclose(file) == 0 && complete;
}

} // namespace oxtest
