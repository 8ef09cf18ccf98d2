#include "oxstring.h"

#include <cwchar>
#include <vector>

namespace ox {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence starting at s[i]; advances i past it.
char32_t decodeUtf8(std::string_view s, std::size_t& i) {
    const auto lead = static_cast<unsigned char>(s[i++]);
    if (lead < 0x80) return lead;
    int extra;
    char32_t cp;
    if ((lead & 0xE0) == 0xC0) { extra = 1; cp = lead & 0x1F; }
    else if ((lead & 0xF0) == 0xE0) { extra = 2; cp = lead & 0x0F; }
    else if ((lead & 0xF8) == 0xF0) { extra = 3; cp = lead & 0x07; }
    else return kReplacement;
    for (int k = 0; k < extra; ++k) {
        if (i >= s.size() || (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80) return kReplacement;
        cp = (cp << 6) | (static_cast<unsigned char>(s[i++]) & 0x3F);
    }
    static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
    if (cp < kMin[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kReplacement;
    return cp;
}

void appendUtf8(std::string& out, char32_t cp) {
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = kReplacement;
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

} // namespace

string string::sformat(const wchar_t* format, ...) {
    std::va_list args;
    va_start(args, format);
    string result = vsformat(format, args);
    va_end(args);
    return result;
}

string string::vsformat(const wchar_t* format, std::va_list args) {
    if (format == nullptr) return {};
    // vswprintf cannot report the length it needs, so grow until the text fits.
    std::vector<wchar_t> buffer(256);
    for (;;) {
        std::va_list copy;
        va_copy(copy, args);
        const int written = std::vswprintf(buffer.data(), buffer.size(), format, copy);
        va_end(copy);
        if (written >= 0 && static_cast<std::size_t>(written) < buffer.size())
            return string(buffer.data(), static_cast<std::size_t>(written));
        if (buffer.size() >= (std::size_t{1} << 24)) return {}; // malformed format or absurd size
        buffer.resize(buffer.size() * 4);
    }
}

string string::fromMBCtoWC(const char* multibyte) {
    return multibyte ? fromMBCtoWC(std::string_view(multibyte)) : string();
}

string string::fromMBCtoWC(std::string_view multibyte) {
    string result;
    result.reserve(multibyte.size());
    for (std::size_t i = 0; i < multibyte.size();) {
        const char32_t cp = decodeUtf8(multibyte, i);
        if constexpr (sizeof(wchar_t) >= 4) {
            result += static_cast<wchar_t>(cp);
        } else if (cp >= 0x10000) { // UTF-16 platforms
            result += static_cast<wchar_t>(0xD800 + ((cp - 0x10000) >> 10));
            result += static_cast<wchar_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
        } else {
            result += static_cast<wchar_t>(cp);
        }
    }
    return result;
}

std::string getMBCS(const std::wstring& wide) {
    std::string out;
    out.reserve(wide.size());
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t cp = static_cast<char32_t>(wide[i]);
        if (sizeof(wchar_t) == 2 && cp >= 0xD800 && cp < 0xDC00 && i + 1 < wide.size()) {
            const char32_t low = static_cast<char32_t>(wide[i + 1]);
            if (low >= 0xDC00 && low < 0xE000) {
                cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        appendUtf8(out, cp);
    }
    return out;
}

} // namespace ox
