#pragma once
// Running a piece of work in a forked child process under a time and memory budget, and
// collecting what it writes, so that whatever goes wrong in the work cannot take the caller down.
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace oxview {

struct childLimits_t {
    std::chrono::milliseconds mTime{10000};  ///< wall time from the fork until the child is killed
    std::size_t mMemory = 0;                 ///< address space beyond the caller's; 0: no limit
    std::size_t mMaxOutput = 0;              ///< result bytes the caller accepts; more kills the child
    std::function<void()> mWhileWaiting;     ///< called about every 100 ms while the child works; may be empty
};

struct childOutcome_t {
    enum class eEnd {
        exited,          ///< mCode is the exit status
        signalled,       ///< mCode is the signal
        timedOut,
        outOfMemory,     ///< an allocation failed within the memory limit
        outputTooLarge,
        failedToRun,     ///< mError says why (no pipe, no fork, ...)
    };
    eEnd mEnd = eEnd::failedToRun;
    int mCode = 0;
    std::vector<char> mOutput;  ///< what the work wrote to its result descriptor
    std::string mMessages;      ///< the start of what the child wrote to stdout and stderr
    std::string mError;
};

/// Whether this build can limit a child's memory. Sanitizer runtimes reserve terabytes of address
/// space for their shadow memory, so an address-space limit would fail their start-up or their
/// first allocation; in such builds only the time limit holds.
bool childMemoryLimitAvailable();

/// Runs `work` in a forked child and waits for it within `limits.mTime`. The work gets the write
/// end of the result pipe and returns the child's exit status (125 is reserved for an allocation
/// that failed: such a child ends as eEnd::outOfMemory); the child ends with _exit, so none
/// of its state, exit handlers or leaks outlive it, and it runs with the default signal
/// dispositions, so a crash ends it by the signal whatever handlers the caller installed. Its
/// stdout and stderr are captured (the first few KiB kept in mMessages), and it writes no core
/// file. The child is always reaped and every descriptor closed before this returns.
///
/// Fork before any thread exists: the child is a copy of the calling thread only, and a lock
/// another thread held at the fork stays locked in it (the time limit would end such a child).
childOutcome_t runInChild(const std::function<int(int resultFd)>& work, const childLimits_t& limits);

} // namespace oxview
