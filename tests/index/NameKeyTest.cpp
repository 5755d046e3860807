#include "index/NameKey.h"

#include <gtest/gtest.h>

#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey {
namespace {

int Compare(const CString& a, const CString& b) {
    return CompareNameKeys(MakeNameKey(a), MakeNameKey(b));
}

TEST(NameKeyTest, SplitsANameIntoPrefixAndTrailingNumber) {
    const CString name = u"AB12C0345";
    const NameKey key = MakeNameKey(name);
    EXPECT_EQ(key.prefix, u"AB12C");
    EXPECT_EQ(key.number, 345);
    EXPECT_FALSE(key.IsEmpty());
}

TEST(NameKeyTest, ANameOfDigitsHasNoPrefix) {
    const NameKey key = MakeNameKey(u"0012");
    EXPECT_EQ(key.prefix, u"");
    EXPECT_EQ(key.number, 12);
    EXPECT_FALSE(key.IsEmpty());
}

TEST(NameKeyTest, ANameThatEndsInAnotherCharacterHasNoNumber) {
    const NameKey key = MakeNameKey(u"P10a");
    EXPECT_EQ(key.prefix, u"P10a");
    EXPECT_EQ(key.number, -1);
}

TEST(NameKeyTest, OnlyTheEmptyNameHasAnEmptyKey) {
    EXPECT_TRUE(MakeNameKey(u"").IsEmpty());
    EXPECT_FALSE(MakeNameKey(u"0").IsEmpty());
    EXPECT_FALSE(MakeNameKey(u"A").IsEmpty());
}

TEST(NameKeyTest, OtherDigitsThanAsciiOnesAreNone) {
    const NameKey key = MakeNameKey(u"P\u0661\uFF12");
    EXPECT_EQ(key.prefix, u"P\u0661\uFF12");
    EXPECT_EQ(key.number, -1);
}

TEST(NameKeyTest, ALongDigitRunCountsAsTheHighestNumber) {
    EXPECT_EQ(MakeNameKey(u"P2147483646").number, 2147483646);
    EXPECT_EQ(MakeNameKey(u"P2147483647").number, 2147483647);
    EXPECT_EQ(MakeNameKey(u"P2147483648").number, 2147483647);
    EXPECT_EQ(MakeNameKey(u"P4294967296").number, 2147483647);
    EXPECT_EQ(MakeNameKey(u"9999999999999999999").number, 2147483647);
    EXPECT_EQ(MakeNameKey(u"0000000000000000001").number, 1);
    EXPECT_EQ(MakeNameKey(CString(1000, u'9')).number, 2147483647);
}

TEST(NameKeyTest, NumbersCompareAsNumbers) {
    EXPECT_EQ(Compare(u"P2", u"P10"), -1);
    EXPECT_EQ(Compare(u"P10", u"P2"), 1);
    EXPECT_EQ(Compare(u"P01", u"P1"), 0);
    EXPECT_EQ(Compare(u"P2147483647", u"P"), 1);
    EXPECT_EQ(Compare(u"P", u"P2147483647"), -1);
}

TEST(NameKeyTest, APlainPrefixStandsBeforeANumberedOne) {
    EXPECT_EQ(Compare(u"A", u"A0"), -1);
    EXPECT_EQ(Compare(u"", u"0"), -1);
    EXPECT_EQ(Compare(u"", u"A"), -1);
}

TEST(NameKeyTest, PrefixesCompareByTheirCodeUnits) {
    EXPECT_EQ(Compare(u"p1", u"P2"), 1);
    EXPECT_EQ(Compare(u"AB1", u"A2"), 1);
    EXPECT_EQ(Compare(u"\u00E9", u"z"), 1);
    // By code units, not by characters: a surrogate is lower than U+FFFF.
    EXPECT_EQ(Compare(u"\U0001F333", u"\uFFFF"), -1);
}

}  // namespace
}  // namespace cqsurvey
