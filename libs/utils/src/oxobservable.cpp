#include "oxobservable.h"

#include <algorithm>

namespace ox {

struct observable::entry {
    iObserver* observer = nullptr;
    refPtr<iObserver> held;    // set for addObserver, empty for addRawObserver
    bool registered = true;    // cleared on removal so an event in progress skips it
};

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
        std::lock_guard lock(mMutex);
        auto it = std::find_if(mEntries.begin(), mEntries.end(), [&](const auto& e) { return e->observer == observer; });
        if (it == mEntries.end()) return;
        removed = *it;
        removed->registered = false;
        mEntries.erase(it);
    }
    // The reference goes outside the lock: the observer's destructor may call back into us.
    removed->held.reset();
}

void observable::removeAllObservers() {
    std::vector<std::shared_ptr<entry>> removed;
    {
        std::lock_guard lock(mMutex);
        removed.swap(mEntries);
        for (auto& e : removed) e->registered = false;
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
    for (const auto& e : snapshot) {
        refPtr<iObserver> keepAlive;
        iObserver* target = nullptr;
        {
            std::lock_guard lock(mMutex);
            if (!e->registered) continue;
            keepAlive = e->held;
            target = e->observer;
        }
        target->onEvent(code, source, text, params);
    }
}

} // namespace ox
