#pragma once
// Reporting of broken invariants. A failed assertion is formatted, logged at error level and
// handed to a replaceable handler; by default execution continues.
#include "oxutils_export.h"

#include <functional>
#include <string>

namespace ox {

class string;

/// Formats a wide printf-style message and reports it as a failed assertion.
OX_UTILS_API void assertMsg(const wchar_t* format, ...);

/// Reports `condition` failing at file:line with the text
/// "Assertion failed:\n<condition>\n\nFile: <file>\nLine: <line>".
OX_UTILS_API void assertFailed(const char* condition, const char* file, int line);

/// Receives the fully formatted assertion text.
using assertHandler = std::function<void(const std::wstring& message)>;

/// Installs a handler and returns the previous one. An empty handler restores the default
/// (log and continue).
OX_UTILS_API assertHandler setAssertHandler(assertHandler handler);

} // namespace ox

#define OX_ASSERT(condition) \
    do { if (!(condition)) ::ox::assertFailed(#condition, __FILE__, __LINE__); } while (false)
