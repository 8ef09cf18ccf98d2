#include "gllistidregistry.h"

namespace oxGraphics::openGL {

glListIdRegistry& glListIdRegistry::instance() {
    static glListIdRegistry registry;
    return registry;
}

std::uint32_t glListIdRegistry::next() {
    std::lock_guard lock(mMutex);
    do {
        ++mLastIssued;   // unsigned: wraps at 2^32
    } while (mLastIssued == 0 || mReserved.contains(mLastIssued));
    return mLastIssued;
}

void glListIdRegistry::reserve(std::uint32_t id) {
    if (id == 0) return;
    std::lock_guard lock(mMutex);
    mReserved.insert(id);
}

void glListIdRegistry::release(std::uint32_t id) {
    std::lock_guard lock(mMutex);
    mReserved.erase(id);
}

bool glListIdRegistry::isReserved(std::uint32_t id) const {
    std::lock_guard lock(mMutex);
    return mReserved.contains(id);
}

std::uint32_t glListIdRegistry::lastIssued() const {
    std::lock_guard lock(mMutex);
    return mLastIssued;
}

} // namespace oxGraphics::openGL
