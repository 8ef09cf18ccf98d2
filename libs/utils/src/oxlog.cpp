#include "oxlog.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string_view>

namespace oxlog {

// Constant-initialised, so it holds trace before any static constructor runs (see oxlog.h).
constinit std::atomic<int> detail::gLowestLevel{static_cast<int>(eLevel::trace)};

namespace {

spdlog::level::level_enum toSpd(eLevel level) { return static_cast<spdlog::level::level_enum>(level); }
eLevel fromSpd(spdlog::level::level_enum level) { return static_cast<eLevel>(level); }

spdlog::level::level_enum levelFromEnvironment() {
    const char* text = std::getenv("OX_LOG_LEVEL");
    if (text == nullptr || *text == '\0') return spdlog::level::info;
    // spdlog answers "off" for names it does not know; only an explicit "off" means off.
    const auto level = spdlog::level::from_str(text);
    return (level == spdlog::level::off && std::string_view(text) != "off") ? spdlog::level::info : level;
}

} // namespace

struct logCapture::sink final : spdlog::sinks::base_sink<std::mutex> {
    std::vector<capturedLine> captured;
    std::vector<capturedLine> snapshot() {
        std::lock_guard lock(mutex_);
        return captured;
    }
    void reset() {
        std::lock_guard lock(mutex_);
        captured.clear();
    }

protected:
    void sink_it_(const spdlog::details::log_msg& msg) override {
        const std::string_view text(msg.payload.data(), msg.payload.size());
        captured.push_back({std::string(msg.logger_name.data(), msg.logger_name.size()), fromSpd(msg.level),
                            ox::string::fromMBCtoWC(text)});
    }
    void flush_() override {}
};

namespace {

// The one sink every spdlog logger writes to. It forwards to stderr and to the active
// captures. spdlog walks a logger's sink list without a lock, so that list is set once at
// creation and never changed; captures come and go here, under this sink's own mutex.
class fanoutSink final : public spdlog::sinks::sink {
public:
    explicit fanoutSink(spdlog::level::level_enum stderrLevel) : mStderr(std::make_shared<spdlog::sinks::stderr_sink_mt>()) {
        mStderr->set_pattern("[%T.%e] [%l] [%n] %v");
        mStderr->set_level(stderrLevel);
    }

    void log(const spdlog::details::log_msg& msg) override {
        std::lock_guard lock(mMutex);
        if (mStderr->should_log(msg.level)) mStderr->log(msg);
        for (auto& capture : mCaptures) capture->log(msg);
    }
    void flush() override {
        std::lock_guard lock(mMutex);
        mStderr->flush();
    }
    // The stderr format is fixed above; captures keep only the message text.
    void set_pattern(const std::string&) override {}
    void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

    /// Returns the number of captures now active.
    std::size_t add(std::shared_ptr<logCapture::sink> capture) {
        std::lock_guard lock(mMutex);
        mCaptures.push_back(std::move(capture));
        return mCaptures.size();
    }
    std::size_t remove(const std::shared_ptr<logCapture::sink>& capture) {
        std::lock_guard lock(mMutex);
        std::erase(mCaptures, capture);
        return mCaptures.size();
    }
    spdlog::level::level_enum stderrLevel() const { return mStderr->level(); }

private:
    std::mutex mMutex;
    std::shared_ptr<spdlog::sinks::stderr_sink_mt> mStderr;
    std::vector<std::shared_ptr<logCapture::sink>> mCaptures;
};

class registry {
public:
    static registry& instance() {
        // Never destroyed: loggers may still be used from other static destructors at exit.
        static registry* r = new registry;
        return *r;
    }

    ox::refPtr<logger> get(const char* name, logger* (*make)(std::string)) {
        std::lock_guard lock(mMutex);
        auto it = mLoggers.find(name ? name : "");
        if (it != mLoggers.end()) return it->second;
        ox::refPtr<logger> created(make(name ? name : ""));
        mLoggers.emplace(created->name(), created);
        return created;
    }

    std::shared_ptr<spdlog::logger> makeSpdLogger(const std::string& name) {
        // Filtering happens before spdlog is reached (isEnabled) and in the fan-out sink (the
        // stderr level), so spdlog's own logger passes everything.
        auto spd = std::make_shared<spdlog::logger>(name, mFanout);
        spd->set_level(spdlog::level::trace);
        return spd;
    }

    void addSink(const std::shared_ptr<logCapture::sink>& s) {
        std::lock_guard lock(mLevelMutex);
        mCaptures = mFanout->add(s);
        refreshLocked();
    }
    void removeSink(const std::shared_ptr<logCapture::sink>& s) {
        std::lock_guard lock(mLevelMutex);
        mCaptures = mFanout->remove(s);
        refreshLocked();
    }

private:
    registry() : mFanout(std::make_shared<fanoutSink>(levelFromEnvironment())) { refreshLocked(); }

    // Lines are filtered before anything else happens: while a capture listens they all pass,
    // otherwise only what stderr would print. Counted, not flagged, since captures overlap.
    void refreshLocked() {
        const auto lowest = mCaptures > 0 ? spdlog::level::trace : mFanout->stderrLevel();
        detail::gLowestLevel.store(static_cast<int>(fromSpd(lowest)), std::memory_order_relaxed);
    }

    std::mutex mMutex;
    std::map<std::string, ox::refPtr<logger>, std::less<>> mLoggers;
    std::mutex mLevelMutex;
    std::shared_ptr<fanoutSink> mFanout;
    std::size_t mCaptures = 0;
};

} // namespace

struct logger::impl {
    std::shared_ptr<spdlog::logger> spd;
};

logger::logger(std::string name) : mName(std::move(name)), mImpl(std::make_unique<impl>()) {
    mImpl->spd = registry::instance().makeSpdLogger(mName);
}

logger::~logger() = default;

bool logger::shouldLog(eLevel level) const { return isEnabled(level); }

void logger::log_debug(const ox::string& message, const char* file, long line, const char* function,
                       ox::refPtr<iLogObj> object) const {
    log(eLevel::debug, message, file, line, function, std::move(object));
}

void logger::log(eLevel level, const ox::string& message, const char* file, long line, const char* function,
                 ox::refPtr<iLogObj> object) const {
    if (!shouldLog(level)) return;
    std::string text = ox::getMBCS(message);
    if (object) text += " [" + ox::getMBCS(object->logDescription()) + "]";
    mImpl->spd->log(spdlog::source_loc{file, static_cast<int>(line), function}, toSpd(level), text);
}

ox::refPtr<logger> logManager::getLogger(const char* name) {
    return registry::instance().get(name, [](std::string n) { return new logger(std::move(n)); });
}

logCapture::logCapture() : mSink(std::make_shared<sink>()) { registry::instance().addSink(mSink); }
logCapture::~logCapture() { registry::instance().removeSink(mSink); }

std::vector<capturedLine> logCapture::lines() const { return mSink->snapshot(); }

std::vector<std::wstring> logCapture::messages(const std::string& loggerName) const {
    std::vector<std::wstring> result;
    for (auto& line : mSink->snapshot())
        if (line.loggerName == loggerName) result.push_back(line.message);
    return result;
}

void logCapture::clear() { mSink->reset(); }

} // namespace oxlog
