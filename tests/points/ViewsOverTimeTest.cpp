#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "cqsurvey/CqBatch.h"
#include "points/ViewsFixture.h"
#include "support/ViewModel.h"

namespace cqsurvey {
namespace {

class ViewsOverTime : public ViewsFixture, public testing::WithParamInterface<unsigned> {
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
