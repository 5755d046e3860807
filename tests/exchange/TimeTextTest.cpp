#include "exchange/TimeText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

namespace cqsurvey::exchange {
namespace {

TEST(TimeTextTest, TimesAreWrittenAndReadBack) {
    EXPECT_EQ(FormatTime(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(FormatTime(951782400), "2000-02-29T00:00:00Z");
    EXPECT_EQ(FormatTime(0xFFFFFFFF), "2106-02-07T06:28:15Z");
    for (const std::uint32_t seconds : {0U, 951782399U, 1795335300U, 4294967295U}) {
        EXPECT_EQ(ParseTime(FormatTime(seconds)), seconds);
    }
    EXPECT_EQ(ParseTime(" 1970-01-01T00:00:01Z\t"), 1U);
}

TEST(TimeTextTest, WhatMightBeAnotherTimeIsNone) {
    for (const char* text :
         {"", "1", "2026-11-22", "2026-11-22T08:15:00", "2026-11-22 08:15:00Z",
          "2026-02-29T08:15:00Z", "2026-13-01T08:15:00Z", "2026-11-22T24:00:00Z",
          "2026-11-22T08:60:00Z", "2026-11-22T08:15:60Z", "1969-12-31T23:59:59Z",
          "2106-02-07T06:28:16Z", "2026-11-22T08:15:0xZ", "22/11/2026 08:15:00Z"}) {
        EXPECT_EQ(ParseTime(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
