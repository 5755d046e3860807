#include "text/Printable.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey {
namespace {

TEST(Printable, TellsWellFormedUtf8) {
    for (const char* good :
         {"", "abc", "\u00e4\u9053\U0001F332", "\xF4\x8F\xBF\xBF", "\xED\x9F\xBF"}) {
        EXPECT_TRUE(IsUtf8(good)) << good;
    }
    for (const char* bad :
         {"\x80", "\xC0\xAF", "\xC3", "\xE9\x81", "\xED\xA0\x80", "\xF4\x90\x80\x80",
          "\xF8\x88\x80\x80\x80", "\xE0\x80\x80", "\xF0\x80\x80\x80", "a\xFF"}) {
        EXPECT_FALSE(IsUtf8(bad)) << bad;
    }
    EXPECT_FALSE(IsUtf8(std::string_view("\xE9\x81\x93", 2))) << "cut off";
    EXPECT_TRUE(IsUtf8(std::string_view("a\0\u00e4", 4))) << "a zero";
    EXPECT_TRUE(IsUtf8(std::string_view("\0", 1))) << "a zero";
    EXPECT_FALSE(IsUtf8(std::string_view("a\0\xFF", 3))) << "after a zero";
    EXPECT_TRUE(IsUtf8(std::string_view()));
}

TEST(Printable, ShowsControlCharactersInsteadOfSendingThem) {
    EXPECT_EQ(Printable("a\r\n\tb"), "a\\r\\n\\tb");
    EXPECT_EQ(Printable("\x1b[31m"), "\\x1b[31m");
    EXPECT_EQ(Printable("\x7f"), "\\x7f");
    EXPECT_EQ(Printable("\xC2\x9b"), "\\x9b");
    EXPECT_EQ(Printable("\u00a0\u00e4\u9053\U0001F332"), "\u00a0\u00e4\u9053\U0001F332");
    EXPECT_EQ(Printable("\xC4x"), "\\xc4x");
    EXPECT_EQ(Printable(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(Printable, BeginsAMessageWithAName) {
    EXPECT_EQ(NamePrefix("a\n.job"), "a\\n.job: ");
    EXPECT_EQ(NamePrefix(""), "");
}

TEST(Printable, CountsOneAndMany) {
    EXPECT_EQ(Count(0, "point"), "0 points");
    EXPECT_EQ(Count(1, "point"), "1 point");
    EXPECT_EQ(Count(2, "point"), "2 points");
}

TEST(Printable, QuotesAndShortens) {
    EXPECT_EQ(Quoted("ab"), "\"ab\"");
    EXPECT_EQ(Quoted(std::string(60, 'a')), '"' + std::string(60, 'a') + '"');
    EXPECT_EQ(Quoted(std::string(61, 'a')), '"' + std::string(60, 'a') + "...\"");
    EXPECT_EQ(Quoted(std::string(59, 'a') + "\u9053\u9053"), '"' + std::string(59, 'a') + "...\"");
}

}  // namespace
}  // namespace cqsurvey
