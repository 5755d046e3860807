#include "exchange/CodePage.h"

#include <gtest/gtest.h>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {
namespace {

TEST(CodePage, ConvertsBothWays) {
    CodePage western(1252);
    EXPECT_EQ(western.Decode("Stra\xDF"
                             "e \x80"),
              u"Stra\u00dfe \u20ac");
    EXPECT_EQ(western.Encode(u"Stra\u00dfe \u20ac"),
              "Stra\xDF"
              "e \x80");
    CodePage japanese(932);
    EXPECT_EQ(japanese.Decode("\x93\xB9\x83\x5C"), u"\u9053\u30bd");
    EXPECT_EQ(japanese.Encode(u"\u9053\u30bd"), "\x93\xB9\x83\x5C");
    CodePage utf8;
    EXPECT_EQ(utf8.GetNumber(), 65001);
    EXPECT_EQ(utf8.Decode("\xF0\x9F\x8C\xB2"), u"\U0001F332");
    EXPECT_EQ(utf8.Encode(u"\U0001F332"), "\xF0\x9F\x8C\xB2");
    EXPECT_EQ(CodePage(1251).Decode("\xE4"), u"\u0434");
    EXPECT_EQ(CodePage(28605).Decode("\xA4"), u"\u20ac");
    EXPECT_EQ(CodePage(20866).Decode("\xC1"), u"\u0430");
    EXPECT_EQ(utf8.Decode(""), u"");
    EXPECT_EQ(western.Encode(u""), "");
}

TEST(CodePage, NeverReplacesWhatItCannotConvert) {
    CodePage western(1252);
    EXPECT_FALSE(western.Encode(u"\u9053").has_value());
    EXPECT_FALSE(western.Decode("\x81").has_value());
    CodePage utf8;
    EXPECT_FALSE(utf8.Decode("\xDF").has_value());
    EXPECT_FALSE(utf8.Encode(CString(1, char16_t{0xD83C})).has_value());
    EXPECT_FALSE(utf8.Encode(CString(1, char16_t{0xDF32})).has_value());
    CodePage japanese(932);
    EXPECT_FALSE(japanese.Decode("a\x93").has_value()) << "half a character";
    EXPECT_EQ(japanese.Decode("\x93\xB9"), u"\u9053") << "a failed text leaves nothing behind";
}

TEST(CodePage, RefusesPagesThatAreNotNarrow) {
    for (const int page : {0, -1, 37, 500, 1200, 1201, 12000, 65000, 50220, 52936, 99999}) {
        EXPECT_THROW(CodePage{page}, OptionError) << page;
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
