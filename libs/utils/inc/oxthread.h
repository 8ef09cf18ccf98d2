#pragma once
// Threads for background work: a recursive mutex, a reference-counted worker thread and the
// signal pool that tells interested parties when a worker has finished.
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxutils_export.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ox {

/// A recursive mutex: the thread that holds it may lock it again (a view setter that holds the
/// lock calls the transfer, which takes it too). Every lock() that succeeded needs one release().
class OX_UTILS_API mutex {
public:
    mutex() = default;
    mutex(const mutex&) = delete;
    mutex& operator=(const mutex&) = delete;

    /// Blocks until the mutex is held. False only when the system refused (the lock is then not held).
    bool lock();
    /// Takes the mutex only if that is possible without waiting.
    bool tryLock();
    void release();

private:
    std::recursive_mutex mMutex;
};

/// Holds an ox::mutex for the lifetime of the guard.
class OX_UTILS_API mutexLock {
public:
    explicit mutexLock(mutex& m) : mMutex(m), mLocked(m.lock()) {}
    ~mutexLock() {
        if (mLocked) mMutex.release();
    }
    mutexLock(const mutexLock&) = delete;
    mutexLock& operator=(const mutexLock&) = delete;

    bool isLocked() const { return mLocked; }

private:
    mutex& mMutex;
    bool mLocked;
};

/// A worker thread running `int function(void* argument)` once.
///
/// While the function runs (and until the completion callbacks of signalPool have run) the
/// thread holds a reference to itself, so dropping every outside reference never destroys a
/// running thread. The object therefore only dies after its function has returned.
class OX_UTILS_API thread : public refObj {
public:
    enum class ePriority { low, normal, high };
    using function = int (*)(void* argument);

    /// Creates the thread.
    /// - startSuspended: true creates it without running anything until start() is called;
    ///   false starts it at once.
    /// - priority: mapped best-effort to the scheduler (a raised priority that the system does
    ///   not grant is left at normal).
    /// - joinOnDestroy: true makes the destructor join the system thread, so that when the last
    ///   reference goes no system thread of this object remains; false detaches it. Either way
    ///   the destructor waits for no more than the thread's exit, because the object cannot die
    ///   before its function returned. When the last reference goes on the worker itself, the
    ///   system thread is always detached (a thread cannot join itself).
    /// Returns an empty pointer when `fn` is null or the system cannot start a thread.
    static refPtr<thread> create(bool startSuspended, ePriority priority, bool joinOnDestroy, function fn,
                                 void* argument);

    /// Starts a suspended thread. False when it was started already or the system refused.
    bool start();
    /// True once start() succeeded (or the thread was created running).
    bool hasStarted() const;
    /// True once the function has returned.
    bool hasFinished() const;
    /// The function's return value; 0 until hasFinished(). A function that throws ends with -1.
    int exitCode() const;
    /// Waits until the function has returned and the completion callbacks attached in time have
    /// run. False without waiting when the thread was never started or when called on the
    /// thread itself (it would wait for itself).
    bool join();

protected:
    ~thread() override;

private:
    friend class signalPool;
    thread(ePriority priority, bool joinOnDestroy, function fn, void* argument);
    void run();

    const ePriority mPriority;
    const bool mJoinOnDestroy;
    const function mFunction;
    void* const mArgument;

    std::atomic<bool> mFinished{false};
    std::atomic<int> mExitCode{0};
    mutable std::mutex mStateMutex; // guards mStarted, mDone and mThread
    std::condition_variable mDoneChanged;
    bool mStarted = false;
    bool mDone = false; // function returned and completion callbacks delivered
    std::thread mThread;
};

/// Completion signals of threads. An attached callback runs exactly once, after the thread's
/// function has returned (hasFinished() is already true when it runs):
/// - normally on the finishing worker thread, right after the function returned;
/// - at once on the attaching thread when the thread had already finished.
/// The worker keeps its self-reference while its callbacks run, so the thread pointer a
/// callback receives is valid. A thread that is destroyed without ever having been started
/// calls none of its callbacks.
class OX_UTILS_API signalPool {
public:
    using callback = void (*)(thread* finished, void* user);

    static signalPool& singleton();

    /// Registers one call of `cb(t, user)` for the completion of `t`. Attaching the same pair
    /// twice registers two calls.
    void attach(thread* t, callback cb, void* user);
    /// Removes one registration of the pair. True when that prevented a call. When the call is
    /// already under way on another thread, waits until it has returned, so that afterwards
    /// `user` may be destroyed safely; called from inside the callback it returns at once.
    bool detach(thread* t, callback cb, void* user);

    signalPool(const signalPool&) = delete;
    signalPool& operator=(const signalPool&) = delete;

private:
    friend class thread;
    signalPool();
    ~signalPool();
    /// Marks `t` finished and runs its callbacks on the calling thread.
    void deliver(thread* t);
    /// Drops every registration of a thread that dies without having run.
    void forget(thread* t);

    struct impl;
    impl* mImpl;
};

} // namespace ox
