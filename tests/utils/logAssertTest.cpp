#include "oxassert.h"
#include "oxlog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

struct namedPart : oxlog::iLogObj, ox::refObj {
    ox::string logDescription() const override { return L"part #7"; }
};

TEST(log, captureKeepsExactTextsPerLogger) {
    oxlog::logCapture capture;
    OX_LOG_DEBUG("ox::test::first", L"value %i of %ls", 42, L"answers");
    oxlog::logManager::getLogger("ox::test::second")->log(oxlog::eLevel::warn, L"careful", __FILE__, __LINE__, __func__);
    oxlog::logManager::getLogger("ox::test::first")
        ->log_debug(L"with object", __FILE__, __LINE__, __func__, ox::refPtr<oxlog::iLogObj>(new namedPart));

    EXPECT_EQ(capture.messages("ox::test::first"), (std::vector<std::wstring>{L"value 42 of answers", L"with object [part #7]"}));
    EXPECT_EQ(capture.messages("ox::test::second"), (std::vector<std::wstring>{L"careful"}));
    EXPECT_TRUE(capture.messages("ox::test").empty()) << "names are matched whole";
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].level, oxlog::eLevel::debug);
    EXPECT_EQ(lines[1].level, oxlog::eLevel::warn);
    // The same name gives the same logger.
    EXPECT_EQ(oxlog::logManager::getLogger("ox::test::first"), oxlog::logManager::getLogger("ox::test::first"));
    capture.clear();
    EXPECT_TRUE(capture.lines().empty());
}

TEST(log, debugIsCapturedButNotPrintedAtLevelInfo) {
    if (const char* level = std::getenv("OX_LOG_LEVEL"); level != nullptr && *level != '\0')
        GTEST_SKIP() << "OX_LOG_LEVEL is set; the default stderr level is what this checks";
    const auto logger = oxlog::logManager::getLogger("ox::test::levels");
    EXPECT_FALSE(logger->shouldLog(oxlog::eLevel::debug));
    {
        oxlog::logCapture capture;
        EXPECT_TRUE(logger->shouldLog(oxlog::eLevel::debug));
        testing::internal::CaptureStderr();
        OX_LOG_DEBUG("ox::test::levels", L"quiet line");
        logger->log(oxlog::eLevel::info, L"loud line", __FILE__, __LINE__, __func__);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_EQ(printed.find("quiet line"), std::string::npos) << printed;
        EXPECT_NE(printed.find("[info] [ox::test::levels] loud line"), std::string::npos) << printed;
        EXPECT_EQ(capture.messages("ox::test::levels"), (std::vector<std::wstring>{L"quiet line", L"loud line"}));
    }
    // Without a capture, debug lines are not even formatted again.
    EXPECT_FALSE(logger->shouldLog(oxlog::eLevel::debug));
}

// Debug lines are filtered by one process-wide level before the logger is even looked up; it has
// to follow the captures exactly: stay lowered while any capture is left, reach threads started
// later, and come back up when the last one goes.
TEST(log, debugFollowsEveryCaptureAcrossThreads) {
    const bool defaultLevel = [] {
        const char* level = std::getenv("OX_LOG_LEVEL");
        return level == nullptr || *level == '\0';
    }();
    {
        oxlog::logCapture outer;
        { oxlog::logCapture inner; }
        std::thread([] { OX_LOG_DEBUG("ox::test::late", L"from a thread %i", 2); }).join();
        OX_LOG_DEBUG("ox::test::late", L"after the inner capture went");
        EXPECT_EQ(outer.messages("ox::test::late"),
                  (std::vector<std::wstring>{L"from a thread 2", L"after the inner capture went"}));
    }
    if (!defaultLevel) return; // the rest checks what the default stderr level lets through
    EXPECT_FALSE(oxlog::isEnabled(oxlog::eLevel::debug));
    bool evaluated = false;
    OX_LOG_DEBUG("ox::test::late", L"%i", (evaluated = true, 1));
    EXPECT_FALSE(evaluated) << "a line nobody listens to must not evaluate its arguments";
}

TEST(log, capturesComeAndGoWhileOtherThreadsLog) {
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        while (!stop.load()) OX_LOG_DEBUG("ox::test::busy", L"tick");
    });
    // Enough rounds for a race detector to see capture changes overlap the writer's lines.
    for (int i = 0; i < 3000; ++i) {
        oxlog::logCapture capture;
        OX_LOG_DEBUG("ox::test::mine", L"round %i", i);
        ASSERT_EQ(capture.messages("ox::test::mine"), (std::vector<std::wstring>{ox::string::sformat(L"round %i", i)}));
    }
    stop = true;
    writer.join();
}

TEST(assert, messageFormatAndHandler) {
    std::vector<std::wstring> seen;
    auto previous = ox::setAssertHandler([&](const std::wstring& m) { seen.push_back(m); });
    oxlog::logCapture capture;
    ox::assertMsg(L"Assertion failed:\n%s\n\nFile: %s\nLine: %d", "a < b", "libs/x/src/y.cpp", 12);
    const int line = __LINE__ + 1;
    OX_ASSERT(1 + 1 == 3);
    OX_ASSERT(2 + 2 == 4);
    ox::setAssertHandler(std::move(previous));
    ox::assertMsg(L"after restore"); // goes to the previous handler, not to `seen`

    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0], L"Assertion failed:\na < b\n\nFile: libs/x/src/y.cpp\nLine: 12");
    EXPECT_EQ(seen[1], ox::string::sformat(L"Assertion failed:\n1 + 1 == 3\n\nFile: tests/utils/logAssertTest.cpp\nLine: %d", line));
    EXPECT_EQ(capture.messages("ox::assertMsg"), (std::vector<std::wstring>{seen[0], seen[1], L"after restore"}));
}

} // namespace
