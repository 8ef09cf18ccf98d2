#pragma once
// Event sources and their observers. fireEvent calls every observer synchronously on the
// calling thread; observers may add or remove observers (themselves included) while an
// event is being delivered.
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxutils_export.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace ox {

class iObservable;

/// Extra data of an event; the meaning belongs to the event code.
class OX_UTILS_API iEventParams {
public:
    virtual ~iEventParams() = default;
};

class OX_UTILS_API iObserver : public virtual iRefObj {
public:
    virtual void onEvent(int code, iObservable* source, const wchar_t* text, iEventParams* params) = 0;
};

class OX_UTILS_API iObservable {
public:
    virtual ~iObservable() = default;
    /// Registers an observer and holds a reference to it. Registering the same observer twice
    /// is ignored.
    virtual void addObserver(const refPtr<iObserver>& observer) = 0;
    /// Registers an observer without taking a reference; the caller keeps it alive until it
    /// is removed.
    virtual void addRawObserver(iObserver* observer) = 0;
    /// Removes the observer. When another thread is delivering an event to it right now, waits
    /// until that call has returned, so the caller may destroy the observer afterwards.
    virtual void removeObserver(iObserver* observer) = 0;
    virtual void removeAllObservers() = 0;
    virtual int countObservers() const = 0;
    virtual void fireEvent(int code, iObservable* source, const wchar_t* text, iEventParams* params) = 0;
};

class OX_UTILS_API observable : public iObservable {
public:
    observable();
    ~observable() override;
    observable(const observable&) = delete;
    observable& operator=(const observable&) = delete;

    void addObserver(const refPtr<iObserver>& observer) override;
    void addRawObserver(iObserver* observer) override;
    void removeObserver(iObserver* observer) override;
    void removeAllObservers() override;
    int countObservers() const override;
    /// Calls each observer registered when the event starts and still registered when its turn comes.
    void fireEvent(int code, iObservable* source, const wchar_t* text, iEventParams* params) override;

private:
    struct entry;
    void add(iObserver* observer, bool holdReference);
    void waitForDeliveries(std::unique_lock<std::mutex>& lock, const entry& e);
    mutable std::mutex mMutex;
    std::condition_variable mDelivered;
    std::vector<std::shared_ptr<entry>> mEntries;
};

} // namespace ox
