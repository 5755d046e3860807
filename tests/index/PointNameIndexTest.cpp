#include "index/PointNameIndex.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "support/FakePointRecords.h"

namespace cqsurvey {
namespace {

class PointNameIndexTest : public testing::Test {
 protected:
    void Add(CqHandle handle, const CString& name) {
        records.records[handle] = FakePointRecords::Make(name);
        index.Enter(StoredPointName(records.Peek(handle)).View(), handle);
    }
    void Rename(CqHandle handle, const CString& name) {
        index.Remove(StoredPointName(records.Peek(handle)).View());
        Add(handle, name);
    }
    void Delete(CqHandle handle) {
        index.Remove(StoredPointName(records.Peek(handle)).View());
        records.records.erase(handle);
    }

    FakePointRecords records;
    PointNameIndex index{records};
};

TEST_F(PointNameIndexTest, FindsNamesExactlyAndWithRegardToCase) {
    Add(1, u"P1");
    Add(2, u"p1");
    Add(3, u"P01");
    EXPECT_EQ(index.Find(u"P1"), 1U);
    EXPECT_EQ(index.Find(u"p1"), 2U);
    EXPECT_EQ(index.Find(u"P01"), 3U);
    EXPECT_EQ(index.Find(u"P"), 0U);
    EXPECT_EQ(index.Find(u"P11"), 0U);
}

TEST_F(PointNameIndexTest, HoldsNoEmptyName) {
    Add(1, u"");
    Add(2, u"");
    EXPECT_EQ(index.Find(u""), 0U);
    EXPECT_EQ(index.Size(), 0U);
}

TEST_F(PointNameIndexTest, FindsALongNameByWhatIsStoredOfIt) {
    const CString longName(25, u'N');
    Add(1, longName);
    EXPECT_EQ(index.Find(longName), 0U);
    EXPECT_EQ(index.Find(longName.substr(0, 19)), 1U);
    EXPECT_EQ(index.Find(longName.substr(0, 18)), 0U);
}

TEST_F(PointNameIndexTest, FindsNothingUnderANameWithAZeroInside) {
    Add(1, CString(u"A\0B", 3));
    EXPECT_EQ(index.Find(u"A"), 1U);
    EXPECT_EQ(index.Find(std::u16string_view(u"A\0B", 3)), 0U);
}

TEST_F(PointNameIndexTest, HoldsTheOneEnteredLastOfTwoAlikeNames) {
    Add(1, u"SAME");
    Add(2, u"SAME");
    EXPECT_EQ(index.Find(u"SAME"), 2U);
    EXPECT_EQ(index.Size(), 1U);
}

TEST_F(PointNameIndexTest, ForgetsTheNameWhenEitherOfTwoAlikeIsDeleted) {
    Add(1, u"SAME");
    Add(2, u"SAME");
    Delete(1);
    EXPECT_EQ(index.Find(u"SAME"), 0U);
    Add(3, u"SAME");
    EXPECT_EQ(index.Find(u"SAME"), 3U);
    Delete(3);
    EXPECT_EQ(index.Find(u"SAME"), 0U);
    Rename(2, u"OTHER");
    EXPECT_EQ(index.Find(u"OTHER"), 2U);
}

TEST_F(PointNameIndexTest, UndoesTheTakingOverOfAName) {
    Add(1, u"SAME");
    index.KeepStep();
    Add(2, u"SAME");
    Delete(2);
    Add(3, u"NEW");
    records.records.erase(3);
    index.UndoStep();
    EXPECT_EQ(index.Find(u"SAME"), 1U);
    EXPECT_EQ(index.Size(), 1U);
}

TEST_F(PointNameIndexTest, TakesNothingBackThatWasLoaded) {
    records.records[1] = FakePointRecords::Make(u"A");
    index.Load(u"A", 1);
    index.UndoStep();
    EXPECT_EQ(index.Find(u"A"), 1U);
}

class PointNameIndexOverTime : public PointNameIndexTest,
                               public testing::WithParamInterface<unsigned> {};

TEST_P(PointNameIndexOverTime, BehavesLikeAMapWhenSomeStepsAreUndone) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam());
    std::mt19937 random(GetParam());
    std::map<CString, CqHandle> model;
    auto keptModel = model;
    auto keptRecords = records.records;
    CqHandle highest = 0;
    const auto nameOf = [](unsigned long number) {
        return FromUtf8("Name of a point " + std::to_string(number)).substr(0, 19);
    };
    for (int step = 0; step < 400; ++step) {
        for (auto changes = random() % 40; changes != 0; --changes) {
            const CString name = nameOf(random() % 1500);
            if (records.records.empty() || random() % 2 == 0) {
                Add(++highest, name);
                model[name] = highest;
                continue;
            }
            auto point = records.records.lower_bound(static_cast<CqHandle>(random() % highest + 1));
            point = point == records.records.end() ? records.records.begin() : point;
            const CqHandle handle = point->first;
            model.erase(CString(StoredPointName(point->second.data()).View()));
            if (random() % 2 == 0) {
                Delete(handle);
            } else {
                Rename(handle, name);
                model[name] = handle;
            }
        }
        if (random() % 3 == 0) {
            records.records = keptRecords;
            model = keptModel;
            index.UndoStep();
        } else {
            index.KeepStep();
            keptRecords = records.records;
            keptModel = model;
        }
        ASSERT_EQ(index.Size(), model.size());
        for (unsigned i = 0; i < 1500; i += 7) {
            const auto found = model.find(nameOf(i));
            ASSERT_EQ(index.Find(nameOf(i)), found == model.end() ? 0 : found->second);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, PointNameIndexOverTime, testing::Values(21U, 22U, 23U));

}  // namespace
}  // namespace cqsurvey
