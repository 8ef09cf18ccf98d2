#pragma once
// Named loggers. Each name maps to one logger; output goes to stderr at the level given by the
// OX_LOG_LEVEL environment variable (trace, debug, info, warn, error, critical, off; default
// info). Tests capture what the loggers write with oxlog::logCapture.
//
// A line nobody listens to must cost next to nothing, since debug lines sit in draw and pick
// loops: the macros below compare the level with one process-wide atomic before they look the
// logger up or format anything.
#include "oxrefobj.h"
#include "oxrefptr.h"
#include "oxstring.h"
#include "oxutils_export.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace oxlog {

enum class eLevel { trace = 0, debug, info, warn, error, critical, off };

namespace detail {
/// The lowest level a line goes anywhere at: the stderr level, or trace while a capture listens.
/// It starts at trace so that a line written before the registry exists takes the slow path,
/// which creates the registry, and the registry then stores the level from OX_LOG_LEVEL. Written
/// only by the registry, under its lock.
extern OX_UTILS_API std::atomic<int> gLowestLevel;
} // namespace detail

/// Whether a line at this level would go anywhere (stderr or a capture): one relaxed load.
/// Relaxed is enough: the thread that attaches a capture sees its own store, other threads see
/// it once they synchronise with that thread, and a line racing with the attach was never
/// promised to be caught.
inline bool isEnabled(eLevel level) noexcept {
    return static_cast<int>(level) >= detail::gLowestLevel.load(std::memory_order_relaxed);
}

/// An object that may be named in a log line (optional context of a message).
class OX_UTILS_API iLogObj : public virtual ox::iRefObj {
public:
    virtual ox::string logDescription() const = 0;
};

class OX_UTILS_API logger : public ox::refObj {
public:
    const std::string& name() const { return mName; }

    /// Writes one debug-level line: the message, tagged with source file, line and function.
    void log_debug(const ox::string& message, const char* file, long line, const char* function,
                   ox::refPtr<iLogObj> object = {}) const;
    void log(eLevel level, const ox::string& message, const char* file, long line, const char* function,
             ox::refPtr<iLogObj> object = {}) const;

    /// Whether a line at this level would go anywhere; lets callers skip formatting.
    bool shouldLog(eLevel level) const;

private:
    friend class logManager;
    explicit logger(std::string name);
    ~logger() override;
    std::string mName;
    struct impl;
    std::unique_ptr<impl> mImpl;
};

class OX_UTILS_API logManager {
public:
    /// The logger of this name, created on first use. Never null.
    static ox::refPtr<logger> getLogger(const char* name);
};

/// One captured line.
struct capturedLine {
    std::string loggerName;
    eLevel level;
    std::wstring message;
};

/// Records every line written to any logger while it lives, at every level, whatever the
/// stderr level is. Several captures may be active at once.
class OX_UTILS_API logCapture {
public:
    logCapture();
    ~logCapture();
    logCapture(const logCapture&) = delete;
    logCapture& operator=(const logCapture&) = delete;

    std::vector<capturedLine> lines() const;
    /// The messages one logger wrote, in order.
    std::vector<std::wstring> messages(const std::string& loggerName) const;
    void clear();

    struct sink;
private:
    std::shared_ptr<sink> mSink;
};

} // namespace oxlog

/// Logs a line at `level` with sformat-style arguments under `loggerName`. When nobody listens at
/// that level it costs one relaxed atomic load and a compare: no logger lookup (a lock and a map
/// search), no formatting, the arguments are not even evaluated.
#define OX_LOG_AT(level, loggerName, ...)                                                          \
    do {                                                                                          \
        const ::oxlog::eLevel oxLogLevel_ = (level);                                              \
        if (::oxlog::isEnabled(oxLogLevel_))                                                      \
            ::oxlog::logManager::getLogger(loggerName)                                            \
                ->log(oxLogLevel_, ::ox::string::sformat(__VA_ARGS__), __FILE__, __LINE__, __func__); \
    } while (false)

/// Logs a debug line with sformat-style arguments under `loggerName`.
#define OX_LOG_DEBUG(loggerName, ...) OX_LOG_AT(::oxlog::eLevel::debug, loggerName, __VA_ARGS__)
/// Logs a warning: input the library refused or corrected, with what it did instead.
#define OX_LOG_WARN(loggerName, ...) OX_LOG_AT(::oxlog::eLevel::warn, loggerName, __VA_ARGS__)
