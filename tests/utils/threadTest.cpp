#include "oxthread.h"

#include "testGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using oxtest::gate;

int returnArgument(void* argument) { return *static_cast<int*>(argument); }
int waitForGate(void* argument) {
    static_cast<gate*>(argument)->wait();
    return 5;
}
int throwing(void*) { throw 1; }

TEST(mutex, recursiveAndExclusive) {
    ox::mutex m;
    ASSERT_TRUE(m.lock());
    ASSERT_TRUE(m.lock()); // the holder may lock again
    auto tryElsewhere = [&] {
        bool got = false;
        std::thread([&] {
            got = m.tryLock();
            if (got) m.release();
        }).join();
        return got;
    };
    m.release();
    EXPECT_FALSE(tryElsewhere()) << "still held once";
    m.release();
    EXPECT_TRUE(tryElsewhere());
    {
        ox::mutexLock guard(m);
        EXPECT_TRUE(guard.isLocked());
        EXPECT_FALSE(tryElsewhere());
    }
    EXPECT_TRUE(tryElsewhere());
}

TEST(thread, suspendedStartJoinAndExitCode) {
    int value = 17;
    auto t = ox::thread::create(true, ox::thread::ePriority::low, true, &returnArgument, &value);
    ASSERT_TRUE(t);
    EXPECT_FALSE(t->hasStarted());
    EXPECT_FALSE(t->join()) << "a suspended thread would never end";
    EXPECT_FALSE(t->hasFinished());
    EXPECT_EQ(t->exitCode(), 0);
    ASSERT_TRUE(t->start());
    EXPECT_FALSE(t->start());
    EXPECT_TRUE(t->join());
    EXPECT_TRUE(t->hasFinished());
    EXPECT_EQ(t->exitCode(), 17);

    auto failing = ox::thread::create(false, ox::thread::ePriority::high, false, &throwing, nullptr);
    ASSERT_TRUE(failing);
    EXPECT_TRUE(failing->join());
    EXPECT_EQ(failing->exitCode(), -1);
}

struct completion {
    std::atomic<int> calls{0};
    std::atomic<bool> finishedSeen{true};
    std::thread::id lastCaller;
    static void onFinished(ox::thread* t, void* user) {
        auto* self = static_cast<completion*>(user);
        if (!t->hasFinished()) self->finishedSeen = false;
        self->lastCaller = std::this_thread::get_id();
        ++self->calls;
    }
};

// Dropping every outside reference while the function runs must neither destroy the object
// nor leave a joinable system thread behind, whichever way the destructor ends it.
TEST(thread, outlivesItsLastOutsideReference) {
    for (const bool joinOnDestroy : {true, false}) {
        for (const bool dropEarly : {true, false}) {
            gate g;
            completion done;
            auto t = ox::thread::create(false, ox::thread::ePriority::normal, joinOnDestroy, &waitForGate, &g);
            ASSERT_TRUE(t);
            ox::signalPool::singleton().attach(t.get(), &completion::onFinished, &done);
            if (dropEarly) {
                t.reset(); // the worker now drops the last reference itself
                g.release();
                while (done.calls.load() == 0) std::this_thread::yield();
            } else {
                g.release();
                EXPECT_TRUE(t->join());
                EXPECT_EQ(t->exitCode(), 5);
                t.reset(); // destroyed here, after the function returned
            }
            EXPECT_EQ(done.calls.load(), 1);
            EXPECT_TRUE(done.finishedSeen.load());
        }
    }
}

TEST(signalPool, callbackThreadAndDetach) {
    gate g;
    completion onWorker, detached, late;
    auto t = ox::thread::create(true, ox::thread::ePriority::normal, true, &waitForGate, &g);
    ox::signalPool::singleton().attach(t.get(), &completion::onFinished, &onWorker);
    ox::signalPool::singleton().attach(t.get(), &completion::onFinished, &detached);
    EXPECT_TRUE(ox::signalPool::singleton().detach(t.get(), &completion::onFinished, &detached));
    EXPECT_FALSE(ox::signalPool::singleton().detach(t.get(), &completion::onFinished, &detached)) << "only one was attached";
    ASSERT_TRUE(t->start());
    g.release();
    ASSERT_TRUE(t->join());
    EXPECT_EQ(onWorker.calls.load(), 1);
    EXPECT_NE(onWorker.lastCaller, std::this_thread::get_id());
    EXPECT_EQ(detached.calls.load(), 0);
    EXPECT_FALSE(ox::signalPool::singleton().detach(t.get(), &completion::onFinished, &onWorker)) << "already called";

    // Attaching to a finished thread calls back at once, here.
    ox::signalPool::singleton().attach(t.get(), &completion::onFinished, &late);
    EXPECT_EQ(late.calls.load(), 1);
    EXPECT_EQ(late.lastCaller, std::this_thread::get_id());
    EXPECT_TRUE(late.finishedSeen.load());
    EXPECT_EQ(onWorker.calls.load(), 1);

    // A thread that never runs calls nothing, and its registrations go with it.
    completion never;
    auto idle = ox::thread::create(true, ox::thread::ePriority::normal, true, &waitForGate, &g);
    ox::signalPool::singleton().attach(idle.get(), &completion::onFinished, &never);
    idle.reset();
    EXPECT_EQ(never.calls.load(), 0);
}

// The completion handler of a transfer detaches itself from inside the callback.
void detachSelf(ox::thread* t, void* user) {
    ox::signalPool::singleton().detach(t, &detachSelf, user);
    ++*static_cast<std::atomic<int>*>(user);
}

// Many short threads whose completion races attach and detach: every registration ends in
// exactly one call or in a successful detach, never both, never neither.
TEST(signalPool, racesBetweenCompletionAttachAndDetach) {
    constexpr int kThreads = 200;
    int value = 0;
    std::vector<completion> calls(kThreads);
    std::vector<char> prevented(kThreads, 0);
    std::atomic<int> selfDetached{0};
    std::vector<ox::refPtr<ox::thread>> threads;
    for (int i = 0; i < kThreads; ++i) {
        auto t = ox::thread::create(false, ox::thread::ePriority::normal, i % 2 == 0, &returnArgument, &value);
        ASSERT_TRUE(t);
        ox::signalPool::singleton().attach(t.get(), &completion::onFinished, &calls[i]);
        if (i % 3 == 0) ox::signalPool::singleton().attach(t.get(), &detachSelf, &selfDetached);
        if (i % 2 == 1) prevented[i] = ox::signalPool::singleton().detach(t.get(), &completion::onFinished, &calls[i]);
        if (i % 4 != 3) threads.push_back(std::move(t)); // the rest end on their own
    }
    for (auto& t : threads) EXPECT_TRUE(t->join());
    for (int i = 0; i < kThreads; ++i) {
        // Threads without an outside reference cannot be joined: wait for their callback.
        if (i % 4 == 3 && !prevented[i]) {
            while (calls[i].calls.load() == 0) std::this_thread::yield();
        }
        EXPECT_EQ(calls[i].calls.load(), prevented[i] ? 0 : 1) << i;
        EXPECT_TRUE(calls[i].finishedSeen.load()) << i;
    }
    threads.clear();
    while (selfDetached.load() < (kThreads + 2) / 3) std::this_thread::yield();
    EXPECT_EQ(selfDetached.load(), (kThreads + 2) / 3);
}

// A detach that comes too late to prevent the call returns only after the call has ended, so
// the caller may then destroy what the callback uses.
TEST(signalPool, lateDetachWaitsForRunningCallback) {
    struct slowCallback {
        gate entered, proceed;
        std::atomic<bool> ended{false};
        static void run(ox::thread*, void* user) {
            auto* self = static_cast<slowCallback*>(user);
            self->entered.release();
            self->proceed.wait();
            self->ended = true;
        }
    } cb;
    int value = 1;
    auto t = ox::thread::create(true, ox::thread::ePriority::normal, true, &returnArgument, &value);
    ox::signalPool::singleton().attach(t.get(), &slowCallback::run, &cb);
    ASSERT_TRUE(t->start());
    cb.entered.wait();
    bool endedWhenDetachReturned = false;
    bool detachResult = true;
    std::thread detacher([&] {
        detachResult = ox::signalPool::singleton().detach(t.get(), &slowCallback::run, &cb);
        endedWhenDetachReturned = cb.ended.load();
    });
    // Give the detacher time to block inside detach; the outcome must not depend on it.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    cb.proceed.release();
    detacher.join();
    EXPECT_FALSE(detachResult);
    EXPECT_TRUE(endedWhenDetachReturned);
    EXPECT_TRUE(t->join());
}

} // namespace
