#include "vertexWelder.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace oxview {
namespace {

std::uint64_t hashPosition(const float* p) {
    std::uint32_t bits[3];
    std::memcpy(bits, p, sizeof bits);
    // Multiplicative mixing of the three words, folded so that the low bits index the table well.
    std::uint64_t h = bits[0] * 0x9E3779B97F4A7C15ull;
    h = (h ^ bits[1]) * 0xC2B2AE3D27D4EB4Full;
    h = (h ^ bits[2]) * 0x165667B19E3779F9ull;
    return h ^ (h >> 29);
}

} // namespace

vertexWelder::vertexWelder(std::vector<float>& positions, std::size_t expectedVertices) : mPositions(positions) {
    mSlots.resize(std::bit_ceil(std::max<std::size_t>(16, expectedVertices * 2)), slot_t{{0, 0, 0}, kEmpty});
}

std::uint32_t vertexWelder::add(float x, float y, float z) {
    // Adding 0.0f turns −0 into +0, so both land in the same slot.
    const float p[3] = {x + 0.0f, y + 0.0f, z + 0.0f};
    if ((mUsed + 1) * 2 > mSlots.size()) grow();
    const std::size_t mask = mSlots.size() - 1;
    for (std::size_t i = hashPosition(p) & mask;; i = (i + 1) & mask) {
        slot_t& slot = mSlots[i];
        if (slot.mIndex == kEmpty) {
            std::memcpy(slot.mPosition, p, sizeof p);
            slot.mIndex = static_cast<std::uint32_t>(mPositions.size() / 3);
            mPositions.insert(mPositions.end(), p, p + 3);
            ++mUsed;
            return slot.mIndex;
        }
        if (std::memcmp(slot.mPosition, p, sizeof p) == 0) return slot.mIndex;
    }
}

void vertexWelder::grow() {
    std::vector<slot_t> old(mSlots.size() * 2, slot_t{{0, 0, 0}, kEmpty});
    old.swap(mSlots);
    const std::size_t mask = mSlots.size() - 1;
    for (const slot_t& slot : old) {
        if (slot.mIndex == kEmpty) continue;
        std::size_t i = hashPosition(slot.mPosition) & mask;
        while (mSlots[i].mIndex != kEmpty) i = (i + 1) & mask;
        mSlots[i] = slot;
    }
}

} // namespace oxview
