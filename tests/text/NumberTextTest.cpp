#include "text/NumberText.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace cqsurvey {
namespace {

double Read(std::string_view text, bool decimalComma = false) {
    const ParsedNumber number = ParseNumber(text, decimalComma);
    EXPECT_EQ(number.fault, nullptr) << text;
    return number.value;
}

TEST(NumberText, ReadsWhatFieldFilesHold) {
    EXPECT_EQ(Read("538542.57000"), 538542.57);
    EXPECT_EQ(Read("-9.99E+27"), -9.99e27);
    EXPECT_EQ(Read("+12"), 12.0);
    EXPECT_EQ(Read("  7\t"), 7.0);
    EXPECT_EQ(Read(".5"), 0.5);
    EXPECT_EQ(Read("-.5"), -0.5);
    EXPECT_EQ(Read("5."), 5.0);
    EXPECT_EQ(Read("1e3"), 1000.0);
    EXPECT_TRUE(std::signbit(Read("-0")));
}

TEST(NumberText, ReadsTheNearestDoubleWhateverTheNumberOfDigits) {
    EXPECT_EQ(Read("0.1"), 0.1);
    EXPECT_EQ(Read("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(Read("2.2250738585072011e-308"), 2.2250738585072011e-308);
    EXPECT_EQ(Read("4611013.92100000000000000000000000000000000001"), 4611013.921);
}

TEST(NumberText, RefusesEverythingElse) {
    for (const char* text :
         {"nan",     "NaN",   "inf",    "-inf",    "infinity", "0x10", "12abc", "abc",
          "1,234.5", "1 234", "--1",    "+-1",     "-+1",      "++1",  "1e",    "1e+",
          ".",       "-",     "+",      "-.",      "1.2.3",    "1..2", "e5",    "\"1\"",
          "1\n",     "1_000", "\u0661", "\u22125", "1d5"}) {
        EXPECT_NE(ParseNumber(text).fault, nullptr) << text;
        EXPECT_NE(ParseNumber(text, true).fault, nullptr) << text;
    }
    EXPECT_NE(ParseNumber(std::string_view("12\0", 3)).fault, nullptr);
}

TEST(NumberText, SaysWhyANumberIsRefused) {
    EXPECT_STREQ(ParseNumber("").fault, "is empty");
    EXPECT_STREQ(ParseNumber(" \t").fault, "is empty");
    EXPECT_STREQ(ParseNumber("12abc").fault, "is not a number");
    EXPECT_STREQ(ParseNumber("12,5").fault, "is not a number: it holds a comma");
    EXPECT_STREQ(ParseNumber("1e999").fault, "is too large or too small a number to be kept");
    EXPECT_STREQ(ParseNumber("1e-999").fault, "is too large or too small a number to be kept");
}

TEST(NumberText, ReadsDecimalCommasOnlyWhenAskedFor) {
    EXPECT_EQ(Read("247636,4121", true), 247636.4121);
    EXPECT_EQ(Read("-,5", true), -0.5);
    EXPECT_EQ(Read("1,5E+3", true), 1500.0);
    EXPECT_EQ(Read("104", true), 104.0);
    EXPECT_NE(ParseNumber("1.234,5", true).fault, nullptr);
    EXPECT_NE(ParseNumber("1.5", true).fault, nullptr);
    EXPECT_NE(ParseNumber("1,2,3", true).fault, nullptr);
    EXPECT_NE(ParseNumber("247636,4121").fault, nullptr);
}

TEST(NumberText, TheLocaleDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"de_DE.UTF-8", "pt_BR.UTF-8", "C"}) {
        std::setlocale(LC_ALL, locale);
        EXPECT_EQ(Read("1.5"), 1.5);
        EXPECT_EQ(FormatNumber(1.5), "1.5");
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(NumberText, AWholeNumberIsOneOf32Bits) {
    EXPECT_EQ(ParseWholeNumber("50"), 50);
    EXPECT_EQ(ParseWholeNumber(" -7 "), -7);
    EXPECT_EQ(ParseWholeNumber("+7"), 7);
    EXPECT_EQ(ParseWholeNumber("007"), 7);
    EXPECT_EQ(ParseWholeNumber("2147483647"), 2147483647);
    EXPECT_EQ(ParseWholeNumber("-2147483648"), std::numeric_limits<std::int32_t>::min());
    for (const char* text : {"", " ", "2147483648", "-2147483649", "5.0", "30-1", "5a", "+", "-",
                             "+-5", "0x5", "5 5", "1e3"}) {
        EXPECT_FALSE(ParseWholeNumber(text).has_value()) << text;
    }
}

TEST(NumberText, WritesTheShortestNumberThatReadsBack) {
    EXPECT_EQ(FormatNumber(0.1), "0.1");
    EXPECT_EQ(FormatNumber(5200000.0), "5200000");
    EXPECT_EQ(FormatNumber(-0.0), "-0");
    EXPECT_EQ(FormatNumber(1e300), "1e+300");
    EXPECT_EQ(FormatNumber(std::nan("")), "");
    const std::uint64_t seed = 20240611;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int i = 0; i < 100000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value) || std::fabs(value) < 2.3e-308) {
            continue;
        }
        const std::string text = FormatNumber(value);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(Read(text)), std::bit_cast<std::uint64_t>(value))
            << text;
    }
}

TEST(NumberText, WritesAsManyDecimalsAsAskedFor) {
    EXPECT_EQ(FormatNumber(1.0, 3), "1.000");
    EXPECT_EQ(FormatNumber(2.6, 0), "3");
    EXPECT_EQ(FormatNumber(-1234567.8914, 3), "-1234567.891");
    EXPECT_EQ(FormatNumber(std::nan(""), 2), "");
    EXPECT_EQ(FormatNumber(std::numeric_limits<double>::max(), 17).size(), 309U + 1U + 17U);
}

}  // namespace
}  // namespace cqsurvey
