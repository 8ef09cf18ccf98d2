#include "oxstring.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <type_traits>
#include <vector>

namespace ox {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
// Upper bound of one formatted result, so a malformed format cannot allocate without end.
constexpr std::size_t kMaxFormatted = std::size_t{1} << 24;

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

// Formats one conversion with the C library, growing the buffer until it fits.
struct formatPiece {
    string& out;
    const int* stars;
    int starCount;

    template <class T>
    void operator()(const std::wstring& directive, T value) const {
        std::vector<wchar_t> buffer(128);
        for (;;) {
            errno = 0;
            int written = -1;
            if (starCount == 0) written = std::swprintf(buffer.data(), buffer.size(), directive.c_str(), value);
            else if (starCount == 1) written = std::swprintf(buffer.data(), buffer.size(), directive.c_str(), stars[0], value);
            else written = std::swprintf(buffer.data(), buffer.size(), directive.c_str(), stars[0], stars[1], value);
            if (written >= 0 && static_cast<std::size_t>(written) < buffer.size()) {
                out.append(buffer.data(), static_cast<std::size_t>(written));
                return;
            }
            // vswprintf reports "too small" and "cannot convert" alike; only the first is worth a retry.
            if (errno == EILSEQ || buffer.size() >= kMaxFormatted) return;
            buffer.resize(buffer.size() * 4);
        }
    }
};

// The whole format in one call to the C library (used for positional arguments).
string formatWhole(const wchar_t* format, std::va_list args) {
    std::vector<wchar_t> buffer(256);
    for (;;) {
        std::va_list copy;
        va_copy(copy, args);
        errno = 0;
        const int written = std::vswprintf(buffer.data(), buffer.size(), format, copy);
        va_end(copy);
        if (written >= 0 && static_cast<std::size_t>(written) < buffer.size())
            return string(buffer.data(), static_cast<std::size_t>(written));
        if (errno == EILSEQ || buffer.size() >= kMaxFormatted) return {};
        buffer.resize(buffer.size() * 4);
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
    // Positional arguments ("%1$d") cannot be taken apart one conversion at a time.
    if (std::wcschr(format, L'$') != nullptr) return formatWhole(format, args);

    // The C library converts narrow "%s" arguments with the current locale, which fails on
    // any non-ASCII byte in the default "C" locale and leaves nothing. Walk the format and
    // hand narrow strings over as UTF-8 decoded wide strings instead.
    std::va_list ap;
    va_copy(ap, args);
    string out;
    const wchar_t* p = format;
    while (*p != L'\0') {
        if (*p != L'%') {
            const wchar_t* next = std::wcschr(p, L'%');
            const std::size_t n = next ? static_cast<std::size_t>(next - p) : std::wcslen(p);
            out.append(p, n);
            p += n;
            continue;
        }
        const wchar_t* start = p++;
        if (*p == L'%') {
            out += L'%';
            ++p;
            continue;
        }
        while (*p != L'\0' && std::wcschr(L"-+ #0'", *p) != nullptr) ++p;
        int stars[2] = {0, 0};
        int starCount = 0;
        if (*p == L'*') {
            stars[starCount++] = va_arg(ap, int);
            ++p;
        } else {
            while (*p >= L'0' && *p <= L'9') ++p;
        }
        int precision = -1;
        if (*p == L'.') {
            ++p;
            if (*p == L'*') {
                precision = va_arg(ap, int);
                stars[starCount++] = precision;
                ++p;
            } else {
                precision = 0;
                while (*p >= L'0' && *p <= L'9') precision = precision * 10 + (*p++ - L'0');
            }
        }
        enum class len { none, hh, h, l, ll, L, j, z, t } length = len::none;
        const wchar_t* lengthStart = p;
        switch (*p) {
        case L'h': length = (p[1] == L'h') ? len::hh : len::h; p += (length == len::hh) ? 2 : 1; break;
        case L'l': length = (p[1] == L'l') ? len::ll : len::l; p += (length == len::ll) ? 2 : 1; break;
        case L'q': length = len::ll; ++p; break;
        case L'L': length = len::L; ++p; break;
        case L'j': length = len::j; ++p; break;
        case L'z': length = len::z; ++p; break;
        case L't': length = len::t; ++p; break;
        default: break;
        }
        const wchar_t conversion = *p;
        if (conversion == L'\0') { // a dangling '%' at the end stays as written
            out.append(start);
            break;
        }
        ++p;
        const std::wstring directive(start, p);
        // The same conversion with the length modifier replaced, for narrow arguments passed on wide.
        const auto wideSpec = [&](wchar_t newConversion) {
            return std::wstring(start, lengthStart) + L'l' + newConversion;
        };
        const formatPiece piece{out, stars, starCount};
        switch (conversion) {
        case L'd':
        case L'i':
            switch (length) {
            case len::l: piece(directive, va_arg(ap, long)); break;
            case len::ll: piece(directive, va_arg(ap, long long)); break;
            case len::j: piece(directive, va_arg(ap, std::intmax_t)); break;
            case len::z: piece(directive, va_arg(ap, std::make_signed_t<std::size_t>)); break;
            case len::t: piece(directive, va_arg(ap, std::ptrdiff_t)); break;
            default: piece(directive, va_arg(ap, int)); break;
            }
            break;
        case L'u':
        case L'o':
        case L'x':
        case L'X':
            switch (length) {
            case len::l: piece(directive, va_arg(ap, unsigned long)); break;
            case len::ll: piece(directive, va_arg(ap, unsigned long long)); break;
            case len::j: piece(directive, va_arg(ap, std::uintmax_t)); break;
            case len::z: piece(directive, va_arg(ap, std::size_t)); break;
            case len::t: piece(directive, va_arg(ap, std::make_unsigned_t<std::ptrdiff_t>)); break;
            default: piece(directive, va_arg(ap, unsigned int)); break;
            }
            break;
        case L'e': case L'E': case L'f': case L'F': case L'g': case L'G': case L'a': case L'A':
            if (length == len::L) piece(directive, va_arg(ap, long double));
            else piece(directive, va_arg(ap, double));
            break;
        case L'c':
        case L'C':
            if (length == len::l || conversion == L'C') {
                // Where wint_t is narrower than int (Windows) it arrives promoted to int.
                using promotedWint = std::conditional_t<(sizeof(std::wint_t) < sizeof(int)), int, std::wint_t>;
                piece(directive, static_cast<std::wint_t>(va_arg(ap, promotedWint)));
            } else {
                // A lone byte is only a character when it is ASCII.
                const int c = va_arg(ap, int);
                piece(wideSpec(L'c'), static_cast<std::wint_t>((c & 0xFF) < 0x80 ? (c & 0xFF) : kReplacement));
            }
            break;
        case L's':
        case L'S':
            if (length == len::l || conversion == L'S') {
                piece(directive, va_arg(ap, const wchar_t*));
            } else {
                const char* narrow = va_arg(ap, const char*);
                if (narrow == nullptr) {
                    piece(directive, "(null)"); // ASCII only, safe for the C library in any locale
                } else {
                    // A precision limits the bytes read: the argument need not be terminated.
                    const std::size_t bytes = precision >= 0 ? strnlen(narrow, static_cast<std::size_t>(precision))
                                                             : std::strlen(narrow);
                    const string wide = fromMBCtoWC(std::string_view(narrow, bytes));
                    piece(wideSpec(L's'), wide.c_str());
                }
            }
            break;
        case L'p':
            piece(directive, va_arg(ap, void*));
            break;
        case L'n':
            (void)va_arg(ap, void*); // writing through caller pointers is not supported
            break;
        default: // unknown conversion: keep the text, consume nothing
            out.append(directive);
            break;
        }
    }
    va_end(ap);
    return out;
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
