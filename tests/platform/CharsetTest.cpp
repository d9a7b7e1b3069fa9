#include "platform/Charset.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

namespace vliptc::platform {
namespace {

std::string AllBytes() {
    std::string bytes;
    for (int b = 0; b < 256; ++b) bytes += static_cast<char>(b);
    return bytes;
}

TEST(Charset, EveryByteSurvivesUtf8AndUtf16) {
    for (int b = 0; b < 256; ++b) {
        const std::string one(1, static_cast<char>(b));
        EXPECT_EQ(Utf8ToCp1252(Cp1252ToUtf8(one)), one) << "byte " << b;
        EXPECT_EQ(Utf16ToCp1252(Cp1252ToUtf16(one)), one) << "byte " << b;
        EXPECT_EQ(Cp1252ToUtf16(one).size(), 1u) << "byte " << b;
    }
    const std::string all = AllBytes();
    EXPECT_EQ(Utf8ToCp1252(Cp1252ToUtf8(all)), all);
    EXPECT_EQ(Utf16ToCp1252(Cp1252ToUtf16(all)), all);
}

TEST(Charset, KnownCharacters) {
    struct Case {
        char byte;
        char16_t unit;
        std::string_view utf8;
    };
    const Case cases[] = {
        {'\x80', u'\u20AC', "\xE2\x82\xAC"},  // euro sign
        {'\x81', u'\u0081', "\xC2\x81"},      // undefined byte -> C1 control
        {'\x8D', u'\u008D', "\xC2\x8D"},
        {'\x8F', u'\u008F', "\xC2\x8F"},
        {'\x90', u'\u0090', "\xC2\x90"},
        {'\x9D', u'\u009D', "\xC2\x9D"},
        {'\x9F', u'\u0178', "\xC5\xB8"},      // Y with diaeresis
        {'\xFF', u'\u00FF', "\xC3\xBF"},
    };
    for (const Case& c : cases) {
        const std::string one(1, c.byte);
        EXPECT_EQ(Cp1252ToUtf8(one), c.utf8) << int(static_cast<unsigned char>(c.byte));
        EXPECT_EQ(Cp1252ToUtf16(one), std::u16string(1, c.unit));
    }
}

// The C library's own Windows-1252 table is an independent check of ours for
// the 251 defined bytes (it rejects the five undefined ones).
std::optional<std::string> IconvFromCp1252(char byte) {
    iconv_t cd = iconv_open("UTF-8", "WINDOWS-1252");
    if (cd == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
    char in[1] = {byte};
    char out[8] = {};
    char* inPtr = in;
    char* outPtr = out;
    std::size_t inLeft = 1;
    std::size_t outLeft = sizeof out;
    const std::size_t result = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (result == static_cast<std::size_t>(-1)) return std::nullopt;
    return std::string(out, sizeof out - outLeft);
}

TEST(Charset, AgreesWithSystemTableOnDefinedBytes) {
    if (!IconvFromCp1252('A')) GTEST_SKIP() << "iconv has no WINDOWS-1252 here";
    for (int b = 0; b < 256; ++b) {
        if (b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D) continue;
        const auto expected = IconvFromCp1252(static_cast<char>(b));
        ASSERT_TRUE(expected) << "byte " << b;
        EXPECT_EQ(Cp1252ToUtf8(std::string(1, static_cast<char>(b))), *expected) << "byte " << b;
    }
}

TEST(Charset, Utf8OutsideOrMalformedBecomesOneQuestionMarkEach) {
    using namespace std::string_view_literals;
    struct Case {
        std::string_view input;
        std::string_view expected;
        const char* what;
    };
    const Case cases[] = {
        {"a\0b"sv, "a\0b"sv, "embedded NUL"},
        {"\xC3\xA9t\xC3\xA9"sv, "\xE9t\xE9"sv, "Latin-1 letters"},
        {"\xE2\x80\x9C\xE2\x82\xAC\xE2\x80\x9D"sv, "\x93\x80\x94"sv, "quotes and euro"},
        {"\xC2\x81"sv, "\x81"sv, "C1 control of an undefined byte"},
        {"\xC2\x80"sv, "?"sv, "C1 control whose byte is the euro"},
        {"\xC4\x80"sv, "?"sv, "U+0100"},
        {"\xE6\x97\xA5\xE6\x9C\xAC"sv, "??"sv, "two CJK characters"},
        {"\xF0\x9F\x98\x80"sv, "?"sv, "character beyond the BMP"},
        {"a\x80\xBF"sv "b"sv, "a??b"sv, "two stray continuations"},
        {"\xFF"sv, "?"sv, "FF never starts a sequence"},
        {"\xF8\x88\x80\x80\x80"sv, "?????"sv, "five-byte form: bad lead + four strays"},
        {"\xC0\xAF"sv, "?"sv, "overlong slash, two bytes"},
        {"\xE0\x80\xAF"sv, "?"sv, "overlong slash, three bytes"},
        {"\xF0\x80\x80\xAF"sv, "?"sv, "overlong slash, four bytes"},
        {"\xED\xA0\x80"sv, "?"sv, "encoded high surrogate"},
        {"\xF4\x90\x80\x80"sv, "?"sv, "above U+10FFFF"},
        {"\xE2\x82"sv, "?"sv, "truncated at the end, three bytes"},
        {"\xF0\x9F\x98"sv, "?"sv, "truncated at the end, four bytes"},
        {"\xC3\x28"sv, "?("sv, "truncated, next byte kept"},
        {"\xE2\x82\xE2\x82\xAC"sv, "?\x80"sv, "truncated by a new lead that completes"},
        {"\xE2\x82\x80\xAC"sv, "??"sv, "U+20A0 then a stray continuation"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Utf8ToCp1252(c.input), c.expected) << c.what;
    }
}

TEST(Charset, Utf16OutsideOrMalformedBecomesOneQuestionMarkEach) {
    struct Case {
        std::u16string input;
        std::string_view expected;
        const char* what;
    };
    const Case cases[] = {
        {u"", "", "empty"},
        {u"\u20AC\u00E9\u0178", "\x80\xE9\x9F", "euro, e acute, Y diaeresis"},
        {u"\u009D", "\x9D", "C1 control of an undefined byte"},
        {u"\u0080", "?", "C1 control whose byte is the euro"},
        {u"\u0100\uFFFD", "??", "outside the code page"},
        {u"\U0001F600", "?", "valid surrogate pair"},
        {{0xD800}, "?", "lone high surrogate at the end"},
        {{0xDC00}, "?", "lone low surrogate"},
        {{0xD800, u'A'}, "?A", "high surrogate then ASCII"},
        {{0xDC00, 0xD800}, "??", "pair in the wrong order"},
        {{0xD800, 0xD800, 0xDC00}, "??", "lone high surrogate then a pair"},
        {{u'x', 0xDBFF, 0xDFFF, u'y'}, "x?y", "highest pair between ASCII"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Utf16ToCp1252(c.input), c.expected) << c.what;
    }
}

TEST(Charset, MacRomanAndWindows1252RoundTripWhereBothHaveTheCharacter) {
    const std::string ascii = AllBytes().substr(0, 0x80);
    EXPECT_EQ(MacRomanToWindows1252(ascii), ascii);
    EXPECT_EQ(Windows1252ToMacRoman(ascii), ascii);

    int macShared = 0;
    int windowsShared = 0;
    for (int b = 0x80; b < 0x100; ++b) {
        const std::string one(1, static_cast<char>(b));
        if (const std::string windows = MacRomanToWindows1252(one); windows != "?") {
            ++macShared;
            EXPECT_EQ(Windows1252ToMacRoman(windows), one) << "Mac byte " << b;
        }
        if (const std::string mac = Windows1252ToMacRoman(one); mac != "?") {
            ++windowsShared;
            EXPECT_EQ(MacRomanToWindows1252(mac), one) << "Windows byte " << b;
        }
    }
    // 103 of the 128 upper characters exist in both sets.
    EXPECT_EQ(macShared, 103);
    EXPECT_EQ(windowsShared, 103);

    const struct {
        std::string_view mac, windows;
    } cases[] = {
        {"Caf\x8E", "Caf\xE9"},    // e acute
        {"\xDB", "\x80"},          // euro
        {"\xD5", "\x92"},          // right single quote
        {"\xCA", "\xA0"},          // no-break space
        {"\xA7\xD8", "\xDF\xFF"},  // sharp s, y diaeresis
    };
    for (const auto& c : cases) {
        EXPECT_EQ(MacRomanToWindows1252(c.mac), c.windows);
        EXPECT_EQ(Windows1252ToMacRoman(c.windows), c.mac);
    }
    EXPECT_EQ(MacRomanToWindows1252("\xAD\xF0"), "??");  // not-equal sign, Apple logo
    EXPECT_EQ(Windows1252ToMacRoman("\x8A\x81"), "??");  // S caron, undefined byte
}

}  // namespace
}  // namespace vliptc::platform
