#include "oxobservable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

// Records its calls and runs an optional action from inside onEvent.
struct recorder : ox::iObserver, ox::refObj {
    explicit recorder(std::vector<int>* log, int id, bool* destroyed = nullptr) : mLog(log), mId(id), mDestroyed(destroyed) {}
    ~recorder() override {
        if (mDestroyed) *mDestroyed = true;
    }
    void onEvent(int code, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
        mLog->push_back(mId * 1000 + code);
        if (mAction) mAction();
    }
    std::vector<int>* mLog;
    int mId;
    bool* mDestroyed;
    std::function<void()> mAction;
};

TEST(observable, reentrantChangesDuringFireEvent) {
    ox::observable source;
    std::vector<int> log;
    bool selfDestroyed = false;
    ox::refPtr<recorder> self(new recorder(&log, 1, &selfDestroyed));
    ox::refPtr<recorder> remover(new recorder(&log, 2));
    ox::refPtr<recorder> victim(new recorder(&log, 3));
    ox::refPtr<recorder> adder(new recorder(&log, 4));
    ox::refPtr<recorder> added(new recorder(&log, 5));

    source.addObserver(self);
    source.addObserver(remover);
    source.addObserver(victim);
    source.addObserver(adder);
    // The first observer removes itself while the observable holds its only reference.
    recorder* selfRaw = self.get();
    self->mAction = [&source, selfRaw] { source.removeObserver(selfRaw); };
    remover->mAction = [&] { source.removeObserver(victim.get()); };
    adder->mAction = [&] { source.addObserver(added); };
    self.reset();

    source.fireEvent(7, &source, L"", nullptr);
    // The removed victim was not yet called and must not be; the added one waits for the next event.
    EXPECT_EQ(log, (std::vector<int>{1007, 2007, 4007}));
    EXPECT_TRUE(selfDestroyed) << "released once the self-removing call returned";
    EXPECT_EQ(source.countObservers(), 3); // remover, adder, added

    log.clear();
    adder->mAction = nullptr;
    source.fireEvent(8, &source, L"", nullptr);
    EXPECT_EQ(log, (std::vector<int>{2008, 4008, 5008}));
}

TEST(observable, heldAndRawReferences) {
    std::vector<int> log;
    ox::refPtr<recorder> held(new recorder(&log, 1));
    ox::refPtr<recorder> raw(new recorder(&log, 2));
    {
        ox::observable source;
        source.addObserver(held);
        source.addObserver(held); // a second registration is ignored
        source.addRawObserver(raw.get());
        source.addRawObserver(nullptr);
        EXPECT_EQ(source.countObservers(), 2);
        EXPECT_EQ(held->refCount(), 2u);
        EXPECT_EQ(raw->refCount(), 1u);

        source.fireEvent(1, &source, L"", nullptr);
        EXPECT_EQ(log, (std::vector<int>{1001, 2001}));

        source.removeObserver(held.get());
        EXPECT_EQ(held->refCount(), 1u);
        source.removeObserver(held.get()); // unknown now: no change
        EXPECT_EQ(source.countObservers(), 1);
        source.addObserver(held);
        EXPECT_EQ(held->refCount(), 2u);
        source.removeAllObservers();
        EXPECT_EQ(source.countObservers(), 0);
        EXPECT_EQ(held->refCount(), 1u);
        source.addObserver(held);
    }
    // Destroying the observable gives back what it held and never touches raw observers.
    EXPECT_EQ(held->refCount(), 1u);
    EXPECT_EQ(raw->refCount(), 1u);
}

// An event delivered on a worker while the owner removes the observer: removal returns only after
// the call in progress, so the owner may delete a raw observer right away.
TEST(observable, removalWaitsForADeliveryOnAnotherThread) {
    struct slowObserver : ox::iObserver, ox::refObj {
        void onEvent(int, ox::iObservable*, const wchar_t*, ox::iEventParams*) override {
            inside = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            finished = true;
        }
        std::atomic<bool> inside{false}, finished{false};
    };
    ox::observable source;
    auto observer = std::make_unique<slowObserver>();
    source.addRawObserver(observer.get());
    std::thread worker([&] { source.fireEvent(2000, &source, nullptr, nullptr); });
    while (!observer->inside) std::this_thread::yield();
    source.removeObserver(observer.get());
    EXPECT_TRUE(observer->finished); // the delivery had returned
    observer.reset();                // and deleting it now is safe
    worker.join();
    source.fireEvent(2000, &source, nullptr, nullptr);
    EXPECT_EQ(source.countObservers(), 0);
}

} // namespace
