#include "oxjobsqueue.h"

#include "oxlog.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace ox {
namespace {

using job = std::function<void()>;

void runJob(const job& j, const char* loggerName) {
    try {
        j();
    } catch (const std::exception& e) {
        OX_LOG_DEBUG(loggerName, L"job threw: %s", e.what());
    } catch (...) {
        OX_LOG_DEBUG(loggerName, L"job threw an exception");
    }
}

// How long process exit waits for a job that is still running before leaving it behind.
constexpr std::chrono::seconds kExitGrace{2};

class asyncQueue final : public iJobsQueueAsync {
public:
    void post(job j) override {
        if (!j) return;
        std::unique_lock lock(mMutex);
        if (mStopping) {
            OX_LOG_DEBUG("ox::iJobsQueueAsync::post", L"job posted during process exit dropped");
            return;
        }
        if (!mWorker.joinable() && !startWorkerLocked()) {
            // Without a worker the job can only run here; that is better than never.
            lock.unlock();
            runJob(j, "ox::iJobsQueueAsync::post");
            return;
        }
        mPending.push_back(std::move(j));
        ++mOutstanding;
        mWorkAvailable.notify_one();
    }

    bool isFinished() const override {
        std::lock_guard lock(mMutex);
        return mOutstanding == 0;
    }

    bool waitFinished() override {
        std::unique_lock lock(mMutex);
        if (std::this_thread::get_id() == mWorkerId) return false;
        mChanged.wait(lock, [this] { return mOutstanding == 0; });
        return true;
    }

    void shutdown() {
        std::deque<job> dropped;
        std::unique_lock lock(mMutex);
        mStopping = true;
        mOutstanding -= mPending.size();
        dropped.swap(mPending);
        mWorkAvailable.notify_all();
        mChanged.notify_all();
        if (!mWorker.joinable()) return;
        const bool exited = mChanged.wait_for(lock, kExitGrace, [this] { return mWorkerExited; });
        std::thread worker = std::move(mWorker);
        lock.unlock();
        if (exited) {
            worker.join();
        } else {
            OX_LOG_DEBUG("ox::iJobsQueueAsync::shutdown", L"a job is still running at exit; worker left behind");
            worker.detach();
        }
        // The dropped jobs' captures are destroyed here, outside the lock.
    }

private:
    bool startWorkerLocked() {
        try {
            mWorker = std::thread([this] { workerLoop(); });
        } catch (const std::system_error& e) {
            OX_LOG_DEBUG("ox::iJobsQueueAsync::post", L"cannot start the worker: %s", e.what());
            return false;
        }
        mWorkerId = mWorker.get_id();
        // Registered now rather than at first use of the queue, so that it runs before the
        // static objects made before the worker existed are destroyed.
        std::atexit([] { static_cast<asyncQueue&>(iJobsQueueAsync::get()).shutdown(); });
        return true;
    }

    void workerLoop() {
        std::unique_lock lock(mMutex);
        for (;;) {
            mWorkAvailable.wait(lock, [this] { return mStopping || !mPending.empty(); });
            if (mPending.empty()) break; // stopping
            job j = std::move(mPending.front());
            mPending.pop_front();
            lock.unlock();
            runJob(j, "ox::iJobsQueueAsync::run");
            j = nullptr; // captures go before the job counts as done
            lock.lock();
            if (--mOutstanding == 0) mChanged.notify_all();
        }
        mWorkerExited = true;
        mChanged.notify_all();
    }

    mutable std::mutex mMutex;
    std::condition_variable mWorkAvailable;
    std::condition_variable mChanged; // outstanding count or worker exit
    std::deque<job> mPending;
    std::size_t mOutstanding = 0; // pending + running
    bool mStopping = false;
    bool mWorkerExited = false;
    std::thread mWorker;
    std::thread::id mWorkerId;
};

// Depth of sync-queue jobs running on this thread; a wait from inside one would wait for itself.
thread_local int tRunningSyncJobs = 0;

class syncQueue final : public iJobsQueueSync {
public:
    void post(job j) override {
        if (!j) return;
        std::lock_guard lock(mMutex);
        mPending.push_back(std::move(j));
        ++mOutstanding;
        mChanged.notify_all();
    }

    bool isFinished() const override {
        std::lock_guard lock(mMutex);
        return mOutstanding == 0;
    }

    std::size_t processPending() override {
        std::unique_lock lock(mMutex);
        mOwner = std::this_thread::get_id();
        const std::size_t available = mPending.size();
        std::size_t ran = 0;
        while (ran < available && !mPending.empty()) {
            job j = std::move(mPending.front());
            mPending.pop_front();
            lock.unlock();
            ++tRunningSyncJobs;
            runJob(j, "ox::iJobsQueueSync::processPending");
            --tRunningSyncJobs;
            j = nullptr;
            lock.lock();
            ++ran;
            if (--mOutstanding == 0) mChanged.notify_all();
        }
        return ran;
    }

    bool waitFinished() override {
        if (tRunningSyncJobs > 0) return false;
        const auto me = std::this_thread::get_id();
        std::unique_lock lock(mMutex);
        while (mOutstanding > 0) {
            const bool mayRun = mOwner == me || mOwner == std::thread::id();
            if (mayRun && !mPending.empty()) {
                lock.unlock();
                processPending();
                lock.lock();
            } else {
                // Another thread is running the last jobs, or only the owner may run them.
                mChanged.wait(lock);
            }
        }
        return true;
    }

private:
    mutable std::mutex mMutex;
    std::condition_variable mChanged; // a job was posted or finished
    std::deque<job> mPending;
    std::size_t mOutstanding = 0; // pending + running
    std::thread::id mOwner;
};

} // namespace

// Both queues are never destroyed: static destructors that run late may still post or ask.
iJobsQueueAsync& iJobsQueueAsync::get() {
    static asyncQueue* queue = new asyncQueue;
    return *queue;
}

iJobsQueueSync& iJobsQueueSync::get() {
    static syncQueue* queue = new syncQueue;
    return *queue;
}

} // namespace ox
