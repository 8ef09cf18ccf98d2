#include "pickhierarchy.h"

#include <algorithm>
#include <bit>
#include <memory>

namespace oxGraphics::openGL {

std::uint64_t* pickHierarchy::sortKeys(std::uint64_t* keys, std::uint64_t* scratch, std::size_t count) {
    // Three stable passes of ten bits over the 30-bit code in the upper half (wider digits
    // scatter to more places than the caches follow, and come out slower).
    std::uint64_t* from = keys;
    std::uint64_t* to = scratch;
    for (int shift = 32; shift < 62; shift += 10) {
        std::uint32_t counts[1024] = {};
        for (std::size_t i = 0; i < count; ++i) ++counts[(from[i] >> shift) & 1023u];
        std::uint32_t sum = 0;
        for (auto& c : counts) {
            const std::uint32_t n = c;
            c = sum;
            sum += n;
        }
        for (std::size_t i = 0; i < count; ++i) to[counts[(from[i] >> shift) & 1023u]++] = from[i];
        std::swap(from, to);
    }
    return from;
}

namespace {

/// Spreads the low 10 bits of v two places apart (bit i to bit 3i).
std::uint32_t spreadBits(std::uint32_t v) {
    v &= 0x3FFu;
    v = (v | (v << 16)) & 0x030000FFu;
    v = (v | (v << 8)) & 0x0300F00Fu;
    v = (v | (v << 4)) & 0x030C30C3u;
    v = (v | (v << 2)) & 0x09249249u;
    return v;
}

} // namespace

void pickHierarchy::build(const float* vertices, std::size_t vertexCount, std::uint32_t* corners, std::size_t stride,
                          std::uint32_t count) {
    mNodes.clear();
    if (count == 0 || stride == 0) return;
    // Corner sums stand for the centres (the division by the corner count changes no order).
    const auto sumOf = [&](const std::uint32_t* c, float* sum) {
        for (int k = 0; k < 3; ++k) sum[k] = vertices[std::size_t(c[0]) * 3 + k];
        for (std::size_t j = 1; j < stride; ++j)
            for (int k = 0; k < 3; ++k) sum[k] += vertices[std::size_t(c[j]) * 3 + k];
    };
    // The grid of the codes spans the vertices' box (a sequential pass, cheaper than one over the
    // primitives), scaled by the corner count since the codes are taken of corner sums.
    float lo[3] = {1e38f, 1e38f, 1e38f}, hi[3] = {-1e38f, -1e38f, -1e38f};
    for (std::size_t v = 0; v < vertexCount * 3; v += 3)
        for (int k = 0; k < 3; ++k) {
            lo[k] = std::min(lo[k], vertices[v + k]);
            hi[k] = std::max(hi[k], vertices[v + k]);
        }
    const auto corners3 = static_cast<float>(stride);
    float scale[3];
    for (int k = 0; k < 3; ++k) {
        lo[k] *= corners3;
        hi[k] *= corners3;
        scale[k] = hi[k] > lo[k] ? 1023.0f / (hi[k] - lo[k]) : 0.0f;
    }
    // Uninitialised on purpose: every element is written before it is read.
    const std::unique_ptr<std::uint64_t[]> buffers(new std::uint64_t[std::size_t(count) * 2]);
    std::uint64_t* keys = buffers.get();
    for (std::uint32_t i = 0; i < count; ++i) {
        float sum[3];
        sumOf(corners + std::size_t(i) * stride, sum);
        std::uint32_t code = 0;
        for (int k = 0; k < 3; ++k) {
            const float cell = (sum[k] - lo[k]) * scale[k];
            const std::uint32_t c = cell > 0.0f ? (cell < 1023.0f ? static_cast<std::uint32_t>(cell) : 1023u) : 0u;
            code |= spreadBits(c) << (2 - k);
        }
        keys[i] = (std::uint64_t{code} << 32) | i;
    }
    keys = sortKeys(keys, buffers.get() + count, count);
    {
        const std::unique_ptr<std::uint32_t[]> sorted(new std::uint32_t[std::size_t(count) * stride]);
        for (std::uint32_t j = 0; j < count; ++j) {
            const std::uint32_t* from = corners + std::size_t(static_cast<std::uint32_t>(keys[j])) * stride;
            std::copy(from, from + stride, sorted.get() + std::size_t(j) * stride);
        }
        std::copy(sorted.get(), sorted.get() + std::size_t(count) * stride, corners);
    }
    mVertices = vertices;
    mCorners = corners;
    mStride = stride;
    mNodes.reserve(std::size_t(count) / (kLeafSize / 2) + 2);
    buildRange(keys, 0, count);
    mNodes.shrink_to_fit();
    mVertices = nullptr;
    mCorners = nullptr;
}

std::uint32_t pickHierarchy::buildRange(const std::uint64_t* keys, std::uint32_t begin, std::uint32_t end) {
    const auto index = static_cast<std::uint32_t>(mNodes.size());
    mNodes.push_back({});
    if (end - begin <= kLeafSize) {
        node_t leaf{{1e38f, 1e38f, 1e38f}, {-1e38f, -1e38f, -1e38f}, begin, end - begin};
        const std::uint32_t* c = mCorners + std::size_t(begin) * mStride;
        for (std::size_t j = 0; j < std::size_t(end - begin) * mStride; ++j)
            for (int k = 0; k < 3; ++k) {
                const float x = mVertices[std::size_t(c[j]) * 3 + k];
                leaf.lo[k] = std::min(leaf.lo[k], x);
                leaf.hi[k] = std::max(leaf.hi[k], x);
            }
        mNodes[index] = leaf;
        return index;
    }
    // Split where the highest bit in which the range's codes differ turns from 0 to 1; equal
    // codes (coincident centres) split in the middle.
    const std::uint64_t first = keys[begin] >> 32, last = keys[end - 1] >> 32;
    std::uint32_t split = begin + (end - begin) / 2;
    if (first != last) {
        const std::uint64_t bit = std::uint64_t{1} << (63 - std::countl_zero(first ^ last));
        const auto it = std::partition_point(keys + begin, keys + end,
                                             [&](std::uint64_t key) { return ((key >> 32) & bit) == 0; });
        split = static_cast<std::uint32_t>(it - keys);
    }
    buildRange(keys, begin, split);
    const std::uint32_t right = buildRange(keys, split, end);
    node_t node{{0, 0, 0}, {0, 0, 0}, right, 0};
    const node_t& l = mNodes[index + 1];
    const node_t& r = mNodes[right];
    for (int k = 0; k < 3; ++k) {
        node.lo[k] = std::min(l.lo[k], r.lo[k]);
        node.hi[k] = std::max(l.hi[k], r.hi[k]);
    }
    mNodes[index] = node;
    return index;
}

} // namespace oxGraphics::openGL
