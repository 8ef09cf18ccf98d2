#include "progressLine.h"

#include <cstdio>

#include <unistd.h>

namespace oxview {
namespace {

constexpr std::chrono::seconds kQuiet{1};
constexpr std::chrono::milliseconds kRedraw{100};

} // namespace

progressLine::progressLine(std::string what) : mWhat(std::move(what)), mEnabled(::isatty(STDERR_FILENO) == 1) {}

progressLine::~progressLine() {
    if (mShown) std::fputs("\r\033[K", stderr);  // back to the line's start, erased
}

void progressLine::update() {
    const clock::time_point now = clock::now();
    if (!mEnabled || now - mStart < kQuiet || (mShown && now - mLastDrawn < kRedraw)) return;
    static const char kSpinner[] = "|/-\\";
    const double seconds = std::chrono::duration<double>(now - mStart).count();
    std::fprintf(stderr, "\r\033[Koxview: %s %c %.1f s", mWhat.c_str(), kSpinner[mTurn++ % 4], seconds);
    std::fflush(stderr);
    mShown = true;
    mLastDrawn = now;
}

progressWatcher::progressWatcher(std::string what) : mLine(std::move(what)) {
    mThread = std::thread([this] {
        std::unique_lock lock(mMutex);
        while (!mWake.wait_for(lock, kRedraw, [this] { return mStop; })) mLine.update();
    });
}

progressWatcher::~progressWatcher() {
    {
        const std::lock_guard lock(mMutex);
        mStop = true;
    }
    mWake.notify_one();
    mThread.join();
}

} // namespace oxview
