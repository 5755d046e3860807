#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "points/ViewsFixture.h"

namespace cqsurvey {
namespace {

using ViewsTest = ViewsFixture;

COORDFILTER FromTo(const CString& from, const CString& to) {
    COORDFILTER filter;
    filter.nameFrom = from;
    filter.nameTo = to;
    return filter;
}

TEST_F(ViewsTest, ANewJobHasAnEmptyViewUnderTheDefaultSetting) {
    std::uint16_t key = 9;
    std::uint16_t order = 9;
    COORDFILTER filter = FromTo(u"A", u"B");
    filter.codes = {1, 2};
    filter.group = 4;
    EXPECT_EQ(db.GetSortCoordSetting(key, order, filter), 0);
    EXPECT_EQ(key, 0);
    EXPECT_EQ(order, 0);
    EXPECT_EQ(filter.nameFrom, u"");
    EXPECT_EQ(filter.nameTo, u"");
    EXPECT_TRUE(filter.codes.empty());
    EXPECT_EQ(filter.originMask, 31);
    EXPECT_EQ(filter.group, 0);
    EXPECT_EQ(filter.withUngrouped, 0);
}

TEST_F(ViewsTest, PointsAreSortedByNameInNaturalOrder) {
    for (const char16_t* name : {u"P10", u"P2", u"P1", u"A", u"B"}) {
        Add(name);
    }
    EXPECT_EQ(Names(), (CStringList{u"A", u"B", u"P1", u"P2", u"P10"}));
    EXPECT_EQ(NamesUnder(0, 1), (CStringList{u"P10", u"P2", u"P1", u"B", u"A"}));
    EXPECT_EQ(NamesUnder(0, 2), (CStringList{u"A", u"B", u"P1", u"P2", u"P10"}));
}

TEST_F(ViewsTest, OfEqualNamesTheOneInsertedLaterComesFirst) {
    Add(u"P1");
    Add(u"P01");
    EXPECT_EQ(Names(), (CStringList{u"P01", u"P1"}));
    EXPECT_EQ(NamesUnder(0, 1), (CStringList{u"P01", u"P1"}));
    Add(u"P001");
    EXPECT_EQ(Names(), (CStringList{u"P001", u"P01", u"P1"}));
}

TEST_F(ViewsTest, PointsAreSortedByCode) {
    Add(u"A", 5);
    Add(u"B", -5);
    Add(u"C", 5);
    Add(u"D", 0);
    EXPECT_EQ(NamesUnder(1, 0), (CStringList{u"B", u"D", u"C", u"A"}));
    EXPECT_EQ(NamesUnder(1, 1), (CStringList{u"C", u"A", u"D", u"B"}));
}

TEST_F(ViewsTest, AnyOtherKeyKeepsRecordOrder) {
    for (const char16_t* name : {u"C", u"A", u"B"}) {
        Add(name);
    }
    EXPECT_EQ(NamesUnder(7, 0), (CStringList{u"C", u"A", u"B"}));
    Add(u"AA");
    EXPECT_EQ(Names(), (CStringList{u"C", u"A", u"B", u"AA"}));
    EXPECT_EQ(NamesUnder(7, 2), (CStringList{u"AA", u"B", u"A", u"C"}));
    Add(u"D");
    EXPECT_EQ(Names(), (CStringList{u"D", u"AA", u"B", u"A", u"C"}));
    EXPECT_EQ(NamesUnder(2, 1), (CStringList{u"D", u"AA", u"B", u"A", u"C"}));
}

TEST_F(ViewsTest, AFilterNarrowsByName) {
    for (const char16_t* name : {u"P5", u"P7", u"P9", u"P10", u"Q1", u"P4", u""}) {
        Add(name);
    }
    EXPECT_EQ(NamesUnder(0, 0, FromTo(u"P5", u"P9")), (CStringList{u"P5", u"P7", u"P9"}));
    EXPECT_EQ(NamesUnder(0, 0, FromTo(u"P*", u"")),
              (CStringList{u"P4", u"P5", u"P7", u"P9", u"P10"}));
    EXPECT_EQ(NamesUnder(0, 0, FromTo(u"*ABC", u"")).size(), 7U);
}

TEST_F(ViewsTest, AFilterNarrowsByCodeAndOrigin) {
    Add(u"A", 1, 1);
    Add(u"B", 2, 16);
    Add(u"C", 2, 32);
    COORDFILTER filter;
    filter.codes = {2};
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"B"}));
    filter.originMask = 32;
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"C"}));
    filter.originMask = 0;
    EXPECT_EQ(NamesUnder(0, 0, filter), CStringList{});
}

TEST_F(ViewsTest, AFilterNarrowsByGroup) {
    Add(u"A");
    db.SetCurrentGroup(u"One");
    Add(u"B");
    db.SetCurrentGroup(u"Two");
    Add(u"C");
    COORDFILTER filter;
    filter.group = 2;
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"C"}));
    filter.withUngrouped = 1;
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"A", u"C"}));
    filter.group = 0;
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"A", u"B", u"C"}));
}

TEST_F(ViewsTest, TheSettingIsGivenBackAsItWasGiven) {
    COORDFILTER filter = FromTo(u"A*", u"Z9");
    filter.codes = {3, 1, 3};
    filter.originMask = 5;
    filter.group = 2;
    filter.withUngrouped = -7;
    db.SetSortCoordSetting(300, 7, filter);
    std::uint16_t key = 0;
    std::uint16_t order = 0;
    COORDFILTER given;
    given.codes = {42};
    db.GetSortCoordSetting(key, order, given);
    EXPECT_EQ(key, 300);
    EXPECT_EQ(order, 7);
    EXPECT_EQ(given.nameFrom, u"A*");
    EXPECT_EQ(given.nameTo, u"Z9");
    EXPECT_EQ(given.codes, (std::vector<std::int32_t>{3, 1, 3}));
    EXPECT_EQ(given.originMask, 5);
    EXPECT_EQ(given.group, 2);
    EXPECT_EQ(given.withUngrouped, -7);
}

TEST_F(ViewsTest, ThereIsNothingOutsideTheView) {
    Add(u"P1", 12);
    CqCoordRec rec;
    ASSERT_NE(db.GetSortCoordAt(0, rec), 0U);
    Add(u"P2", 13);
    EXPECT_EQ(db.GetSortCoordAt(-1, rec), 0U);
    EXPECT_EQ(db.GetSortCoordAt(2, rec), 0U);
    EXPECT_EQ(db.GetSortCoordAt(2147483647, rec), 0U);
    EXPECT_EQ(db.GetSortCoordAt(-2147483647 - 1, rec), 0U);
    EXPECT_EQ(rec.GetPtName(), u"P1");
    EXPECT_EQ(rec.GetCode(), 12);
}

TEST_F(ViewsTest, ThePointAtAnIndexIsReadWhole) {
    const CqHandle point = Add(u"P1", 12, 4);
    CqCoordRec rec;
    EXPECT_EQ(db.GetSortCoordAt(0, rec), point);
    std::array<double, 3> coords{};
    rec.GetPoint(coords.data());
    EXPECT_EQ(coords, kCoords);
    EXPECT_EQ(rec.GetCode(), 12);
    EXPECT_EQ(rec.GetType(), 4);
}

TEST_F(ViewsTest, TheViewFollowsAddEditAndDelete) {
    const CqHandle p1 = Add(u"P1", 1);
    const CqHandle p2 = Add(u"P2", 2);
    db.SetSortCoordSetting(1, 0, {});
    EXPECT_EQ(db.EditCoordRec(u"P1", kCoords.data(), 3), 1);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{p2, p1}));
    db.SetSortCoordSetting(0, 0, {});
    EXPECT_EQ(db.EditCoordRec(p1, u"P3", kCoords.data(), 3), 1);
    EXPECT_EQ(Names(), (CStringList{u"P2", u"P3"}));
    EXPECT_EQ(db.DelCoordRec(p2), 1);
    EXPECT_EQ(Names(), (CStringList{u"P3"}));
}

TEST_F(ViewsTest, AnEditThatChangesNeitherNameNorCodeMovesNothing) {
    const CqHandle first = Add(u"P1");
    const CqHandle second = Add(u"P01");
    EXPECT_EQ(db.EditCoordRec(first, u"P1", kCoords.data(), 0), 1);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{second, first}));
    EXPECT_EQ(db.EditCoordRec(first, u"P1", kCoords.data(), 1), 1);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{first, second}));
}

TEST_F(ViewsTest, TheViewDoesNotFollowAGroupEditUntilItIsSetAgain) {
    COORDFILTER filter;
    filter.group = 1;
    db.SetCurrentGroup(u"One");
    const CqHandle in = Add(u"In");
    db.SetCurrentGroup(u"Two");
    const CqHandle out = Add(u"Out");
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"In"}));
    db.EditCoordRecGroup(in, 2);
    db.EditCoordRecGroup(out, 1);
    EXPECT_EQ(Names(), (CStringList{u"In"}));
    EXPECT_EQ(db.IsMatchSiPoint(db.GetCadEntityHandleByCoordRecHandle(in)), 1);
    EXPECT_EQ(db.IsMatchSiPoint(db.GetCadEntityHandleByCoordRecHandle(out)), 0);
    EXPECT_EQ(NamesUnder(0, 0, filter), (CStringList{u"Out"}));
    EXPECT_EQ(db.IsMatchSiPoint(db.GetCadEntityHandleByCoordRecHandle(in)), 0);
    EXPECT_EQ(db.IsMatchSiPoint(db.GetCadEntityHandleByCoordRecHandle(out)), 1);
}

TEST_F(ViewsTest, AnEntryWhosePointIsGoneGivesItsHandleAndChangesNoRecord) {
    COORDFILTER filter;
    filter.group = 1;
    db.SetCurrentGroup(u"One");
    const CqHandle gone = Add(u"Gone", 5);
    const CqHandle stays = Add(u"Stays", 6);
    db.SetSortCoordSetting(0, 0, filter);
    db.EditCoordRecGroup(gone, 2);
    ASSERT_EQ(db.DelCoordRec(gone), 1);
    EXPECT_EQ(db.GetSortCoordRecs(), 2);
    CqCoordRec rec;
    EXPECT_EQ(db.GetSortCoordAt(1, rec), stays);
    EXPECT_EQ(db.GetSortCoordAt(0, rec), gone);
    EXPECT_EQ(rec.GetPtName(), u"Stays");
    // It compares as an empty name.
    Add(u"A");
    EXPECT_EQ(db.GetSortCoordRecs(), 3);
    EXPECT_EQ(db.GetSortCoordAt(0, rec), gone);
    EXPECT_EQ(db.EditCoordRec(stays, u"0", kCoords.data(), 6), 1);
    EXPECT_EQ(db.DelCoordRec(stays), 1);
    EXPECT_EQ(db.SetSortCoordSetting(0, 0, filter), 1);
}

TEST_F(ViewsTest, AnEditOfFlagsMovesNothing) {
    const CqHandle first = Add(u"P1");
    const CqHandle second = Add(u"P01");
    EXPECT_EQ(db.EditCoordRecFlags(first, 7), 1);
    EXPECT_EQ(db.EditCoordRecFlags(u"P1", 8), 1);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{second, first}));
}

TEST_F(ViewsTest, AnEditOfTheCodeTakesAPointInAndOut) {
    COORDFILTER filter;
    filter.codes = {5};
    const CqHandle point = Add(u"P", 4);
    const CqHandle entity = db.GetCadEntityHandleByCoordRecHandle(point);
    db.SetSortCoordSetting(0, 0, filter);
    EXPECT_EQ(db.EditCoordRec(u"P", kCoords.data(), 5), 1);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{point}));
    EXPECT_EQ(db.IsMatchSiPoint(entity), 1);
    EXPECT_EQ(db.EditCoordRec(point, u"Q", kCoords.data(), 6), 1);
    EXPECT_EQ(db.GetSortCoordRecs(), 0);
    EXPECT_EQ(db.IsMatchSiPoint(entity), 0);
}

TEST_F(ViewsTest, AnotherJobBeginsWithTheDefaultSetting) {
    for (const bool isNew : {true, false}) {
        COORDFILTER filter = FromTo(u"A*", u"Z9");
        filter.codes = {3};
        filter.originMask = 2;
        filter.group = 1;
        filter.withUngrouped = 1;
        db.SetSortCoordSetting(1, 1, filter);
        if (isNew) {
            db.CreateNew(dir.Path(u"another.job"));
        } else {
            db.Open(path);
        }
        std::uint16_t key = 9;
        std::uint16_t order = 9;
        EXPECT_EQ(db.GetSortCoordSetting(key, order, filter), 0);
        EXPECT_EQ(key, 0);
        EXPECT_EQ(order, 0);
        EXPECT_EQ(filter.nameFrom, u"");
        EXPECT_EQ(filter.nameTo, u"");
        EXPECT_TRUE(filter.codes.empty());
        EXPECT_EQ(filter.originMask, 31);
        EXPECT_EQ(filter.group, 0);
        EXPECT_EQ(filter.withUngrouped, 0);
    }
}

TEST_F(ViewsTest, CodesFurtherApartThan31BitsStandWhereInsertingOneByOnePutsThem) {
    constexpr int kLowest = -2147483647 - 1;
    db.SetSortCoordSetting(1, 0, {});
    // 2000000000 less -2000000000 wraps to -294967296.
    Add(u"A", -2000000000);
    Add(u"B", 2000000000);
    EXPECT_EQ(Names(), (CStringList{u"B", u"A"}));
    Add(u"C", -1);
    EXPECT_EQ(Names(), (CStringList{u"B", u"A", u"C"}));
    EXPECT_EQ(NamesUnder(1, 0), (CStringList{u"B", u"A", u"C"}));
    EXPECT_EQ(NamesUnder(1, 1), (CStringList{u"A", u"B", u"C"}));
    // The lowest difference is its own opposite: behind nothing in either direction.
    db.CreateNew(dir.Path(u"lowest.job"));
    Add(u"A", 0);
    Add(u"B", kLowest);
    EXPECT_EQ(NamesUnder(1, 0), (CStringList{u"B", u"A"}));
    EXPECT_EQ(NamesUnder(1, 1), (CStringList{u"B", u"A"}));
}

TEST_F(ViewsTest, AnUndoneBatchPutsViewAndSettingBack) {
    Add(u"P1", 5);
    Add(u"P01", 4);
    const std::vector<CqHandle> before = Handles();
    {
        CqBatch batch(db);
        Add(u"P001");
        db.SetSortCoordSetting(1, 1, {});
        db.DelCoordRec(u"P1");
        Add(u"Q");
    }
    EXPECT_EQ(Handles(), before);
    std::uint16_t key = 9;
    std::uint16_t order = 9;
    COORDFILTER filter;
    EXPECT_EQ(db.GetSortCoordSetting(key, order, filter), 2);
    EXPECT_EQ(key, 0);
    EXPECT_EQ(order, 0);
}

TEST_F(ViewsTest, ASettingMadeBeforeABatchStaysWhenTheBatchIsUndone) {
    Add(u"P1", 5);
    Add(u"P2", 4);
    db.SetSortCoordSetting(1, 0, {});
    {
        CqBatch batch(db);
        Add(u"P3", 4);
    }
    EXPECT_EQ(Names(), (CStringList{u"P2", u"P1"}));
}

TEST_F(ViewsTest, AJobOpenedForReadingIsViewedLikeAnyOther) {
    Add(u"P1");
    Add(u"P2");
    db.Close();
    db.OpenReadOnly(path);
    EXPECT_EQ(NamesUnder(0, 1), (CStringList{u"P2", u"P1"}));
}

TEST_F(ViewsTest, SurveyPointsMatchWhileTheyAreInTheView) {
    std::vector<CqHandle> entities;
    for (int origin = 1; origin <= 32; origin *= 2) {
        const CqHandle point = Add(u"", 0, origin);
        entities.push_back(db.GetCadEntityHandleByCoordRecHandle(point));
    }
    for (std::size_t i = 0; i < entities.size(); ++i) {
        EXPECT_EQ(db.IsMatchSiPoint(entities[i]), i < 5 ? 1 : 0);
    }
    EXPECT_EQ(db.IsMatchSiPoint(0), 0);
    EXPECT_EQ(db.IsMatchSiPoint(1), 0);
    EXPECT_EQ(db.IsMatchSiPoint(0xFFFFFFFF), 0);
    db.Open(path);
    for (std::size_t i = 0; i < entities.size(); ++i) {
        EXPECT_EQ(db.IsMatchSiPoint(entities[i]), i < 5 ? 1 : 0);
    }
    COORDFILTER nothing;
    nothing.originMask = 0;
    db.SetSortCoordSetting(0, 0, nothing);
    for (const CqHandle entity : entities) {
        EXPECT_EQ(db.IsMatchSiPoint(entity), 0);
    }
}

TEST_F(ViewsTest, ADeletedPointMatchesNoMore) {
    const CqHandle point = Add(u"P");
    const CqHandle entity = db.GetCadEntityHandleByCoordRecHandle(point);
    EXPECT_EQ(db.IsMatchSiPoint(entity), 1);
    db.DelCoordRec(point);
    EXPECT_EQ(db.IsMatchSiPoint(entity), 0);
}

}  // namespace
}  // namespace cqsurvey
