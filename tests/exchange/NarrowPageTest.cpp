#include "exchange/NarrowPage.h"

#include <gtest/gtest.h>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {
namespace {

TEST(NarrowPage, IsAPageThatKeepsAscii) {
    for (const int page : {65001, 1252, 932, 936, 949, 950, 10000, 20127, 20866, 20932, 20936,
                           20949, 21866, 28605, 51932, 51936, 51949, 51950, 54936}) {
        SCOPED_TRACE(page);
        CqCodePage narrow = RequireNarrowPage(page);
        EXPECT_EQ(narrow.GetNumber(), page);
        EXPECT_EQ(narrow.TryDecode("P1,\"2.5\"\r\n"), u"P1,\"2.5\"\r\n");
        EXPECT_EQ(narrow.TryEncode(u"P1,\"2.5\"\r\n"), "P1,\"2.5\"\r\n");
    }
}

TEST(NarrowPage, RefusesPagesThatAreNotNarrow) {
    for (const int page : {0, -1, 37, 500, 1200, 1201, 12000, 65000, 50220, 52936, 99999}) {
        EXPECT_THROW(static_cast<void>(RequireNarrowPage(page)), OptionError) << page;
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
