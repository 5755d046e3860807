#include "cqjob/Arguments.h"

#include <gtest/gtest.h>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {
namespace {

TEST(Arguments, TextsAreUtf8) {
    EXPECT_EQ(ReadText("Stra\u00dfe", "the name"), u"Stra\u00dfe");
    EXPECT_THROW(static_cast<void>(ReadText("a\xFF", "the name")), UsageError);
}

TEST(Arguments, NamesFitAJob) {
    EXPECT_EQ(ReadName("1234567890123456789", "the name", 19), u"1234567890123456789");
    EXPECT_EQ(ReadName("", "the name", 19), u"");
    EXPECT_THROW(static_cast<void>(ReadName("12345678901234567890", "the name", 19)), UsageError);
}

TEST(Arguments, ARecordNumberFollowsItsSign) {
    EXPECT_EQ(ReadRecordNumber("#17"), 17U);
    EXPECT_EQ(ReadRecordNumber("#4294967295"), 4294967295U);
    for (const char* text : {"", "#", "17", "#x", "#17x", "# 17", "#-1", "#4294967296"}) {
        EXPECT_EQ(ReadRecordNumber(text), std::nullopt) << text;
    }
}

TEST(Arguments, NumbersAreWholeWords) {
    EXPECT_EQ(FindNumberFault("-1.5e3"), "");
    for (const char* text : {"", "x", "1,5", "nan", "inf", "1e999", "0x10"}) {
        EXPECT_NE(FindNumberFault(text), "") << text;
    }
    EXPECT_EQ(FindWholeNumberFault("-2147483648"), "");
    for (const char* text : {"", "x", "1.5", "2147483648"}) {
        EXPECT_NE(FindWholeNumberFault(text), "") << text;
    }
}

}  // namespace
}  // namespace cqsurvey::cqjob
