#pragma once
// Process-wide job queues: one that runs jobs on its own worker thread, one that runs them on
// the thread that owns it when that thread asks. Jobs of one queue run one at a time, in the
// order they were posted. A job that throws is logged and counts as done.
#include "oxutils_export.h"

#include <cstddef>
#include <functional>

namespace ox {

class OX_UTILS_API iJobsQueue {
public:
    virtual ~iJobsQueue() = default;
    /// Appends a job. Any thread may post. An empty job is ignored.
    virtual void post(std::function<void()> job) = 0;
    /// True exactly when no job is pending or running.
    virtual bool isFinished() const = 0;
    /// Blocks until isFinished(). False without waiting when called from inside one of this
    /// queue's jobs, which would wait for itself.
    virtual bool waitFinished() = 0;
};

/// Runs its jobs on a worker thread of its own, started with the first job. At process exit
/// jobs not yet started are dropped, a running job is waited for briefly, and the worker is
/// joined (or, when the job does not end in time, left behind) so that exit never hangs.
class OX_UTILS_API iJobsQueueAsync : public iJobsQueue {
public:
    static iJobsQueueAsync& get();
};

/// Runs its jobs only when its owner calls processPending(), on the owner's thread. The owner
/// is the thread that calls processPending(). waitFinished() on the owner (or, before anyone
/// has processed, on any thread) runs the pending jobs itself; on other threads it blocks until
/// the owner has run them.
class OX_UTILS_API iJobsQueueSync : public iJobsQueue {
public:
    static iJobsQueueSync& get();
    /// Runs the jobs that are pending when it is called (jobs they post wait for the next call)
    /// and returns how many ran.
    virtual std::size_t processPending() = 0;
};

} // namespace ox
