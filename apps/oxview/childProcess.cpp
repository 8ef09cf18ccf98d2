#include "childProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OXVIEW_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define OXVIEW_SANITIZED 1
#endif
#endif

namespace oxview {
namespace {

using clock = std::chrono::steady_clock;

/// The exit status the child's allocation-failure handler ends it with (reserved: see the header).
constexpr int kOutOfMemoryStatus = 125;
/// Of what the child prints, this much is kept; the rest is read and dropped so it never blocks.
constexpr std::size_t kKeptMessages = 4096;

/// Owns a file descriptor.
class fileDescriptor {
public:
    explicit fileDescriptor(int fd = -1) : mFd(fd) {}
    ~fileDescriptor() { reset(); }
    fileDescriptor(const fileDescriptor&) = delete;
    fileDescriptor& operator=(const fileDescriptor&) = delete;

    int get() const { return mFd; }
    void reset(int fd = -1) {
        if (mFd >= 0) ::close(mFd);  // never retried: Linux frees the descriptor even on EINTR
        mFd = fd;
    }

private:
    int mFd;
};

/// Both ends of a pipe whose descriptors do not leak into programs the caller starts.
struct pipe_t {
    fileDescriptor mRead, mWrite;
    static bool open(pipe_t& p) {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0) return false;
        p.mRead.reset(fds[0]);
        p.mWrite.reset(fds[1]);
        return true;
    }
};

/// A forked child that is killed and reaped when its owner goes, so that no path leaves a
/// running process or a zombie behind.
class childProcess {
public:
    explicit childProcess(pid_t pid) : mPid(pid) {}
    ~childProcess() {
        if (mReaped) return;
        ::kill(mPid, SIGKILL);
        while (::waitpid(mPid, nullptr, 0) < 0 && errno == EINTR) {}
    }
    childProcess(const childProcess&) = delete;
    childProcess& operator=(const childProcess&) = delete;

    /// Waits until the child ends or `deadline` passes (then false). `status` as waitpid gives it.
    bool waitUntil(clock::time_point deadline, int& status) {
        auto pause = std::chrono::microseconds(200);
        for (;;) {
            const pid_t done = ::waitpid(mPid, &status, WNOHANG);
            if (done == mPid) {
                mReaped = true;
                return true;
            }
            if (done < 0 && errno != EINTR) {  // someone else reaped it (SIGCHLD ignored)
                mReaped = true;
                status = 0;
                return true;
            }
            if (clock::now() >= deadline) return false;
            // Its pipes are closed, so it is on its way out: poll briefly.
            std::this_thread::sleep_for(pause);
            pause = std::min(pause * 2, std::chrono::microseconds(20000));
        }
    }

private:
    pid_t mPid;
    bool mReaped = false;
};

/// Reads what is ready on `fd`, keeping at most `keep` bytes in `into`; `overflow` tells that more
/// came. False at the end of the stream or on an error.
bool drain(int fd, std::vector<char>& into, std::size_t keep, bool& overflow) {
    char buffer[65536];
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0) return errno == EINTR || errno == EAGAIN;
    if (got == 0) return false;
    const std::size_t taken = std::min(static_cast<std::size_t>(got), keep - std::min(keep, into.size()));
    into.insert(into.end(), buffer, buffer + taken);
    overflow = overflow || taken < static_cast<std::size_t>(got);
    return true;
}

/// The caller's current address space in bytes.
std::size_t addressSpaceInUse() {
    std::FILE* statm = std::fopen("/proc/self/statm", "r");
    unsigned long pages = 0;
    if (statm) {
        if (std::fscanf(statm, "%lu", &pages) != 1) pages = 0;
        std::fclose(statm);
    }
    return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

[[noreturn]] void runChild(const std::function<int(int)>& work, const childLimits_t& limits, pipe_t& result,
                           pipe_t& messages) {
    // Whatever the caller (or a sanitizer, or a fuzzing engine) installed would report a crash of
    // the work as its own and run exit handlers here; the default action ends the child instead.
    for (int s : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS, SIGPIPE, SIGALRM, SIGINT, SIGTERM,
                  SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ})
        std::signal(s, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);

    // Descriptors above stderr first: with the caller's stdio closed, a pipe may sit on 0 to 2.
    const int resultFd = ::fcntl(result.mWrite.get(), F_DUPFD, STDERR_FILENO + 1);
    const int messagesFd = ::fcntl(messages.mWrite.get(), F_DUPFD, STDERR_FILENO + 1);
    for (pipe_t* p : {&result, &messages}) {
        ::close(p->mRead.get());
        ::close(p->mWrite.get());
    }
    ::dup2(messagesFd, STDOUT_FILENO);
    ::dup2(messagesFd, STDERR_FILENO);
    ::close(messagesFd);

    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    if (limits.mMemory > 0 && childMemoryLimitAvailable()) {
        const rlim_t cap = addressSpaceInUse() + limits.mMemory;
        const rlimit memory{cap, cap};
        ::setrlimit(RLIMIT_AS, &memory);
    }
    // Allocations that the limit refuses end the child with a status of their own instead of an
    // exception the work might report as something else.
    std::set_new_handler([] { ::_exit(kOutOfMemoryStatus); });

    int status = EXIT_FAILURE;
    try {
        status = work(resultFd);
    } catch (...) {
    }
    std::fflush(nullptr);  // what the work printed; the caller flushed its own before the fork
    ::_exit(status);
}

} // namespace

bool childMemoryLimitAvailable() {
#ifdef OXVIEW_SANITIZED
    return false;
#else
    return true;
#endif
}

childOutcome_t runInChild(const std::function<int(int)>& work, const childLimits_t& limits) {
    childOutcome_t outcome;
    pipe_t result, messages;
    if (!pipe_t::open(result) || !pipe_t::open(messages)) {
        outcome.mError = std::string("no pipe: ") + std::strerror(errno);
        return outcome;
    }
    const clock::time_point deadline = clock::now() + limits.mTime;
    // Buffered output would be written twice, once by each process, should the work flush it.
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid < 0) {
        outcome.mError = std::string("cannot fork: ") + std::strerror(errno);
        return outcome;
    }
    if (pid == 0) runChild(work, limits, result, messages);

    childProcess child(pid);
    result.mWrite.reset();
    messages.mWrite.reset();

    std::vector<char> text;
    bool tooLarge = false, messagesClipped = false;  // what does not fit of the messages is dropped
    pollfd watched[2] = {{result.mRead.get(), POLLIN, 0}, {messages.mRead.get(), POLLIN, 0}};
    const std::size_t maxOutput = limits.mMaxOutput ? limits.mMaxOutput : SIZE_MAX;
    while (watched[0].fd >= 0 || watched[1].fd >= 0) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - clock::now());
        if (left.count() <= 0) {
            outcome.mEnd = childOutcome_t::eEnd::timedOut;
            return outcome;  // the child is killed and reaped on the way out
        }
        const long long wait = limits.mWhileWaiting ? 100 : 1000 * 60;
        const int ready = ::poll(watched, 2, static_cast<int>(std::min<long long>(left.count(), wait)));
        if (limits.mWhileWaiting) limits.mWhileWaiting();
        if (ready < 0 && errno != EINTR) {
            outcome.mError = std::string("cannot watch the child: ") + std::strerror(errno);
            return outcome;
        }
        for (int i = 0; ready > 0 && i < 2; ++i) {
            if (watched[i].fd < 0 || watched[i].revents == 0) continue;
            const bool open = i == 0 ? drain(watched[i].fd, outcome.mOutput, maxOutput, tooLarge)
                                     : drain(watched[i].fd, text, kKeptMessages, messagesClipped);
            if (tooLarge) {
                outcome.mOutput.clear();
                outcome.mEnd = childOutcome_t::eEnd::outputTooLarge;
                return outcome;
            }
            if (!open) watched[i].fd = -1;  // poll skips negative descriptors
        }
    }
    outcome.mMessages.assign(text.begin(), text.end());

    // Both pipes are closed: the child is ending, or closed them and went on.
    int status = 0;
    if (!child.waitUntil(deadline, status)) {
        outcome.mEnd = childOutcome_t::eEnd::timedOut;
        return outcome;
    }
    if (WIFSIGNALED(status)) {
        outcome.mEnd = childOutcome_t::eEnd::signalled;
        outcome.mCode = WTERMSIG(status);
    } else if (WEXITSTATUS(status) == kOutOfMemoryStatus) {
        outcome.mEnd = childOutcome_t::eEnd::outOfMemory;
    } else {
        outcome.mEnd = childOutcome_t::eEnd::exited;
        outcome.mCode = WEXITSTATUS(status);
    }
    return outcome;
}

} // namespace oxview
