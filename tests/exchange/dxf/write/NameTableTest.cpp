#include "exchange/dxf/write/NameTable.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace cqsurvey::exchange::dxf {
namespace {

TEST(NameTableTest, ANameIsTheSameForEachCallAndSaysWhetherItChanged) {
    NameTable names;
    bool changed = true;
    EXPECT_EQ(names.Find(u"Kerb", changed), u"Kerb");
    EXPECT_FALSE(changed);
    EXPECT_EQ(names.Find(u"a/b", changed), u"a_b");
    EXPECT_TRUE(changed);
    EXPECT_EQ(names.Find(u"a/b", changed), u"a_b");
    EXPECT_TRUE(changed);
}

TEST(NameTableTest, NamesAlikeButForTheirCaseOrForbiddenSignsDiffer) {
    NameTable names;
    EXPECT_EQ(names.Find(u"road"), u"road");
    EXPECT_EQ(names.Find(u"ROAD"), u"ROAD_2");
    EXPECT_EQ(names.Find(u"Road"), u"Road_3");
    EXPECT_EQ(names.Find(u"road_2"), u"road_2_2");
    EXPECT_EQ(names.Find(u"<"), u"_");
    EXPECT_EQ(names.Find(u">"), u"__2");
    EXPECT_EQ(names.Find(u""), u"__3");
    EXPECT_EQ(names.Find(CString(1, u'\0')), u"__4");
}

TEST(NameTableTest, AHundredThousandNamesThatWouldBeAlikeAreFoundOneByOne) {
    // With a search from 2 for each of them, this would not end within an hour.
    NameTable names;
    std::set<CString> found;
    constexpr std::size_t kNames = 1U << 17U;
    for (std::size_t bits = 0; bits < kNames; ++bits) {
        CString name;
        for (std::size_t i = 0; i < 17; ++i) {
            name += ((bits >> i) & 1U) != 0 ? u'A' : u'a';
        }
        found.insert(names.Find(name));
    }
    EXPECT_EQ(found.size(), kNames);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
