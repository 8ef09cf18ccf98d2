#pragma once
// A line on stderr that shows a long stage is still at work. Only on a terminal, and only after a
// second: quick runs, pipes and logs stay clean.
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace oxview {

class progressLine {
public:
    /// `what` names the stage, e.g. "loading 'part.stl'". Shown only when stderr is a terminal.
    explicit progressLine(std::string what);
    /// Clears the line when it was shown.
    ~progressLine();
    progressLine(const progressLine&) = delete;
    progressLine& operator=(const progressLine&) = delete;

    /// Call often while the stage runs: from a second on, redraws the line (a spinner and the
    /// elapsed time) every tenth of a second.
    void update();

private:
    using clock = std::chrono::steady_clock;
    std::string mWhat;
    bool mEnabled;
    bool mShown = false;
    unsigned mTurn = 0;
    clock::time_point mStart = clock::now();
    clock::time_point mLastDrawn;
};

/// Updates a progressLine from a thread of its own, for work that cannot call update itself (a
/// frame). Start it only after the last fork: a forked child would inherit a copy of its locks.
class progressWatcher {
public:
    explicit progressWatcher(std::string what);
    /// Stops the thread and clears the line.
    ~progressWatcher();
    progressWatcher(const progressWatcher&) = delete;
    progressWatcher& operator=(const progressWatcher&) = delete;

private:
    progressLine mLine;
    std::mutex mMutex;
    std::condition_variable mWake;
    bool mStop = false;
    std::thread mThread;
};

} // namespace oxview
