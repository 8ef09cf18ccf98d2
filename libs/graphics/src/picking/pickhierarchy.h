#pragma once
// pickHierarchy: a bounding-volume hierarchy over the primitives of one captured batch, so that a
// pick visits the few primitives near its frustum instead of all of them.
//
// Built in linear time from Morton codes of the primitive centres (radix-sorted, then split at the
// highest differing bit), which takes a fraction of a second for millions of triangles and needs
// no tuning; a pick frustum is thin, so the looser boxes of this build cost little. Leaves hold up
// to kLeafSize primitives in consecutive order: the build reorders the owner's primitives so.
#include "pickfrustum.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oxGraphics::openGL {

class pickHierarchy {
public:
    static constexpr std::uint32_t kLeafSize = 12;

    struct node_t {
        float lo[3];
        float hi[3];
        std::uint32_t rightOrFirst; ///< inner: index of the right child (the left one follows); leaf: first primitive
        std::uint32_t count;        ///< primitives of a leaf; 0 for an inner node
    };

    /// Builds over `count` primitives of `stride` corners each (indices into `vertices`, x y z
    /// floats, `vertexCount` of them), and reorders `corners` so that every leaf is a consecutive
    /// run of primitives.
    void build(const float* vertices, std::size_t vertexCount, std::uint32_t* corners, std::size_t stride,
               std::uint32_t count);

    /// Calls visit(first, count) for every leaf whose box may touch the frustum.
    template <class Visit>
    void query(const pickFrustum& frustum, Visit&& visit) const;

    std::size_t bytes() const { return mNodes.capacity() * sizeof(node_t); }
    std::size_t nodeCount() const { return mNodes.size(); }

private:
    /// Sorts (code << 32 | primitive) keys by their code, using `scratch` (as long) on the way;
    /// returns whichever of the two holds the result.
    static std::uint64_t* sortKeys(std::uint64_t* keys, std::uint64_t* scratch, std::size_t count);
    /// Builds the nodes of sorted primitives [begin, end); returns the node's index.
    std::uint32_t buildRange(const std::uint64_t* keys, std::uint32_t begin, std::uint32_t end);

    const float* mVertices = nullptr;      // during the build
    const std::uint32_t* mCorners = nullptr; // during the build, in hierarchy order
    std::size_t mStride = 0;
    std::vector<node_t> mNodes;
};

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
