#include "oxlog.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string_view>

namespace oxlog {
namespace {

spdlog::level::level_enum toSpd(eLevel level) { return static_cast<spdlog::level::level_enum>(level); }
eLevel fromSpd(spdlog::level::level_enum level) { return static_cast<eLevel>(level); }

spdlog::level::level_enum levelFromEnvironment() {
    const char* text = std::getenv("OX_LOG_LEVEL");
    if (text == nullptr || *text == '\0') return spdlog::level::info;
    return spdlog::level::from_str(text); // unknown names give "off" in spdlog; treat them as info
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

// Every logger shares one stderr sink; captures are added to all loggers, present and future.
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
        std::lock_guard lock(mSinkMutex);
        auto spd = std::make_shared<spdlog::logger>(name, mSinks.begin(), mSinks.end());
        spd->set_pattern("[%T.%e] [%l] [%n] %v");
        spd->set_level(effectiveLevelLocked());
        mSpdLoggers.push_back(spd);
        return spd;
    }

    void addSink(const std::shared_ptr<logCapture::sink>& s) {
        std::lock_guard lock(mSinkMutex);
        s->set_level(spdlog::level::trace);
        mSinks.push_back(s);
        ++mCaptures;
        refreshLocked();
    }
    void removeSink(const std::shared_ptr<logCapture::sink>& s) {
        std::lock_guard lock(mSinkMutex);
        std::erase(mSinks, std::static_pointer_cast<spdlog::sinks::sink>(s));
        --mCaptures;
        refreshLocked();
    }

private:
    registry() {
        auto err = std::make_shared<spdlog::sinks::stderr_sink_mt>();
        mStderrLevel = levelFromEnvironment();
        err->set_level(mStderrLevel);
        mSinks.push_back(err);
    }
    // Loggers filter before the sinks do: while a capture listens they pass everything.
    spdlog::level::level_enum effectiveLevelLocked() const { return mCaptures > 0 ? spdlog::level::trace : mStderrLevel; }
    void refreshLocked() {
        for (auto& spd : mSpdLoggers) {
            spd->sinks().assign(mSinks.begin(), mSinks.end());
            spd->set_level(effectiveLevelLocked());
        }
    }

    std::mutex mMutex;
    std::map<std::string, ox::refPtr<logger>, std::less<>> mLoggers;
    std::mutex mSinkMutex;
    std::vector<std::shared_ptr<spdlog::sinks::sink>> mSinks;
    std::vector<std::shared_ptr<spdlog::logger>> mSpdLoggers;
    spdlog::level::level_enum mStderrLevel = spdlog::level::info;
    int mCaptures = 0;
};

} // namespace

struct logger::impl {
    std::shared_ptr<spdlog::logger> spd;
};

logger::logger(std::string name) : mName(std::move(name)), mImpl(std::make_unique<impl>()) {
    mImpl->spd = registry::instance().makeSpdLogger(mName);
}

logger::~logger() = default;

bool logger::shouldLog(eLevel level) const { return mImpl->spd->should_log(toSpd(level)); }

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
