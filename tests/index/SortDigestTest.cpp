#include "index/SortDigest.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey {
namespace {

SortDigest DigestOf(const CString& name) {
    return DigestOfName(MakeNameKey(name));
}

TEST(SortDigestTest, OrdersOrdinaryNamesExactly) {
    const std::vector<CString> names{u"",       u"0",
                                     u"7",      u"12",
                                     u"A",      u"A0",
                                     u"A1",     u"A2",
                                     u"A10",    u"AB",
                                     u"AB3",    u"P",
                                     u"P9999",  u"P10000",
                                     u"TREE-1", u"TREE-2147483647",
                                     u"\u00E9", u"\u0414\u043E\u043C1"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_TRUE(DigestOf(names[i]).IsExact());
        for (std::size_t k = i + 1; k < names.size(); ++k) {
            EXPECT_LT(DigestOf(names[i]), DigestOf(names[k]));
        }
    }
}

TEST(SortDigestTest, IsTheSameForEqualNames) {
    EXPECT_EQ(DigestOf(u"P1"), DigestOf(u"P0001"));
    EXPECT_EQ(DigestOf(u"P2147483647"), DigestOf(u"P99999999999"));
}

TEST(SortDigestTest, SaysWhenItLeavesSomethingOut) {
    EXPECT_TRUE(DigestOf(u"ABCDEFGHIJK12345678").IsExact());
    EXPECT_FALSE(DigestOf(u"ABCDEFGHIJKLMN12345").IsExact());
    EXPECT_FALSE(DigestOf(u"ABCDEFGHIJKLMNOPQRS").IsExact());
    EXPECT_FALSE(DigestOf(u"\u0434\u043E\u0440\u043E\u0433\u0430\u0434").IsExact());
}

TEST(SortDigestTest, OrdersCodesAsNumbers) {
    const std::array<std::int32_t, 6> codes{-2147483647 - 1, -2, -1, 0, 1, 2147483647};
    for (std::size_t i = 0; i < codes.size(); ++i) {
        EXPECT_TRUE(DigestOfCode(codes[i]).IsExact());
        for (std::size_t k = i + 1; k < codes.size(); ++k) {
            EXPECT_LT(DigestOfCode(codes[i]), DigestOfCode(codes[k]));
        }
    }
}

TEST(SortDigestTest, NeverContradictsTheWholeKeys) {
    const unsigned seed = 61;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    // Names that share long beginnings and end at every place where the room ends.
    const CString units =
        CString(10, u'A') + CString{u'B', 1, 0xEF, 0xF0, 0x100, 0xFFF, 0xD83C, 0xFFFF, u'1', u'2'};
    const auto name = [&] {
        CString made;
        for (auto length = random() % 20; length != 0; --length) {
            made += random() % 4 != 0 ? u'A' : units[random() % units.size()];
        }
        if (random() % 2 == 0) {
            made = made.substr(0, 19 - random() % 10) + (random() % 2 == 0 ? u"3" : u"99999");
        }
        return made.substr(0, 19);
    };
    const auto sign = [](auto a, auto b) { return (a > b ? 1 : 0) - (a < b ? 1 : 0); };
    int left = 0;
    for (int i = 0; i < 300000; ++i) {
        const CString first = name();
        const CString second = random() % 2 == 0 ? name() : first.substr(0, random() % 20) + name();
        NameKey a = MakeNameKey(first);
        NameKey b = MakeNameKey(second);
        const int expected = CompareNameKeys(a, b);
        int rounds = 0;
        int compared = sign(DigestOfName(a), DigestOfName(b));
        while (compared == 0 && !DigestOfName(a).IsExact()) {
            ASSERT_LT(++rounds, 4);
            a = RestOfName(a);
            b = RestOfName(b);
            compared = sign(DigestOfName(a), DigestOfName(b));
        }
        left += rounds > 0 ? 1 : 0;
        ASSERT_EQ(compared, expected)
            << testing::PrintToString(first) << " and " << testing::PrintToString(second);
    }
    EXPECT_GT(left, 1000);
}

}  // namespace
}  // namespace cqsurvey
