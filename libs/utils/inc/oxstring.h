#pragma once
// ox::string: the wide-character string used at the library interfaces.
#include "oxutils_export.h"

#include <cstdarg>
#include <string>
#include <string_view>

namespace ox {

class OX_UTILS_API string : public std::wstring {
public:
    using std::wstring::wstring;
    string() = default;
    string(const std::wstring& s) : std::wstring(s) {}
    string(std::wstring&& s) noexcept : std::wstring(std::move(s)) {}

    /// printf-style formatting into a new string. On this platform "%s" takes a narrow
    /// (char) string and "%ls" a wide one, as in the C library; narrow strings are read as
    /// UTF-8 whatever the process locale is. "%n" is not supported (its argument is skipped).
    static string sformat(const wchar_t* format, ...);
    static string vsformat(const wchar_t* format, std::va_list args);

    /// Multibyte (UTF-8) to wide. Invalid sequences become U+FFFD.
    static string fromMBCtoWC(const char* multibyte);
    static string fromMBCtoWC(std::string_view multibyte);
};

/// Wide to multibyte (UTF-8).
OX_UTILS_API std::string getMBCS(const std::wstring& wide);

} // namespace ox
