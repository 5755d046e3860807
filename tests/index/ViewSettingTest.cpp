#include "index/ViewSetting.h"

#include <gtest/gtest.h>

#include "support/FakePointRecords.h"
#include "support/ViewModel.h"

namespace cqsurvey {
namespace {

bool Admits(const COORDFILTER& filter, const CString& name, std::int32_t code = 0,
            std::uint16_t origin = 1, std::uint16_t group = 0) {
    const auto record = FakePointRecords::Make(name, code, origin, 0, group);
    return ViewSetting(0, 0, filter).Admits(record.data());
}

COORDFILTER Names(const CString& from, const CString& to) {
    COORDFILTER filter;
    filter.nameFrom = from;
    filter.nameTo = to;
    return filter;
}

TEST(ViewSettingTest, TheDefaultAdmitsTheFiveLowOrigins) {
    for (std::uint32_t bit = 0; bit < 16; ++bit) {
        EXPECT_EQ(Admits(COORDFILTER{}, u"P", 0, static_cast<std::uint16_t>(1U << bit)), bit < 5);
    }
    EXPECT_FALSE(Admits(COORDFILTER{}, u"P", 0, 0));
    EXPECT_TRUE(Admits(COORDFILTER{}, u"", 0, 0x8010));
}

TEST(ViewSettingTest, NameBoundsAreInclusiveAndNatural) {
    const COORDFILTER filter = Names(u"P5", u"P9");
    EXPECT_TRUE(Admits(filter, u"P5"));
    EXPECT_TRUE(Admits(filter, u"P05"));
    EXPECT_TRUE(Admits(filter, u"P7"));
    EXPECT_TRUE(Admits(filter, u"P9"));
    EXPECT_FALSE(Admits(filter, u"P4"));
    EXPECT_FALSE(Admits(filter, u"P10"));
    EXPECT_FALSE(Admits(filter, u"Q1"));
    EXPECT_FALSE(Admits(filter, u"P"));
    EXPECT_FALSE(Admits(filter, u""));
}

TEST(ViewSettingTest, OneBoundAloneIsABound) {
    EXPECT_TRUE(Admits(Names(u"P5", u""), u"Q"));
    EXPECT_FALSE(Admits(Names(u"P5", u""), u"P4"));
    EXPECT_TRUE(Admits(Names(u"", u"P5"), u""));
    EXPECT_FALSE(Admits(Names(u"", u"P5"), u"P6"));
}

TEST(ViewSettingTest, AStarAdmitsByPrefix) {
    EXPECT_TRUE(Admits(Names(u"P*", u""), u"P"));
    EXPECT_TRUE(Admits(Names(u"P*", u""), u"P10"));
    EXPECT_FALSE(Admits(Names(u"P*", u""), u"p1"));
    EXPECT_FALSE(Admits(Names(u"P*", u""), u""));
    EXPECT_TRUE(Admits(Names(u"AB*", u""), u"AB"));
    EXPECT_FALSE(Admits(Names(u"AB*", u""), u"A"));
}

TEST(ViewSettingTest, WhatStandsBehindTheFirstStarIsNotLookedAt) {
    EXPECT_TRUE(Admits(Names(u"*ABC", u""), u"xyz"));
    EXPECT_TRUE(Admits(Names(u"*ABC", u""), u""));
    EXPECT_TRUE(Admits(Names(u"P*1*", u""), u"P2"));
}

TEST(ViewSettingTest, AStarMakesTheUpperBoundVoid) {
    EXPECT_TRUE(Admits(Names(u"P*", u"A"), u"P9"));
    // A star in the upper bound is a character like any other.
    EXPECT_FALSE(Admits(Names(u"", u"A*"), u"B"));
    EXPECT_TRUE(Admits(Names(u"", u"A*"), u"A"));
}

TEST(ViewSettingTest, CodesAreAdmittedFromTheList) {
    COORDFILTER filter;
    filter.codes = {7, -2147483647 - 1, 3, 7};
    EXPECT_TRUE(Admits(filter, u"", 7));
    EXPECT_TRUE(Admits(filter, u"", 3));
    EXPECT_TRUE(Admits(filter, u"", -2147483647 - 1));
    EXPECT_FALSE(Admits(filter, u"", 0));
    EXPECT_FALSE(Admits(filter, u"", 2147483647));
}

TEST(ViewSettingTest, AnEmptyOriginMaskAdmitsNothing) {
    COORDFILTER filter;
    filter.originMask = 0;
    EXPECT_FALSE(Admits(filter, u"P", 0, 0xFFFF));
}

TEST(ViewSettingTest, AGroupAdmitsItsPointsAndWhenAskedUngroupedOnes) {
    COORDFILTER filter;
    filter.group = 3;
    EXPECT_TRUE(Admits(filter, u"P", 0, 1, 3));
    EXPECT_FALSE(Admits(filter, u"P", 0, 1, 0));
    EXPECT_FALSE(Admits(filter, u"P", 0, 1, 4));
    filter.withUngrouped = -1;
    EXPECT_TRUE(Admits(filter, u"P", 0, 1, 3));
    EXPECT_TRUE(Admits(filter, u"P", 0, 1, 0));
    EXPECT_FALSE(Admits(filter, u"P", 0, 1, 4));
    filter.group = 0;
    filter.withUngrouped = 0;
    EXPECT_TRUE(Admits(filter, u"P", 0, 1, 4));
}

TEST(ViewSettingTest, CodesAreComparedByTheirWrappingDifference) {
    constexpr std::int32_t kLowest = -2147483647 - 1;
    const ViewSetting ascending(1, 0, {});
    const ViewSetting descending(1, 1, {});
    EXPECT_EQ(ascending.CompareCodes(5, 3), 2);
    EXPECT_EQ(descending.CompareCodes(5, 3), -2);
    EXPECT_EQ(ascending.CompareCodes(kLowest, 1), 2147483647);
    EXPECT_EQ(descending.CompareCodes(kLowest, 1), -2147483647);
    EXPECT_EQ(descending.CompareCodes(kLowest, 0), kLowest);
}

TEST(ViewSettingTest, NamesAreComparedInTheDirectionOfTheOrder) {
    const NameKey low = MakeNameKey(u"P2");
    const NameKey high = MakeNameKey(u"P10");
    EXPECT_GT(ViewSetting(0, 0, {}).CompareNames(high, low), 0);
    EXPECT_LT(ViewSetting(0, 1, {}).CompareNames(high, low), 0);
    EXPECT_EQ(ViewSetting(0, 1, {}).CompareNames(low, MakeNameKey(u"P02")), 0);
    // Any other order than 1 ascends.
    EXPECT_GT(ViewSetting(0, 2, {}).CompareNames(high, low), 0);
}

TEST(ViewSettingTest, KeepsTheFilterAsItWasGiven) {
    COORDFILTER filter = Names(u"A", u"B");
    filter.codes = {9, 1, 9};
    const ViewSetting setting(5, 6, filter);
    EXPECT_EQ(setting.Key(), 5);
    EXPECT_EQ(setting.Order(), 6);
    EXPECT_EQ(setting.Filter().codes, filter.codes);
    EXPECT_EQ(setting.Filter().nameTo, u"B");
}

TEST(ViewSettingTest, AdmitsWhatThePlainRulesAdmit) {
    const unsigned seed = 31;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    ViewDice dice(seed);
    int admitted = 0;
    for (int i = 0; i < 20000; ++i) {
        ViewModel model;
        model.filter = dice.Filter(i % 2 == 0);
        const ViewModel::Point point{dice.Name(), dice.Code(i % 2 == 0),
                                     static_cast<std::uint16_t>(dice.Below(64)),
                                     static_cast<std::uint16_t>(dice.Below(4))};
        const bool expected = model.Admits(point);
        ASSERT_EQ(Admits(model.filter, point.name, point.code, point.origin, point.group), expected)
            << "step " << i;
        admitted += expected ? 1 : 0;
    }
    EXPECT_GT(admitted, 4000);
    EXPECT_LT(admitted, 16000);
}

}  // namespace
}  // namespace cqsurvey
