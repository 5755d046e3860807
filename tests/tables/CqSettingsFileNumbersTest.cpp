#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "tables/CqSettingsFileFixture.h"

namespace cqsurvey {
namespace {

using CqSettingsFileTest = CqSettingsFileFixture;

TEST_F(CqSettingsFileTest, NumbersAreWrittenInPlainForm) {
    m_settings.AddSection(u"S");
    m_settings.WriteInt(u"S", u"i", std::numeric_limits<std::int32_t>::min());
    m_settings.WriteDouble(u"S", u"d", 5);
    EXPECT_EQ(Value(u"S", u"i"), u"-2147483648");
    EXPECT_EQ(Value(u"S", u"d"), u"5.000");
}

TEST_F(CqSettingsFileTest, ADoubleIsWrittenAsPrintfWritesIt) {
    m_settings.AddSection(u"S");
    std::vector<double> values{0.0,
                               -0.0,
                               0.0625,
                               0.1875,
                               -0.0005,
                               0.0005,
                               2.0005,
                               123456.789,
                               1e22,
                               1e308,
                               -std::numeric_limits<double>::max(),
                               5e-324,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(),
                               -std::numeric_limits<double>::quiet_NaN()};
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(static_cast<std::int32_t>(random())) / 16000);
    }
    for (const double value : values) {
        std::array<char, 400> expected;
        std::snprintf(expected.data(), expected.size(), "%.3f", value);
        m_settings.WriteDouble(u"S", u"d", value);
        ASSERT_EQ(ToUtf8(Value(u"S", u"d")), std::isnan(value) ? "nan" : expected.data());
    }
}

TEST_F(CqSettingsFileTest, WhatIsNoNumberOrInfiniteHasOneText) {
    m_settings.AddSection(u"S");
    const auto text = [&](double value) {
        m_settings.WriteDouble(u"S", u"d", value);
        return Value(u"S", u"d");
    };
    using Limits = std::numeric_limits<double>;
    EXPECT_EQ(text(Limits::quiet_NaN()), u"nan");
    EXPECT_EQ(text(-Limits::quiet_NaN()), u"nan");
    EXPECT_EQ(text(std::bit_cast<double>(std::uint64_t{0xFFF0000000000123})), u"nan");
    EXPECT_EQ(text(Limits::infinity()), u"inf");
    EXPECT_EQ(text(-Limits::infinity()), u"-inf");
}

TEST_F(CqSettingsFileTest, ADoubleIsReadInSinglePrecision) {
    Load("[S]\r\na=0.1\r\nb=123456.789\r\nc=2.5\r\n");
    double value = 0;
    EXPECT_EQ(m_settings.GetDouble(u"S", u"a", value), 1);
    EXPECT_EQ(value, static_cast<double>(0.1F));
    EXPECT_NE(value, 0.1);
    m_settings.GetDouble(u"S", u"b", value);
    EXPECT_EQ(value, static_cast<double>(123456.789F));
    m_settings.GetDouble(u"S", u"c", value);
    EXPECT_EQ(value, 2.5);
}

TEST_F(CqSettingsFileTest, ANumberEndsAtTheFirstOtherCharacter) {
    m_settings.AddSection(u"S");
    const struct {
        CString text;
        std::int32_t integer;
        double real;
    } cases[] = {
        {u"12abc", 12, 12},
        {u" \t\v+7", 7, 7},
        {u"-7.5e1x", -7, -75},
        {u"abc", 0, 0},
        {u"+-5", 0, 0},
        {u"--5", 0, 0},
        {u"- 5", 0, 0},
        {u".5", 0, .5},
        {u"5.", 5, 5},
        {u".", 0, 0},
        {u"5e", 5, 5},
        {u"0x10", 0, 16},
        {u"-0x.8p1", 0, -1},
        {u"0x", 0, 0},
        {u"0x-5", 0, 0},
        {u"0xinf", 0, 0},
        {u"1\u0662", 1, 1},
        {u"\u30001", 0, 0},
        {u"2147483647", 2147483647, 2147483648.0},
        {u"-2147483648", std::numeric_limits<std::int32_t>::min(), -2147483648.0},
        {u"4294967295", -1, 4294967296.0},
        {u"9223372036854775808", -1, 9223372036854775808.0},
        {u"-99999999999999999999", 0, static_cast<double>(-1e20F)},
        {u"1e39", 1, std::numeric_limits<double>::infinity()},
        {u"-1e999999999999999999999", -1, -std::numeric_limits<double>::infinity()},
        {u"1e-60", 1, 0},
        {u"1e-999999999999999999999", 1, 0},
        {u"1e-9223372036854775808", 1, 0},
        {u"inf", 0, std::numeric_limits<double>::infinity()},
        {u"-INFINITY", 0, -std::numeric_limits<double>::infinity()},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(ToUtf8(each.text));
        m_settings.WriteString(u"S", u"k", each.text);
        std::int32_t integer = 7;
        double real = 7;
        EXPECT_EQ(m_settings.GetInt(u"S", u"k", integer), 1);
        EXPECT_EQ(m_settings.GetDouble(u"S", u"k", real), 1);
        EXPECT_EQ(integer, each.integer);
        EXPECT_EQ(real, each.real);
    }
    m_settings.WriteString(u"S", u"k", u"nan");
    double real = 0;
    m_settings.GetDouble(u"S", u"k", real);
    EXPECT_TRUE(std::isnan(real));
}

TEST_F(CqSettingsFileTest, NumbersAreReadAsTheLanguagesLibraryReadsThem) {
    m_settings.AddSection(u"S");
    const std::vector<std::string> parts{
        "0", "1", "9", "000000000000", "37",  ".",  "e",  "E",   "-",   "+",  "p",        "x", "0x",
        " ", "f", "m", "e-4",          "e+3", "38", "45", "inf", "nan", "\t", "123456789"};
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t length = 1 + random() % 8; length > 0; --length) {
            text += parts[random() % parts.size()];
        }
        SCOPED_TRACE("\"" + text + "\"");
        m_settings.WriteString(u"S", u"k", FromUtf8(text));
        std::int32_t integer = 7;
        double real = 7;
        ASSERT_EQ(m_settings.GetInt(u"S", u"k", integer), 1);
        ASSERT_EQ(m_settings.GetDouble(u"S", u"k", real), 1);
        const double expected = static_cast<double>(std::strtof(text.c_str(), nullptr));
        ASSERT_EQ(integer, static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10)));
        ASSERT_EQ(std::isnan(real), std::isnan(expected));
        if (!std::isnan(expected)) {
            ASSERT_EQ(real, expected);
            ASSERT_EQ(std::signbit(real), std::signbit(expected));
        }
    }
}

}  // namespace
}  // namespace cqsurvey
