#include "platform/NumberFormat.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace vliptc::platform {
namespace {

NumberFormat Format(unsigned digits, unsigned grouping, std::string decimal = ".",
                    std::string thousands = ",", unsigned negativeOrder = 1, bool leadingZero = true) {
    NumberFormat format;
    format.fractionalDigits = digits;
    format.grouping = grouping;
    format.decimalSeparator = std::move(decimal);
    format.thousandSeparator = std::move(thousands);
    format.negativeOrder = negativeOrder;
    format.leadingZero = leadingZero;
    return format;
}

TEST(NumberFormat, FormatsLikeTheHostFormatter) {
    const NumberFormat two = Format(2, 3);
    struct Case {
        const char* number;
        NumberFormat format;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        // Rounding half away from zero on the digits, with carries.
        {"3.999951", two, "4.00"},
        {"0.125", two, "0.13"},
        {"0.124999", two, "0.12"},
        {"-2.675", two, "-2.68"},
        {"999.995", two, "1,000.00"},
        {"9.5", Format(0, 3), "10"},
        {"1.5", Format(4, 3), "1.5000"},
        {"0.0000004", Format(9, 0), "0.000000400"},
        {"007.50", two, "7.50"},
        {"5.", two, "5.00"},
        {".5", two, "0.50"},
        // A number that rounds to zero has no sign.
        {"-0.001", two, "0.00"},
        {"-0.000000", Format(0, 3), "0"},
        // Grouping 0, 3 and 32; separators of several characters.
        {"1234567.891", Format(2, 0), "1234567.89"},
        {"1234567.891", two, "1,234,567.89"},
        {"1234567.891", Format(2, 32), "12,34,567.89"},
        {"123456789", Format(0, 32), "12,34,56,789"},
        {"1234567", Format(0, 4, ".", "'"), "123'4567"},
        {"1234.5", Format(1, 3, "<dec>", " th "), "1 th 234<dec>5"},
        {"123", two, "123.00"},
        // Leading zero.
        {"0.5", Format(2, 3, ".", ",", 1, false), ".50"},
        {"-0.5", Format(2, 3, ".", ",", 1, false), "-.50"},
        {"0.4", Format(0, 3, ".", ",", 1, false), "0"},
        // Each negative order.
        {"-1234.5", Format(1, 3, ".", ",", 0), "(1,234.5)"},
        {"-1234.5", Format(1, 3, ".", ",", 1), "-1,234.5"},
        {"-1234.5", Format(1, 3, ".", ",", 2), "- 1,234.5"},
        {"-1234.5", Format(1, 3, ".", ",", 3), "1,234.5-"},
        {"-1234.5", Format(1, 3, ".", ",", 4), "1,234.5 -"},
        // Not a plain decimal.
        {"", two, std::nullopt},
        {"-", two, std::nullopt},
        {".", two, std::nullopt},
        {"inf", two, std::nullopt},
        {"-nan", two, std::nullopt},
        {"1e5", two, std::nullopt},
        {"+1", two, std::nullopt},
        {" 1", two, std::nullopt},
        {"1.2.3", two, std::nullopt},
        {"1,5", two, std::nullopt},
        // A format outside the host's ranges.
        {"1", Format(10, 3), std::nullopt},
        {"1", Format(2, 33), std::nullopt},
        {"1", Format(2, 3, ".", ",", 5), std::nullopt},
        {"1", Format(2, 3, "12345678901"), std::nullopt},
        {"1", Format(2, 3, ".", "12345678901"), std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FormatNumber(c.number, c.format), c.expected) << '"' << c.number << '"';
    }
}

// The environment names a locale: an unknown one, like the classic "C"
// locale, gives "." and no grouping.
TEST(NumberFormat, UnknownLocaleFallsBackToClassic) {
    const char* saved = std::getenv("LC_ALL");
    const std::string previous = saved != nullptr ? saved : "";
    for (const char* name : {"xx_NOWHERE.UTF-8", "C"}) {
        ::setenv("LC_ALL", name, 1);
        const NumberFormat format = UserNumberFormat();
        EXPECT_EQ(format.decimalSeparator, ".") << name;
        EXPECT_EQ(format.thousandSeparator, ",") << name;
        EXPECT_EQ(format.grouping, 0u) << name;
        EXPECT_EQ(format.fractionalDigits, 2u) << name;
        EXPECT_EQ(FormatNumber("1234.5", format), "1234.50") << name;
    }
    if (saved != nullptr) {
        ::setenv("LC_ALL", previous.c_str(), 1);
    } else {
        ::unsetenv("LC_ALL");
    }
}

}  // namespace
}  // namespace vliptc::platform
