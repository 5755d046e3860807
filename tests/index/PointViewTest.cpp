#include "index/PointView.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/FakePointRecords.h"
#include "support/ViewModel.h"

namespace cqsurvey {
namespace {

/// A view beside its model, both told the same.
class PointViewTest : public testing::Test {
 protected:
    void Put(CqHandle handle, const ViewModel::Point& point) {
        model.points[handle] = point;
        records.records[handle] =
            FakePointRecords::Make(point.name, point.code, point.origin, point.entity, point.group);
    }
    void Insert(CqHandle handle) {
        model.Insert(handle);
        view.Insert(handle, records.Peek(handle));
    }
    void Remove(CqHandle handle) {
        model.Remove(handle);
        view.Remove(handle, records.Peek(handle));
    }
    void Add(CqHandle handle, const ViewModel::Point& point) {
        Put(handle, point);
        Insert(handle);
    }
    void Edit(CqHandle handle, const CString& name, std::int32_t code) {
        Remove(handle);
        ViewModel::Point point = model.points[handle];
        point.name = name;
        point.code = code;
        Put(handle, point);
        Insert(handle);
    }
    void Delete(CqHandle handle) {
        Remove(handle);
        model.points.erase(handle);
        records.records.erase(handle);
    }
    void Regroup(CqHandle handle, std::uint16_t group) {
        ViewModel::Point point = model.points[handle];
        point.group = group;
        Put(handle, point);
    }
    void Set(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter) {
        model.Rebuild(key, order, filter);
        PointStaging staging(ViewSetting(key, order, filter));
        for (const auto& [handle, record] : records.records) {
            staging.Stage(handle, record.data());
        }
        view.Replace(staging.Finish());
    }
    void Keep() {
        view.KeepStep();
        keptModel = model;
        keptRecords = records.records;
    }
    void Undo() {
        model = keptModel;
        records.records = keptRecords;
        view.UndoStep();
    }
    [[nodiscard]] std::vector<CqHandle> Handles() const {
        std::vector<CqHandle> handles;
        for (std::uint32_t i = 0; i < view.Size(); ++i) {
            handles.push_back(view.At(i));
        }
        return handles;
    }

    FakePointRecords records;
    PointView view{records};
    ViewModel model;
    ViewModel keptModel;
    std::map<CqHandle, PointLayout::Bytes> keptRecords;
};

using List = std::vector<CqHandle>;

COORDFILTER OfGroup(std::uint16_t group) {
    COORDFILTER filter;
    filter.group = group;
    return filter;
}

TEST_F(PointViewTest, IsEmptyAtFirstWithTheDefaultSetting) {
    EXPECT_EQ(view.Size(), 0U);
    EXPECT_EQ(view.Setting().Key(), 0);
    EXPECT_EQ(view.Setting().Order(), 0);
    EXPECT_EQ(view.Setting().Filter().originMask, 31);
    EXPECT_FALSE(view.HasEntity(0));
}

TEST_F(PointViewTest, PutsPointsAtTheirPlaces) {
    CqHandle handle = 0;
    for (const char16_t* name : {u"P10", u"P2", u"P1", u"A", u"B"}) {
        ++handle;
        Add(handle, {name, 0, 1, 0, handle + 100});
    }
    EXPECT_EQ(Handles(), (List{4, 5, 3, 2, 1}));
    EXPECT_TRUE(view.HasEntity(103));
    Delete(3);
    EXPECT_EQ(Handles(), (List{4, 5, 2, 1}));
    EXPECT_FALSE(view.HasEntity(103));
}

TEST_F(PointViewTest, PutsTheOneEditedLastInFrontOfEqualOnes) {
    Add(1, {u"P1", 0, 1});
    Add(2, {u"P01", 0, 1});
    EXPECT_EQ(Handles(), (List{2, 1}));
    Edit(1, u"P001", 0);
    EXPECT_EQ(Handles(), (List{1, 2}));
}

TEST_F(PointViewTest, RemovesTheRightOneOfManyEqualOnes) {
    Set(1, 0, {});
    for (CqHandle handle = 1; handle <= 3000; ++handle) {
        Add(handle, {u"", 5, 1, 0, handle});
    }
    for (const CqHandle handle : {1U, 3000U, 1500U, 1501U}) {
        Delete(handle);
        ASSERT_EQ(Handles(), model.view);
    }
}

TEST_F(PointViewTest, RemovingAnAdmittedPointThatIsNotInItRemovesNothingElse) {
    Set(0, 0, OfGroup(1));
    Add(1, {u"A", 0, 1, 1, 11});
    Add(2, {u"B", 0, 1, 2, 12});
    Regroup(2, 1);
    Delete(2);
    EXPECT_EQ(Handles(), (List{1}));
    EXPECT_TRUE(view.HasEntity(11));
}

TEST_F(PointViewTest, KeepsAPointThatLeftTheGroupAndWasEditedThen) {
    Set(0, 0, OfGroup(1));
    Add(1, {u"B", 0, 1, 1, 11});
    Add(2, {u"D", 0, 1, 1, 12});
    Regroup(1, 2);
    Edit(1, u"Z", 0);
    EXPECT_EQ(Handles(), (List{1, 2}));
    // The middle entry compares as Z now, so C goes in front of it.
    Add(3, {u"F", 0, 1, 1, 13});
    Add(4, {u"C", 0, 1, 1, 14});
    EXPECT_EQ(Handles(), model.view);
    Regroup(1, 1);
    Edit(1, u"A", 0);
    EXPECT_EQ(Handles(), model.view);
}

TEST_F(PointViewTest, HoldsAPointTwiceWhenItComesBackWithoutHavingLeft) {
    COORDFILTER filter = OfGroup(1);
    filter.codes = {5};
    Set(1, 0, filter);
    Add(1, {u"A", 5, 1, 1, 11});
    Regroup(1, 2);
    Edit(1, u"A", 6);
    Regroup(1, 1);
    Edit(1, u"A", 5);
    EXPECT_EQ(Handles(), (List{1, 1}));
    Delete(1);
    EXPECT_EQ(Handles(), (List{1}));
    EXPECT_FALSE(view.HasEntity(11));
    Add(2, {u"B", 5, 1, 1, 12});
    EXPECT_EQ(Handles(), model.view);
}

TEST_F(PointViewTest, KeepsTheEntryOfAPointThatIsGone) {
    Set(1, 0, OfGroup(1));
    Add(1, {u"A", 5, 1, 1, 11});
    Regroup(1, 2);
    Delete(1);
    EXPECT_EQ(Handles(), (List{1}));
    EXPECT_TRUE(view.HasEntity(11));
    // It compares as code 0.
    Add(2, {u"B", -1, 1, 1, 12});
    Add(3, {u"C", 1, 1, 1, 13});
    EXPECT_EQ(Handles(), (List{2, 1, 3}));
    Set(1, 0, OfGroup(1));
    EXPECT_EQ(Handles(), (List{2, 3}));
}

TEST_F(PointViewTest, ForgetsTheSecondEntryOfAnEntityWithTheFirst) {
    Add(1, {u"A", 0, 1, 0, 50});
    Add(2, {u"B", 0, 1, 0, 50});
    Delete(1);
    EXPECT_FALSE(view.HasEntity(50));
    EXPECT_EQ(Handles(), (List{2}));
}

TEST_F(PointViewTest, UndoesChangesAndSettings) {
    for (CqHandle handle = 1; handle <= 5; ++handle) {
        Add(handle, {u"P", 5 - static_cast<std::int32_t>(handle), 1, 0, handle + 100});
    }
    Keep();
    const std::vector<CqHandle> before = Handles();
    Delete(3);
    Edit(1, u"Q", 9);
    Add(6, {u"P", 0, 1, 0, 106});
    Set(1, 1, {});
    Add(7, {u"P", 0, 1, 0, 107});
    Set(9, 1, {});
    Delete(2);
    Undo();
    EXPECT_EQ(Handles(), before);
    EXPECT_EQ(view.Setting().Key(), 0);
    for (CqHandle handle = 1; handle <= 7; ++handle) {
        EXPECT_EQ(view.HasEntity(handle + 100), handle <= 5);
    }
}

TEST_F(PointViewTest, UndoesRemovalsWhileTheRecordsAreOutOfReach) {
    for (CqHandle handle = 1; handle <= 5; ++handle) {
        Add(handle, {u"P" + CString(1, static_cast<char16_t>(u'0' + handle)), 0, 1, 0, 0});
    }
    Keep();
    const std::vector<CqHandle> before = Handles();
    Delete(2);
    Edit(4, u"A", 0);
    Delete(5);
    model = keptModel;
    records.records.clear();
    view.UndoStep();
    records.records = keptRecords;
    EXPECT_EQ(Handles(), before);
    // Each stands by its own name again.
    Add(6, {u"P2", 0, 1, 0, 0});
    Add(7, {u"P4", 0, 1, 0, 0});
    Add(8, {u"P9", 0, 1, 0, 0});
    EXPECT_EQ(Handles(), (List{1, 6, 2, 3, 7, 4, 5, 8}));
}

TEST_F(PointViewTest, UndoingTwiceUndoesNothingMore) {
    Add(1, {u"A", 0, 1, 0, 11});
    Keep();
    Add(2, {u"B", 0, 1, 0, 12});
    Undo();
    view.UndoStep();
    EXPECT_EQ(Handles(), (List{1}));
}

class PointViewOverTime : public PointViewTest, public testing::WithParamInterface<unsigned> {};

TEST_P(PointViewOverTime, IsWhatThePlainProcedureMakes) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam());
    ViewDice dice(GetParam());
    const bool wrapping = GetParam() % 2 == 0;
    CqHandle highest = 0;
    CqHandle regrouped = 0;
    int stale = 0;
    Keep();
    for (int step = 0; step < 6000; ++step) {
        const std::uint32_t action = dice.Below(100);
        // What goes wrong with a point goes wrong soon after it was put into another group.
        auto point = model.points.lower_bound(dice.OneIn(3) ? regrouped : dice.Below(highest + 1));
        const CqHandle chosen = point == model.points.end() ? 0 : point->first;
        if (action < 40 || chosen == 0) {
            ++highest;
            Add(highest,
                {dice.Name(), dice.Code(wrapping), static_cast<std::uint16_t>(1U << dice.Below(7)),
                 static_cast<std::uint16_t>(dice.Below(3)), 0});
            ViewModel::Point added = model.points[highest];
            added.entity = dice.OneIn(50) ? 7 : highest + 10;
            Put(highest, added);
            if (model.Admits(added)) {
                model.EnterEntity(added.entity);
                view.EnterEntity(added.entity);
            }
        } else if (action < 60) {
            Edit(chosen, dice.OneIn(2) ? dice.Name() : point->second.name, dice.Code(wrapping));
        } else if (action < 75) {
            Regroup(chosen, static_cast<std::uint16_t>(dice.Below(3)));
            regrouped = chosen;
        } else if (action < 90) {
            Delete(chosen);
        } else if (action == 90) {
            Set(dice.SortKey(), dice.SortOrder(), dice.Filter(wrapping));
            if (dice.OneIn(2)) {
                Keep();
            }
        } else if (action > 96) {
            Undo();
        } else if (action > 93) {
            Keep();
        }
        ASSERT_EQ(Handles(), model.view) << "step " << step;
        if (step % 16 == 0) {
            for (CqHandle entity = 0; entity < highest + 12; ++entity) {
                ASSERT_EQ(view.HasEntity(entity), model.entities.count(entity) == 1)
                    << "step " << step << ", entity " << entity;
            }
        }
        for (const CqHandle handle : model.view) {
            stale += model.points.count(handle) == 0 ? 1 : 0;
        }
    }
    EXPECT_GT(stale, 0) << "no entry of a point that is gone was met";
}

INSTANTIATE_TEST_SUITE_P(Seeds, PointViewOverTime,
                         testing::Values(51U, 52U, 53U, 54U, 55U, 56U, 57U, 58U));

}  // namespace
}  // namespace cqsurvey
