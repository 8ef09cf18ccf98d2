#include "selectionemulator.h"

namespace oxGraphics::openGL {

std::uint32_t selectionEmulator::scaledDepth(float depth) {
    const float scaled = 4294967296.0f * depth;
    if (!(scaled >= 0.0f) || scaled >= 18446744073709551616.0f) return 0;
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(scaled));
}

std::size_t selectionEmulator::wordsOf(const std::vector<record_t>& records) {
    std::size_t words = 0;
    for (const auto& r : records) words += 3 + r.names.size();
    return words;
}

void selectionEmulator::writePending() {
    if (!mPending.hit) return;
    mRecords.push_back({mNames, scaledDepth(mPending.minZ), scaledDepth(mPending.maxZ)});
    mPending = {};
}

void selectionEmulator::initNames() {
    writePending();
    mNames.clear();
}

void selectionEmulator::loadName(std::uint32_t name) {
    if (mNames.empty()) return;
    writePending();
    mNames.back() = name;
}

void selectionEmulator::pushName(std::uint32_t name) {
    writePending();
    if (mNames.size() < kMaxNameDepth) mNames.push_back(name);
}

void selectionEmulator::popName() {
    writePending();
    if (!mNames.empty()) mNames.pop_back();
}

void selectionEmulator::addHit(const pickDepthSpan_t& span) {
    if (!span.hit) return;
    if (span.minZ < mPending.minZ) mPending.minZ = span.minZ;
    if (span.maxZ > mPending.maxZ) mPending.maxZ = span.maxZ;
    mPending.hit = true;
}

} // namespace oxGraphics::openGL
