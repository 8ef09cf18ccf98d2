#include "oxrefptr.h"
#include "oxrefobj.h"
#include "oxsharedptr.h"

#include "assertRecorder.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

struct counted : ox::refObj {
    explicit counted(int* destroyed) : mDestroyed(destroyed) {}
    ~counted() override { ++*mDestroyed; }
    int* mDestroyed;
};

// Two interfaces with one count, as a camera that is also a saved view.
struct iFirst : virtual ox::iRefObj { virtual int first() const = 0; };
struct iSecond : virtual ox::iRefObj { virtual int second() const = 0; };
struct both : iFirst, iSecond, ox::refObj {
    int first() const override { return 1; }
    int second() const override { return 2; }
};

TEST(refPtr, countsAndDestroysExactlyOnce) {
    int destroyed = 0;
    {
        ox::refPtr<counted> a(new counted(&destroyed));
        EXPECT_EQ(a->refCount(), 1u);
        {
            ox::refPtr<counted> copy = a;
            EXPECT_EQ(a->refCount(), 2u);
            ox::refPtr<counted> moved = std::move(copy);
            EXPECT_EQ(a->refCount(), 2u);
            moved = a; // self-equal reassignment keeps the count
            EXPECT_EQ(a->refCount(), 2u);
        }
        EXPECT_EQ(a->refCount(), 1u);
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(refPtr, multipleInterfacesShareOneCount) {
    ox::refPtr<both> object(new both);
    ox::refPtr<iFirst> first = object;
    ox::refPtr<iSecond> second = object;
    EXPECT_EQ(object->refCount(), 3u);
    EXPECT_EQ(first->refCount(), 3u);
    second->addRef();
    EXPECT_EQ(first->refCount(), 4u);
    second->release();
    auto back = ox::dynamicRefCast<iSecond>(first);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->second(), 2);
}

TEST(refPtr, noLostCountsUnderContention) {
    int destroyed = 0;
    ox::refPtr<counted> shared(new counted(&destroyed));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 50000; ++i) {
                ox::refPtr<counted> local = shared;
                local->addRef();
                local->release();
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(shared->refCount(), 1u);
    shared.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(refPtr, emptyDereferenceAssertsAndThrowsFalse) {
    oxtest::assertRecorder asserts;
    ox::refPtr<counted> empty;
    try {
        (void)empty->mDestroyed;
        FAIL() << "no exception";
    } catch (bool value) {
        EXPECT_FALSE(value);
    }
    ASSERT_EQ(asserts.count(), 1u);
    const std::wstring text = asserts.messages()[0];
    EXPECT_EQ(text.rfind(L"Assertion failed:\nm_p != NULL\n\nFile: libs/utils/inc/oxrefptr.h\nLine: ", 0), 0u) << text;
}

TEST(constSharedPtr, emptyReportsAssertion) {
    oxtest::assertRecorder asserts;
    ox::const_sharedPtr<int> empty;
    EXPECT_EQ(empty.checkedGet(), nullptr);
    ASSERT_EQ(asserts.conditions().size(), 1u);
    EXPECT_EQ(asserts.conditions()[0], L"m_p != nullptr");
    auto value = ox::const_sharedPtr<int>::make(7);
    EXPECT_EQ(*value, 7);
    EXPECT_EQ(asserts.count(), 1u);
}

} // namespace
