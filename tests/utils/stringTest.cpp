#include "oxstring.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(string, sformatConversions) {
    EXPECT_EQ(ox::string::sformat(L"%ls|%s|%i|%g", L"wide", "narrow", -42, 0.5), L"wide|narrow|-42|0.5");
    EXPECT_EQ(ox::string::sformat(L"%g %g %.3f %e", 1e21, 1.0 / 3.0, 2.0005, 12345.678), L"1e+21 0.333333 2.001 1.234568e+04");
    EXPECT_EQ(ox::string::sformat(L"[%5i][%-5i][%05.1f][%x][%%]", 42, 42, 3.14159, 255u), L"[   42][42   ][003.1][ff][%]");
    EXPECT_EQ(ox::string::sformat(L"%zu %lld %hhu %c%lc", std::size_t{7}, -1234567890123LL, 300, 'a', L'\u00e9'),
              L"7 -1234567890123 44 a\u00e9");
    // Narrow strings are UTF-8 whatever the locale: the C library alone would give up on "é".
    EXPECT_EQ(ox::string::sformat(L"<%s>", "caf\xc3\xa9 \xf0\x9f\x98\x80"), L"<caf\u00e9 \U0001F600>");
    EXPECT_EQ(ox::string::sformat(L"<%6s|%-6s>", "\xc3\xa9", "ab"), L"<     \u00e9|ab    >");
    // A precision bounds what is read: the buffer below has no terminator.
    const char unterminated[3] = {'a', 'b', 'c'};
    EXPECT_EQ(ox::string::sformat(L"%.2s|%.*s|%*d", unterminated, 1, unterminated, 4, 9), L"ab|a|   9");
    EXPECT_EQ(ox::string::sformat(L"%s|%ls", static_cast<const char*>(nullptr), static_cast<const wchar_t*>(nullptr)),
              L"(null)|(null)");
    EXPECT_EQ(ox::string::sformat(L"end %"), L"end %");
    EXPECT_EQ(ox::string::sformat(nullptr), L"");
    EXPECT_EQ(ox::string::sformat(L"%2$s-%1$s", "a", "b"), L"b-a");
}

TEST(string, sformatLongResult) {
    const std::wstring chunk(5000, L'x');
    const std::string narrow(3000, 'y');
    const ox::string text = ox::string::sformat(L"%ls|%s|%i", chunk.c_str(), narrow.c_str(), 123456);
    ASSERT_EQ(text.size(), 5000u + 1 + 3000 + 1 + 6);
    EXPECT_EQ(text.substr(4998, 4), L"xx|y");
    EXPECT_EQ(text.substr(text.size() - 8), L"y|123456");
}

TEST(string, utf8RoundTrip) {
    const char* samples[] = {
        "",
        "plain ASCII",
        "\xc3\xa9t\xc3\xa9",                     // 2-byte
        "\xe2\x82\xac 100",                      // 3-byte (euro sign)
        "\xf0\x9f\x98\x80\xf4\x8f\xbf\xbf",      // 4-byte: U+1F600 and the highest code point
        "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80", // every length boundary
    };
    for (const char* s : samples) {
        const ox::string wide = ox::string::fromMBCtoWC(s);
        EXPECT_EQ(ox::getMBCS(wide), s);
    }
    EXPECT_EQ(ox::string::fromMBCtoWC("\xf0\x9f\x98\x80"), std::wstring(1, static_cast<wchar_t>(0x1F600)));
    EXPECT_EQ(ox::string::fromMBCtoWC(static_cast<const char*>(nullptr)), L"");
}

TEST(string, invalidUtf8BecomesReplacement) {
    const struct {
        const char* input;
        std::wstring expected;
    } cases[] = {
        {"\x80", L"\uFFFD"},                        // lone continuation byte
        {"a\xe2\x82", L"a\uFFFD"},                  // truncated at the end
        {"\xe2\x41", L"\uFFFDA"},                   // interrupted: the ASCII byte survives
        {"\xc0\xaf", L"\uFFFD"},                    // overlong '/'
        {"\xe0\x9f\xbf", L"\uFFFD"},                // overlong just below U+0800
        {"\xed\xa0\x80", L"\uFFFD"},                // UTF-16 surrogate
        {"\xf4\x90\x80\x80", L"\uFFFD"},            // just above U+10FFFF
        {"\xff\xfe", L"\uFFFD\uFFFD"},              // bytes that never start a sequence
    };
    for (const auto& c : cases) EXPECT_EQ(ox::string::fromMBCtoWC(c.input), c.expected) << c.input;
    // Wide values that are no code points encode as U+FFFD too.
    EXPECT_EQ(ox::getMBCS(std::wstring{static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)}),
              "\xef\xbf\xbd\xef\xbf\xbd");
}

} // namespace
