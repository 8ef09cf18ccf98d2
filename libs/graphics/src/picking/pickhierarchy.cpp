#include "pickhierarchy.h"

#include <algorithm>
#include <bit>

namespace oxGraphics::openGL {

void pickHierarchy::sortKeys(std::vector<std::uint64_t>& keys) {
    // Three stable passes of ten bits over the 30-bit code in the upper half.
    std::vector<std::uint64_t> scratch(keys.size());
    for (int shift = 32; shift < 62; shift += 10) {
        std::uint32_t counts[1025] = {};
        for (const std::uint64_t key : keys) ++counts[((key >> shift) & 1023u) + 1];
        for (int i = 0; i < 1024; ++i) counts[i + 1] += counts[i];
        for (const std::uint64_t key : keys) scratch[counts[(key >> shift) & 1023u]++] = key;
        keys.swap(scratch);
    }
}

std::uint32_t pickHierarchy::buildRange(const std::vector<std::uint64_t>& keys, const std::vector<float>& boxes,
                                        std::uint32_t begin, std::uint32_t end) {
    const auto index = static_cast<std::uint32_t>(mNodes.size());
    mNodes.push_back({});
    if (end - begin <= kLeafSize) {
        node_t leaf{{1e38f, 1e38f, 1e38f}, {-1e38f, -1e38f, -1e38f}, begin, end - begin};
        for (std::uint32_t j = begin; j < end; ++j) {
            const float* box = &boxes[static_cast<std::size_t>(static_cast<std::uint32_t>(keys[j])) * 6];
            for (int k = 0; k < 3; ++k) {
                leaf.lo[k] = std::min(leaf.lo[k], box[k]);
                leaf.hi[k] = std::max(leaf.hi[k], box[3 + k]);
            }
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
        const auto it = std::partition_point(keys.begin() + begin, keys.begin() + end,
                                             [&](std::uint64_t key) { return ((key >> 32) & bit) == 0; });
        split = static_cast<std::uint32_t>(it - keys.begin());
    }
    buildRange(keys, boxes, begin, split);
    const std::uint32_t right = buildRange(keys, boxes, split, end);
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
