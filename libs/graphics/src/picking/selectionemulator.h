#pragma once
// selectionEmulator: the name stack and hit records of OpenGL selection mode, kept on the CPU.
//
// As the driver does it: a hit sets the hit flag and widens the depth interval; every change of
// the name stack (load, push, pop, init) and the end of the selection first write a record when
// the flag is set (the names on the stack, bottom first, with the interval scaled to 32 bits) and
// clear it. The stack holds at most 64 names: a push beyond that and a pop of an empty stack
// change nothing (after writing the pending record); a load onto an empty stack does nothing at
// all. The selection overflows when its records need more words than the buffer holds.
#include "pickfrustum.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oxGraphics::openGL {

class selectionEmulator {
public:
    static constexpr std::size_t kMaxNameDepth = 64;

    struct record_t {
        std::vector<std::uint32_t> names; ///< the whole stack, bottom first
        std::uint32_t minDepth = 0;
        std::uint32_t maxDepth = 0;
    };

    void initNames();
    void loadName(std::uint32_t name);
    void pushName(std::uint32_t name);
    void popName();
    void addHit(const pickDepthSpan_t& span);
    /// The end of the selection: the pending record, if any.
    void finish() { writePending(); }

    const std::vector<record_t>& records() const { return mRecords; }
    std::vector<record_t>& records() { return mRecords; }

    /// A window depth (0..1) as the driver scales it into a record: in single precision, times
    /// 2^32, truncated to 32 bits (so a depth of exactly 1 wraps to 0).
    static std::uint32_t scaledDepth(float depth);
    /// Words the records take in a selection buffer: 3 and one per name each.
    static std::size_t wordsOf(const std::vector<record_t>& records);

private:
    void writePending();

    std::vector<std::uint32_t> mNames;
    std::vector<record_t> mRecords;
    pickDepthSpan_t mPending;
};

} // namespace oxGraphics::openGL
