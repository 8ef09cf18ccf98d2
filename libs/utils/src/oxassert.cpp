#include "oxassert.h"

#include "oxlog.h"
#include "oxstring.h"

#include <cstdarg>
#include <mutex>

namespace ox {
namespace {

std::mutex& handlerMutex() {
    static std::mutex m;
    return m;
}
assertHandler& currentHandler() {
    static assertHandler h;
    return h;
}

void report(const std::wstring& message) {
    oxlog::logManager::getLogger("ox::assertMsg")->log(oxlog::eLevel::error, message, __FILE__, __LINE__, __func__);
    assertHandler handler;
    {
        std::lock_guard lock(handlerMutex());
        handler = currentHandler();
    }
    if (handler)
        handler(message);
}

} // namespace

void assertMsg(const wchar_t* format, ...) {
    std::va_list args;
    va_start(args, format);
    const string message = string::vsformat(format, args);
    va_end(args);
    report(message);
}

void assertFailed(const char* condition, const char* file, int line) {
    assertMsg(L"Assertion failed:\n%ls\n\nFile: %ls\nLine: %d", string::fromMBCtoWC(condition).c_str(),
              string::fromMBCtoWC(file).c_str(), line);
}

assertHandler setAssertHandler(assertHandler handler) {
    std::lock_guard lock(handlerMutex());
    return std::exchange(currentHandler(), std::move(handler));
}

} // namespace ox
