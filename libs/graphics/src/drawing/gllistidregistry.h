#pragma once
// The process-wide registry of display-list ids handed to recordings.
//
// Display-list names are per context (share group), but every context of the process draws from
// this one counter, so an id never means two recordings at once. Lists that do not come from a
// recording (a host's own glGenLists, a scene's screen quad) are reserved here so no recording
// takes their id.

#include <cstdint>
#include <mutex>
#include <set>

namespace oxGraphics::openGL {

class glListIdRegistry {
public:
    /// `lastIssued`: the counter the first next() increments from (tests start near the top).
    explicit glListIdRegistry(std::uint32_t lastIssued = 0) : mLastIssued(lastIssued) {}
    glListIdRegistry(const glListIdRegistry&) = delete;
    glListIdRegistry& operator=(const glListIdRegistry&) = delete;

    /// The registry all recordings of the process use.
    static glListIdRegistry& instance();

    /// The next id: the counter advances (wrapping at 2^32) past every reserved id and past 0,
    /// which GL does not accept as a list name. Issuing does not reserve the id.
    std::uint32_t next();
    /// Keeps `id` from being issued until release(id). Reserving 0 does nothing.
    void reserve(std::uint32_t id);
    /// Makes `id` available again (a destroyed recording releases its id).
    void release(std::uint32_t id);
    bool isReserved(std::uint32_t id) const;
    std::uint32_t lastIssued() const;

private:
    mutable std::mutex mMutex;   // cheap insurance: hosts may render scenes on several threads
    std::uint32_t mLastIssued;
    std::set<std::uint32_t> mReserved;
};

} // namespace oxGraphics::openGL
