#pragma once
// pickHierarchy: a bounding-volume hierarchy over the primitives of one captured batch, so that a
// pick visits the few primitives near its frustum instead of all of them.
//
// Built in linear time from Morton codes of the primitive centres (radix-sorted, then split at the
// highest differing bit), which takes a fraction of a second for millions of triangles and needs
// no tuning; a pick frustum is thin, so the looser boxes of this build cost little. Leaves hold up
// to kLeafSize primitives in consecutive order: the build hands back the order in which the owner
// must store its primitives.
#include "pickfrustum.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oxGraphics::openGL {

class pickHierarchy {
public:
    static constexpr std::uint32_t kLeafSize = 8;

    struct node_t {
        float lo[3];
        float hi[3];
        std::uint32_t rightOrFirst; ///< inner: index of the right child (the left one follows); leaf: first primitive
        std::uint32_t count;        ///< primitives of a leaf; 0 for an inner node
    };

    /// `bounds(i, lo, hi)` gives primitive i's box (i < count). Returns the new order: position j
    /// of the hierarchy holds the primitive that was at order[j].
    template <class Bounds>
    std::vector<std::uint32_t> build(std::uint32_t count, Bounds&& bounds);

    /// Calls visit(first, count) for every leaf whose box may touch the frustum.
    template <class Visit>
    void query(const pickFrustum& frustum, Visit&& visit) const;

    std::size_t bytes() const { return mNodes.capacity() * sizeof(node_t); }
    std::size_t nodeCount() const { return mNodes.size(); }

private:
    /// Sorts (code << 32 | primitive) keys by their code.
    static void sortKeys(std::vector<std::uint64_t>& keys);
    /// Builds the nodes of sorted positions [begin, end); returns the node's index.
    std::uint32_t buildRange(const std::vector<std::uint64_t>& keys, const std::vector<float>& boxes,
                             std::uint32_t begin, std::uint32_t end);

    std::vector<node_t> mNodes;
};

template <class Bounds>
std::vector<std::uint32_t> pickHierarchy::build(std::uint32_t count, Bounds&& bounds) {
    mNodes.clear();
    std::vector<std::uint32_t> order;
    if (count == 0) return order;
    // Primitive boxes once (they are read again for the leaves), and the box of their centres.
    std::vector<float> boxes(static_cast<std::size_t>(count) * 6);
    float clo[3] = {1e38f, 1e38f, 1e38f}, chi[3] = {-1e38f, -1e38f, -1e38f};
    for (std::uint32_t i = 0; i < count; ++i) {
        float* box = &boxes[static_cast<std::size_t>(i) * 6];
        bounds(i, box, box + 3);
        for (int k = 0; k < 3; ++k) {
            const float c = 0.5f * (box[k] + box[3 + k]);
            if (c < clo[k]) clo[k] = c;
            if (c > chi[k]) chi[k] = c;
        }
    }
    std::vector<std::uint64_t> keys(count);
    float scale[3];
    for (int k = 0; k < 3; ++k) scale[k] = chi[k] > clo[k] ? 1023.0f / (chi[k] - clo[k]) : 0.0f;
    for (std::uint32_t i = 0; i < count; ++i) {
        const float* box = &boxes[static_cast<std::size_t>(i) * 6];
        std::uint64_t code = 0;
        std::uint32_t cell[3];
        for (int k = 0; k < 3; ++k) {
            const float c = (0.5f * (box[k] + box[3 + k]) - clo[k]) * scale[k];
            cell[k] = c > 0.0f ? (c < 1023.0f ? static_cast<std::uint32_t>(c) : 1023u) : 0u;
        }
        for (int bit = 9; bit >= 0; --bit)
            for (int k = 0; k < 3; ++k) code = (code << 1) | ((cell[k] >> bit) & 1u);
        keys[i] = (code << 32) | i;
    }
    sortKeys(keys);
    mNodes.reserve(static_cast<std::size_t>(count / (kLeafSize / 2) + 1) * 2);
    buildRange(keys, boxes, 0, count);
    mNodes.shrink_to_fit();
    order.resize(count);
    for (std::uint32_t j = 0; j < count; ++j) order[j] = static_cast<std::uint32_t>(keys[j]);
    return order;
}

template <class Visit>
void pickHierarchy::query(const pickFrustum& frustum, Visit&& visit) const {
    if (mNodes.empty()) return;
    std::uint32_t stack[128];
    int top = 0;
    stack[top++] = 0;
    while (top > 0) {
        const node_t& node = mNodes[stack[--top]];
        if (!frustum.mayTouch(node.lo, node.hi)) continue;
        if (node.count > 0) {
            visit(node.rightOrFirst, node.count);
        } else if (top + 2 <= 128) {
            stack[top++] = node.rightOrFirst;
            stack[top++] = static_cast<std::uint32_t>(&node - mNodes.data()) + 1;
        }
    }
}

} // namespace oxGraphics::openGL
