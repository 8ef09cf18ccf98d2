#include "oxthread.h"

#include "oxlog.h"

#include <algorithm>
#include <list>
#include <system_error>

#if defined(__linux__)
#include <cerrno>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace ox {

// ---------------------------------------------------------------------------------------------
// mutex

bool mutex::lock() {
    try {
        mMutex.lock();
        return true;
    } catch (const std::system_error& e) { // recursion too deep, or the system refused
        OX_LOG_DEBUG("ox::mutex::lock", L"lock failed: %s", e.what());
        return false;
    }
}

bool mutex::tryLock() { return mMutex.try_lock(); }

void mutex::release() { mMutex.unlock(); }

// ---------------------------------------------------------------------------------------------
// thread

namespace {

void applyPriority(thread::ePriority priority) {
#if defined(__linux__)
    // Under the default time-sharing policy a thread's priority is its nice value. Lowering it
    // is always allowed; raising it needs privileges, so a refusal is only logged.
    if (priority == thread::ePriority::normal) return;
    const pid_t tid = ::gettid();
    errno = 0;
    const int current = ::getpriority(PRIO_PROCESS, static_cast<id_t>(tid));
    if (current == -1 && errno != 0) return;
    const int wanted = std::clamp(current + (priority == thread::ePriority::low ? 5 : -5), -20, 19);
    if (::setpriority(PRIO_PROCESS, static_cast<id_t>(tid), wanted) != 0)
        OX_LOG_DEBUG("ox::thread::run", L"nice value %i not granted, errno %i", wanted, errno);
#else
    (void)priority;
#endif
}

} // namespace

thread::thread(ePriority priority, bool joinOnDestroy, function fn, void* argument)
    : mPriority(priority), mJoinOnDestroy(joinOnDestroy), mFunction(fn), mArgument(argument) {}

thread::~thread() {
    signalPool::singleton().forget(this);
    // Only the system thread's exit can still be pending here: the self-reference kept the
    // object alive until the function and its callbacks were done.
    if (mThread.joinable()) {
        if (mThread.get_id() == std::this_thread::get_id() || !mJoinOnDestroy)
            mThread.detach();
        else
            mThread.join();
    }
}

refPtr<thread> thread::create(bool startSuspended, ePriority priority, bool joinOnDestroy, function fn,
                              void* argument) {
    OX_ASSERT(fn != nullptr);
    if (fn == nullptr) return {};
    refPtr<thread> result(new thread(priority, joinOnDestroy, fn, argument));
    if (!startSuspended && !result->start()) return {};
    return result;
}

bool thread::start() {
    std::lock_guard lock(mStateMutex);
    if (mStarted) return false;
    addRef(); // the running thread's own reference, released as the last thing run() does
    try {
        mThread = std::thread(&thread::run, this);
    } catch (const std::system_error& e) {
        OX_LOG_DEBUG("ox::thread::start", L"cannot start a thread: %s", e.what());
        // Not the last reference: the caller holds one, so this cannot destroy us under the lock.
        release();
        return false;
    }
    mStarted = true;
    return true;
}

bool thread::hasStarted() const {
    std::lock_guard lock(mStateMutex);
    return mStarted;
}

bool thread::hasFinished() const { return mFinished.load(std::memory_order_acquire); }

int thread::exitCode() const { return hasFinished() ? mExitCode.load(std::memory_order_relaxed) : 0; }

bool thread::join() {
    std::unique_lock lock(mStateMutex);
    if (!mStarted || mThread.get_id() == std::this_thread::get_id()) return false;
    mDoneChanged.wait(lock, [this] { return mDone; });
    return true;
}

void thread::run() {
    applyPriority(mPriority);
    int code = -1;
    try {
        code = mFunction(mArgument);
    } catch (...) {
        // Nothing may escape a thread function; the exit code tells the owner it failed.
        OX_LOG_DEBUG("ox::thread::run", L"thread function threw an exception");
    }
    mExitCode.store(code, std::memory_order_relaxed);
    signalPool::singleton().deliver(this); // sets mFinished, then runs the callbacks here
    {
        std::lock_guard lock(mStateMutex);
        mDone = true;
    }
    mDoneChanged.notify_all();
    release(); // may destroy this object: touch nothing afterwards
}

// ---------------------------------------------------------------------------------------------
// signalPool

struct signalPool::impl {
    enum class eState { waiting, queued, running };
    struct registration {
        thread* target;
        callback cb;
        void* user;
        eState state;
        std::thread::id runner; // the thread delivering it (queued or running)
    };

    std::mutex mutex;
    std::condition_variable runningEnded;
    // A list: a delivering thread keeps an iterator to its entry while the lock is released.
    std::list<registration> entries;

    // Runs one registration that the caller has marked running, outside the lock.
    void call(std::unique_lock<std::mutex>& lock, std::list<registration>::iterator it) {
        const registration r = *it;
        lock.unlock();
        try {
            r.cb(r.target, r.user);
        } catch (...) {
            OX_LOG_DEBUG("ox::signalPool::deliver", L"completion callback threw an exception");
        }
        lock.lock();
        entries.erase(it);
        runningEnded.notify_all();
    }
};

signalPool::signalPool() : mImpl(new impl) {}

signalPool::~signalPool() { delete mImpl; }

signalPool& signalPool::singleton() {
    // Never destroyed: detached threads may still finish while static objects are torn down.
    static signalPool* pool = new signalPool;
    return *pool;
}

void signalPool::attach(thread* t, callback cb, void* user) {
    OX_ASSERT(t != nullptr && cb != nullptr);
    if (t == nullptr || cb == nullptr) return;
    std::unique_lock lock(mImpl->mutex);
    // The finished flag is only set under this lock, so a registration is either seen by
    // deliver() or made after it and run here: never both, never neither.
    if (!t->hasFinished()) {
        mImpl->entries.push_back({t, cb, user, impl::eState::waiting, {}});
        return;
    }
    auto it = mImpl->entries.insert(mImpl->entries.end(),
                                    {t, cb, user, impl::eState::running, std::this_thread::get_id()});
    mImpl->call(lock, it);
}

bool signalPool::detach(thread* t, callback cb, void* user) {
    const auto matches = [&](const impl::registration& r) { return r.target == t && r.cb == cb && r.user == user; };
    const auto me = std::this_thread::get_id();
    std::unique_lock lock(mImpl->mutex);
    auto& entries = mImpl->entries;
    auto pending = std::find_if(entries.begin(), entries.end(), [&](const impl::registration& r) {
        return matches(r) && r.state != impl::eState::running;
    });
    if (pending != entries.end()) {
        entries.erase(pending);
        return true;
    }
    // Too late to prevent the call: wait until it is over, unless it is running on this thread.
    mImpl->runningEnded.wait(lock, [&] {
        return std::none_of(entries.begin(), entries.end(), [&](const impl::registration& r) {
            return matches(r) && r.state == impl::eState::running && r.runner != me;
        });
    });
    return false;
}

void signalPool::deliver(thread* t) {
    const auto me = std::this_thread::get_id();
    std::unique_lock lock(mImpl->mutex);
    t->mFinished.store(true, std::memory_order_release);
    for (auto& r : mImpl->entries) {
        if (r.target == t && r.state == impl::eState::waiting) {
            r.state = impl::eState::queued;
            r.runner = me;
        }
    }
    // One at a time: a detach may still withdraw a queued call while an earlier one runs.
    for (;;) {
        auto it = std::find_if(mImpl->entries.begin(), mImpl->entries.end(), [&](const impl::registration& r) {
            return r.target == t && r.state == impl::eState::queued && r.runner == me;
        });
        if (it == mImpl->entries.end()) break;
        it->state = impl::eState::running;
        mImpl->call(lock, it);
    }
}

void signalPool::forget(thread* t) {
    std::lock_guard lock(mImpl->mutex);
    // Only registrations that wait for a start that never came; a call under way on an
    // attaching thread removes its own entry.
    mImpl->entries.remove_if([&](const impl::registration& r) {
        return r.target == t && r.state == impl::eState::waiting;
    });
}

} // namespace ox
