#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "support/TempDir.h"
#include "support/ViewModel.h"

namespace cqsurvey {
namespace {

constexpr std::array<double, 3> kCoords{10, 20, 30};

class ViewsTest : public testing::Test {
 protected:
    void SetUp() override {
        db.CreateNew(path);
        db.AddGroup(u"One");
        db.AddGroup(u"Two");
    }

    CqHandle Add(const CString& name, int code = 0, int origin = 1) {
        return db.AddCoordRec(kCoords.data(), name, code, static_cast<SurveyCoordType>(origin), 0);
    }
    std::vector<CqHandle> Handles() {
        std::vector<CqHandle> handles;
        CqCoordRec rec;
        for (int i = 0; i < db.GetSortCoordRecs(); ++i) {
            handles.push_back(db.GetSortCoordAt(i, rec));
        }
        return handles;
    }
    CStringList Names() {
        CStringList names;
        CqCoordRec rec;
        for (int i = 0; i < db.GetSortCoordRecs(); ++i) {
            EXPECT_NE(db.GetSortCoordAt(i, rec), 0U);
            names.push_back(rec.GetPtName());
        }
        return names;
    }
    CStringList NamesUnder(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter = {}) {
        const std::int32_t count = db.SetSortCoordSetting(key, order, filter);
        const CStringList names = Names();
        EXPECT_EQ(count, static_cast<std::int32_t>(names.size()));
        return names;
    }

    TempDir dir;
    const CString path = dir.Path(u"views.job");
    CqSurveyDB db;
};

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

class ViewsOverTime : public ViewsTest, public testing::WithParamInterface<unsigned> {
 protected:
    void Compare() {
        ASSERT_EQ(Handles(), model.view);
        for (const CqHandle entity : seenEntities) {
            ASSERT_EQ(db.IsMatchSiPoint(entity), model.entities.count(entity) == 1 ? 1 : 0)
                << "entity " << entity;
        }
    }

    [[nodiscard]] bool IsTaken(const CString& name) const {
        for (const auto& [handle, point] : model.points) {
            if (!name.empty() && point.name == name) {
                return true;
            }
        }
        return false;
    }

    ViewModel model;
    std::set<CqHandle> seenEntities;
};

TEST_P(ViewsOverTime, AreWhatThePlainProcedureMakes) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam());
    ViewDice dice(GetParam());
    const bool wrapping = GetParam() % 2 == 0;
    CqHandle highest = 0;
    CqHandle regrouped = 0;
    std::uint16_t group = 0;
    std::unique_ptr<CqBatch> batch;
    ViewModel beforeBatch;
    std::uint16_t groupBeforeBatch = 0;
    for (int step = 0; step < 1500; ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        // Most of it in batches, which spare the waits for the disk.
        if (batch == nullptr && dice.OneIn(3)) {
            batch = std::make_unique<CqBatch>(db);
            beforeBatch = model;
            groupBeforeBatch = group;
        }
        const std::uint32_t action = dice.Below(100);
        auto found = model.points.lower_bound(dice.OneIn(3) ? regrouped : dice.Below(highest + 1));
        const CqHandle chosen = found == model.points.end() ? 0 : found->first;
        if (action < 40 || chosen == 0) {
            const CString name = dice.Name();
            const ViewModel::Point point{name, dice.Code(wrapping),
                                         static_cast<std::uint16_t>(1U << dice.Below(7)), group};
            if (IsTaken(name)) {
                ASSERT_THROW(Add(name, point.code, point.origin), CqSurveyException);
                continue;
            }
            const CqHandle handle = Add(name, point.code, point.origin);
            highest = handle;
            model.points[handle] = point;
            model.Insert(handle);
            const CqHandle entity = db.GetCadEntityHandleByCoordRecHandle(handle);
            model.points[handle].entity = entity;
            if (model.Admits(model.points[handle])) {
                model.EnterEntity(entity);
            }
            seenEntities.insert(entity);
        } else if (action < 60) {
            ViewModel::Point point = found->second;
            const CString name = dice.OneIn(2) ? dice.Name() : point.name;
            const std::int32_t code = dice.OneIn(4) ? point.code : dice.Code(wrapping);
            const bool refused = name != point.name && IsTaken(name);
            ASSERT_EQ(db.EditCoordRec(chosen, name, kCoords.data(), code), refused ? 0 : 1);
            if (!refused && (name != point.name || code != point.code)) {
                model.Remove(chosen);
                model.points[chosen].name = name;
                model.points[chosen].code = code;
                model.Insert(chosen);
            }
        } else if (action < 72) {
            const auto id = static_cast<std::uint16_t>(dice.Below(3));
            ASSERT_EQ(db.EditCoordRecGroup(chosen, id), 1);
            model.points[chosen].group = id;
            regrouped = chosen;
        } else if (action < 86) {
            ASSERT_EQ(db.DelCoordRec(chosen), 1);
            model.Remove(chosen);
            model.points.erase(chosen);
        } else if (action < 90) {
            group = static_cast<std::uint16_t>(dice.Below(3));
            ASSERT_EQ(db.SetCurrentGroup(group == 0 ? u"" : group == 1 ? u"One" : u"Two"), 1);
        } else if (action < 93) {
            model.Rebuild(dice.SortKey(), dice.SortOrder(), dice.Filter(wrapping));
            ASSERT_EQ(db.SetSortCoordSetting(model.key, model.order, model.filter),
                      static_cast<std::int32_t>(model.view.size()));
        } else if (action < 96 && batch != nullptr) {
            if (dice.OneIn(2)) {
                batch->Commit();
            } else {
                model = beforeBatch;
                group = groupBeforeBatch;
            }
            batch.reset();
        } else if (batch == nullptr) {
            db.Open(path);
            model.Rebuild(0, 0, COORDFILTER{});
            group = 0;
        }
        Compare();
        if (HasFatalFailure()) {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ViewsOverTime, testing::Values(81U, 82U, 83U, 84U));

}  // namespace
}  // namespace cqsurvey
