#pragma once
// Intrusive reference counting shared by every object that crosses a library interface.
#include "oxutils_export.h"

#include <atomic>
#include <cstdint>

namespace ox {

/// Reference-count operations in their fixed slot order: count, addRef, release.
class OX_UTILS_API iRefCount {
public:
    virtual ~iRefCount() = default;
    virtual std::uint32_t refCount() const = 0;
    virtual std::uint32_t addRef() = 0;
    virtual std::uint32_t release() = 0;
};

/// Base of every reference-counted interface. Interfaces derive from it virtually, so a class
/// with several interface bases (an iCamera that is also an iSavedView) has exactly one count.
class OX_UTILS_API iRefObj : public virtual iRefCount {};

std::uint32_t interlockedIncrement(std::atomic<std::uint32_t>& value);
std::uint32_t interlockedDecrement(std::atomic<std::uint32_t>& value);

inline std::uint32_t interlockedIncrement(std::atomic<std::uint32_t>& value) {
    return value.fetch_add(1, std::memory_order_relaxed) + 1;
}
inline std::uint32_t interlockedDecrement(std::atomic<std::uint32_t>& value) {
    // acq_rel: the thread that drops the last reference must see every write made before the
    // other threads released theirs.
    return value.fetch_sub(1, std::memory_order_acq_rel) - 1;
}

/// The one implementation of the count. Objects start at 0; the create function's refPtr
/// takes the first reference.
class OX_UTILS_API refObj : public virtual iRefObj {
public:
    refObj() = default;
    refObj(const refObj&) : iRefCount(), iRefObj() {}   // a copy is a new object: its count starts at 0
    refObj& operator=(const refObj&) { return *this; }   // and assignment never copies a count
    ~refObj() override = default;

    std::uint32_t refCount() const override { return mRefCount.load(std::memory_order_acquire); }
    std::uint32_t addRef() override { return interlockedIncrement(mRefCount); }
    std::uint32_t release() override {
        const std::uint32_t remaining = interlockedDecrement(mRefCount);
        if (remaining == 0)
            destroyObject();
        return remaining;
    }

protected:
    /// Called once when the last reference goes. Override to detach from owners first; the
    /// override must end by deleting the object (or calling this default).
    virtual void destroyObject() { delete this; }

private:
    std::atomic<std::uint32_t> mRefCount{0};
};

} // namespace ox
