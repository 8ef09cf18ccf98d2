#include "oxobservable.h"

#include <algorithm>
#include <thread>

namespace ox {

struct observable::entry {
    iObserver* observer = nullptr;
    refPtr<iObserver> held;    // set for addObserver, empty for addRawObserver
    bool registered = true;    // cleared on removal so an event in progress skips it
    // Threads inside this observer's onEvent right now: removal waits for the others, so a host
    // may delete a raw observer as soon as removeObserver returns.
    std::vector<std::thread::id> delivering;
};

// Waits (with the lock held by `lock`) until no thread but the calling one is delivering to `e`.
void observable::waitForDeliveries(std::unique_lock<std::mutex>& lock, const entry& e) {
    const auto self = std::this_thread::get_id();
    mDelivered.wait(lock, [&] {
        return std::all_of(e.delivering.begin(), e.delivering.end(), [&](const auto& id) { return id == self; });
    });
}

observable::observable() = default;

observable::~observable() { removeAllObservers(); }

void observable::add(iObserver* observer, bool holdReference) {
    if (observer == nullptr) return;
    std::lock_guard lock(mMutex);
    const bool known = std::any_of(mEntries.begin(), mEntries.end(),
                                   [&](const auto& e) { return e->observer == observer; });
    if (known) return;
    auto e = std::make_shared<entry>();
    e->observer = observer;
    if (holdReference) e->held = observer;
    mEntries.push_back(std::move(e));
}

void observable::addObserver(const refPtr<iObserver>& observer) { add(observer.get(), true); }
void observable::addRawObserver(iObserver* observer) { add(observer, false); }

void observable::removeObserver(iObserver* observer) {
    std::shared_ptr<entry> removed;
    {
        std::unique_lock lock(mMutex);
        auto it = std::find_if(mEntries.begin(), mEntries.end(), [&](const auto& e) { return e->observer == observer; });
        if (it == mEntries.end()) return;
        removed = *it;
        removed->registered = false;
        mEntries.erase(it);
        waitForDeliveries(lock, *removed);
    }
    // The reference goes outside the lock: the observer's destructor may call back into us.
    removed->held.reset();
}

void observable::removeAllObservers() {
    std::vector<std::shared_ptr<entry>> removed;
    {
        std::unique_lock lock(mMutex);
        removed.swap(mEntries);
        for (auto& e : removed) e->registered = false;
        for (auto& e : removed) waitForDeliveries(lock, *e);
    }
    for (auto& e : removed) e->held.reset();
}

int observable::countObservers() const {
    std::lock_guard lock(mMutex);
    return static_cast<int>(mEntries.size());
}

void observable::fireEvent(int code, iObservable* source, const wchar_t* text, iEventParams* params) {
    std::vector<std::shared_ptr<entry>> snapshot;
    {
        std::lock_guard lock(mMutex);
        snapshot = mEntries;
    }
    const auto self = std::this_thread::get_id();
    for (const auto& e : snapshot) {
        refPtr<iObserver> keepAlive;
        iObserver* target = nullptr;
        {
            std::lock_guard lock(mMutex);
            if (!e->registered) continue;
            keepAlive = e->held;
            target = e->observer;
            e->delivering.push_back(self);
        }
        // Unregistered even if the observer throws, so a removal never waits for ever.
        struct deliveryDone {
            observable& owner;
            entry& e;
            std::thread::id self;
            ~deliveryDone() {
                {
                    std::lock_guard lock(owner.mMutex);
                    e.delivering.erase(std::find(e.delivering.begin(), e.delivering.end(), self));
                }
                owner.mDelivered.notify_all();
            }
        } done{*this, *e, self};
        target->onEvent(code, source, text, params);
    }
}

} // namespace ox
