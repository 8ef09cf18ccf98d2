#include "oxjobsqueue.h"

#include "testGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using oxtest::gate;

TEST(jobsQueueAsync, finishedExactlyWhenIdle) {
    auto& queue = ox::iJobsQueueAsync::get();
    EXPECT_EQ(&queue, &ox::iJobsQueueAsync::get());
    ASSERT_TRUE(queue.waitFinished());
    EXPECT_TRUE(queue.isFinished());

    gate started, proceed;
    std::vector<int> order; // written by the worker only, read after waitFinished
    bool finishedInsideJob = true;
    bool waitInsideJob = true;
    std::thread::id worker;
    queue.post([&] {
        worker = std::this_thread::get_id();
        started.release();
        proceed.wait();
        order.push_back(1);
    });
    queue.post([] { throw std::runtime_error("job failure"); }); // logged, does not stop the queue
    queue.post([&] {
        finishedInsideJob = queue.isFinished(); // the running job itself still counts
        waitInsideJob = queue.waitFinished();   // would wait for itself
        order.push_back(3);
    });
    queue.post({});
    started.wait();
    EXPECT_FALSE(queue.isFinished()) << "one running, two pending";
    proceed.release();
    EXPECT_TRUE(queue.waitFinished());
    EXPECT_TRUE(queue.isFinished());
    EXPECT_EQ(order, (std::vector<int>{1, 3}));
    EXPECT_FALSE(finishedInsideJob);
    EXPECT_FALSE(waitInsideJob);
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(jobsQueueAsync, postsFromManyThreads) {
    auto& queue = ox::iJobsQueueAsync::get();
    std::atomic<int> ran{0};
    std::vector<std::thread> posters;
    for (int p = 0; p < 4; ++p)
        posters.emplace_back([&] {
            for (int i = 0; i < 500; ++i) queue.post([&] { ++ran; });
        });
    for (auto& p : posters) p.join();
    EXPECT_TRUE(queue.waitFinished());
    EXPECT_EQ(ran.load(), 2000);
    EXPECT_TRUE(queue.isFinished());
}

// A job that never ends must not hold the process at exit.
TEST(jobsQueueAsyncDeathTest, exitDoesNotWaitForARunawayJob) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static std::atomic<bool> started{false};
            ox::iJobsQueueAsync::get().post([] {
                started = true;
                std::this_thread::sleep_for(std::chrono::hours(1));
            });
            ox::iJobsQueueAsync::get().post([] { std::fputs("pending job ran at exit\n", stderr); });
            while (!started) std::this_thread::yield();
            std::exit(3);
        },
        testing::ExitedWithCode(3), "^$");
}

TEST(jobsQueueSync, runsOnTheProcessingThread) {
    auto& queue = ox::iJobsQueueSync::get();
    EXPECT_EQ(queue.processPending(), 0u);
    EXPECT_TRUE(queue.isFinished());

    std::vector<std::thread::id> ranOn;
    bool finishedInsideJob = true;
    bool waitInsideJob = true;
    std::thread([&] {
        queue.post([&] { ranOn.push_back(std::this_thread::get_id()); });
        queue.post([&] {
            finishedInsideJob = queue.isFinished();
            waitInsideJob = queue.waitFinished();
            ranOn.push_back(std::this_thread::get_id());
            queue.post([&] { ranOn.push_back(std::this_thread::get_id()); }); // waits for the next round
        });
    }).join();
    EXPECT_FALSE(queue.isFinished()) << "nothing runs until the owner asks";
    EXPECT_EQ(queue.processPending(), 2u);
    EXPECT_FALSE(queue.isFinished());
    EXPECT_FALSE(finishedInsideJob);
    EXPECT_FALSE(waitInsideJob);
    EXPECT_EQ(queue.processPending(), 1u);
    EXPECT_TRUE(queue.isFinished());
    EXPECT_EQ(ranOn, std::vector<std::thread::id>(3, std::this_thread::get_id()));

    // Another thread waiting for the queue is released by the owner's processing; the owner's
    // own wait runs what is pending.
    gate waiting;
    std::atomic<bool> waitReturned{false};
    std::thread::id lastRanOn;
    queue.post([&] { lastRanOn = std::this_thread::get_id(); });
    std::thread waiter([&] {
        waiting.release();
        EXPECT_TRUE(queue.waitFinished());
        waitReturned = true;
    });
    waiting.wait();
    EXPECT_TRUE(queue.waitFinished());
    waiter.join();
    EXPECT_TRUE(waitReturned.load());
    EXPECT_EQ(lastRanOn, std::this_thread::get_id()) << "only the owner runs jobs";
    EXPECT_TRUE(queue.isFinished());
}

} // namespace
