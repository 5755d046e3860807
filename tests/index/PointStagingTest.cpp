#include "index/PointStaging.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "support/FakePointRecords.h"
#include "support/ViewModel.h"

namespace cqsurvey {
namespace {

/// The names in the order of the view, each with its handle.
std::vector<std::string> Stage(const std::vector<CString>& names, std::uint16_t key,
                               std::uint16_t order) {
    FakePointRecords records;
    for (const CString& name : names) {
        records.records[static_cast<CqHandle>(records.records.size() + 1)] =
            FakePointRecords::Make(name);
    }
    PointStaging staging(ViewSetting(key, order, COORDFILTER{}));
    for (const auto& [handle, record] : records.records) {
        staging.Stage(handle, record.data());
    }
    const ViewContent content = staging.Finish();
    std::vector<std::string> staged;
    for (std::uint32_t i = 0; i < content.points.Size(); ++i) {
        const CqHandle handle = content.points.At(i);
        staged.push_back(ToUtf8(CString(StoredPointName(records.Peek(handle)).View())) + "/" +
                         std::to_string(handle));
    }
    return staged;
}

using Staged = std::vector<std::string>;

TEST(PointStagingTest, SortsNamesInNaturalOrder) {
    const std::vector<CString> names{u"P10", u"P2", u"P1", u"A", u"B"};
    EXPECT_EQ(Stage(names, 0, 0), (Staged{"A/4", "B/5", "P1/3", "P2/2", "P10/1"}));
    EXPECT_EQ(Stage(names, 0, 1), (Staged{"P10/1", "P2/2", "P1/3", "B/5", "A/4"}));
}

TEST(PointStagingTest, AnOrderAboveOneAscendsByName) {
    EXPECT_EQ(Stage({u"B", u"A"}, 0, 2), (Staged{"A/2", "B/1"}));
}

TEST(PointStagingTest, TheLastOfEqualOnesComesFirstInBothDirections) {
    const std::vector<CString> names{u"P1", u"P01", u"A", u"P001"};
    EXPECT_EQ(Stage(names, 0, 0), (Staged{"A/3", "P001/4", "P01/2", "P1/1"}));
    EXPECT_EQ(Stage(names, 0, 1), (Staged{"P001/4", "P01/2", "P1/1", "A/3"}));
}

TEST(PointStagingTest, LongNamesOfAnyScriptAreSortedToTheirEnds) {
    const CString stem(12, u'\u0434');
    const CString longer = stem + u"\u0434\u0434\u0434";
    const std::vector<CString> names{
        longer + u"10", stem + u"\u0435", longer + u"2", longer + u"\u0435",
        stem + u"7",    longer + u"02",   longer,        stem + u"07"};
    std::vector<std::size_t> order{7, 4, 6, 5, 2, 0, 3, 1};
    const auto expected = [&] {
        Staged staged;
        for (const std::size_t index : order) {
            staged.push_back(ToUtf8(names[index]) + "/" + std::to_string(index + 1));
        }
        return staged;
    };
    EXPECT_EQ(Stage(names, 0, 0), expected());
    order = {1, 3, 0, 5, 2, 6, 7, 4};
    EXPECT_EQ(Stage(names, 0, 1), expected());
}

TEST(PointStagingTest, EqualOnesAloneAreTurnedRound) {
    EXPECT_EQ(Stage({u"", u"", u""}, 0, 0), (Staged{"/3", "/2", "/1"}));
    EXPECT_EQ(Stage({u"7", u"07", u"007"}, 0, 1), (Staged{"007/3", "07/2", "7/1"}));
}

TEST(PointStagingTest, KeepsNamesThatComeInOrder) {
    EXPECT_EQ(Stage({u"A", u"P1", u"P2", u"P10"}, 0, 0), (Staged{"A/1", "P1/2", "P2/3", "P10/4"}));
    EXPECT_EQ(Stage({u"A", u"P1", u"P2", u"P10"}, 0, 1), (Staged{"P10/4", "P2/3", "P1/2", "A/1"}));
}

TEST(PointStagingTest, RecordOrderIsReversedByAnyOrderButZero) {
    EXPECT_EQ(Stage({u"B", u"A", u"C"}, 7, 0), (Staged{"B/1", "A/2", "C/3"}));
    EXPECT_EQ(Stage({u"B", u"A", u"C"}, 7, 1), (Staged{"C/3", "A/2", "B/1"}));
    EXPECT_EQ(Stage({u"B", u"A", u"C"}, 2, 2), (Staged{"C/3", "A/2", "B/1"}));
}

TEST(PointStagingTest, PointsWhoseCodesWrapAreInsertedOneByOne) {
    constexpr std::int32_t kLowest = -2147483647 - 1;
    const auto stage = [](const std::vector<std::int32_t>& codes) {
        PointStaging staging(ViewSetting(1, 0, COORDFILTER{}));
        CqHandle handle = 0;
        for (const std::int32_t code : codes) {
            staging.Stage(++handle, FakePointRecords::Make(u"", code).data());
        }
        const ViewContent content = staging.Finish();
        std::vector<std::int32_t> staged;
        for (std::uint32_t i = 0; i < content.points.Size(); ++i) {
            staged.push_back(codes[content.points.At(i) - 1]);
        }
        return staged;
    };
    using Codes = std::vector<std::int32_t>;
    EXPECT_EQ(stage({-1, kLowest}), (Codes{kLowest, -1}));
    // kLowest - 1 wraps to 2147483647, so the second point goes behind the first.
    EXPECT_EQ(stage({1, kLowest}), (Codes{1, kLowest}));
    EXPECT_EQ(stage({1, kLowest, 0}), (Codes{0, 1, kLowest}));
}

TEST(PointStagingTest, EqualsInsertingOneByOne) {
    for (const unsigned seed : {41U, 42U, 43U, 44U}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ViewDice dice(seed);
        for (int round = 0; round < 150; ++round) {
            const bool wrapping = dice.OneIn(2);
            ViewModel model;
            FakePointRecords records;
            const std::uint32_t count = dice.OneIn(10) ? 1500 : dice.Below(60);
            for (CqHandle handle = 3; records.records.size() < count; handle += 1 + dice.Below(3)) {
                const ViewModel::Point point{
                    dice.Name(), dice.Code(wrapping), static_cast<std::uint16_t>(dice.Below(64)),
                    static_cast<std::uint16_t>(dice.Below(4)), dice.Below(5000)};
                model.points[handle] = point;
                records.records[handle] = FakePointRecords::Make(
                    point.name, point.code, point.origin, point.entity, point.group);
            }
            model.Rebuild(dice.SortKey(), dice.SortOrder(), dice.Filter(wrapping));
            PointStaging staging(ViewSetting(model.key, model.order, model.filter));
            staging.Reserve(count);
            for (const auto& [handle, record] : records.records) {
                staging.Stage(handle, record.data());
            }
            const ViewContent content = staging.Finish();
            std::vector<CqHandle> view;
            for (std::uint32_t i = 0; i < content.points.Size(); ++i) {
                view.push_back(content.points.At(i));
            }
            ASSERT_EQ(view, model.view)
                << "round " << round << ", key " << model.key << ", order " << model.order;
            for (CqHandle entity = 0; entity < 5000; ++entity) {
                ASSERT_EQ(content.entities.Contains(entity), model.entities.count(entity) == 1);
            }
        }
    }
}

}  // namespace
}  // namespace cqsurvey
