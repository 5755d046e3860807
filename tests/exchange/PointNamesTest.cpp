#include "exchange/PointNames.h"

#include <gtest/gtest.h>

#include <set>

namespace cqsurvey::exchange {
namespace {

TEST(PointNames, CutsANameAtTheLengthThatAJobHolds) {
    EXPECT_EQ(CutName(u"short"), u"short");
    EXPECT_EQ(CutName(u"1234567890123456789"), u"1234567890123456789");
    EXPECT_EQ(CutName(u"12345678901234567890"), u"1234567890123456789");
    EXPECT_EQ(CutName(u"abc", 0), u"");
}

TEST(PointNames, NeverHalvesACharacter) {
    const CString eighteen(18, u'a');
    EXPECT_EQ(CutName(eighteen + u"\U0001F332"), eighteen);
    EXPECT_EQ(CutName(CString(17, u'a') + u"\U0001F332" + u"b"), CString(17, u'a') + u"\U0001F332");
}

TEST(PointNames, EndAtAZeroAsInAJob) {
    EXPECT_EQ(CutName(CString(u"P\0Q", 3)), u"P");
    EXPECT_EQ(CutName(CString(u"\0Q", 2)), u"");
    // A job takes a name with a zero for the name before it, so that one is always taken.
    const std::set<CString> taken = {u"P"};
    PointNames names([&](const CString& name) { return taken.contains(name.c_str()); });
    EXPECT_EQ(names.MakeUnique(CString(u"P\0Q", 3)), u"P_2");
}

TEST(PointNames, NumbersNamesThatAreTaken) {
    std::set<CString> taken = {u"P1", u"P1_2"};
    PointNames names([&](const CString& name) { return taken.contains(name); });
    EXPECT_EQ(names.MakeUnique(u"P1"), u"P1_3");
    taken.insert(u"P1_3");
    EXPECT_EQ(names.MakeUnique(u"P1"), u"P1_4");
    EXPECT_EQ(names.MakeUnique(u"P2"), u"P2_2");
}

TEST(PointNames, ShortensALongNameForItsNumber) {
    std::set<CString> taken;
    PointNames names([&](const CString& name) { return taken.contains(name); });
    const CString name = u"1234567890123456789";
    std::set<CString> made;
    for (int i = 0; i < 20000; ++i) {
        const CString unique = names.MakeUnique(name);
        ASSERT_LE(unique.size(), limits::kPointName);
        ASSERT_TRUE(made.insert(unique).second);
        taken.insert(unique);
    }
    EXPECT_TRUE(made.contains(u"12345678901234567_2"));
    EXPECT_TRUE(made.contains(u"12345678901234_9999"));
}

}  // namespace
}  // namespace cqsurvey::exchange
