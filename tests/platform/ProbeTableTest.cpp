#include "platform/ProbeTable.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <utility>

#include "platform/RecordHash.h"

namespace cqsurvey {
namespace {

/// A slot whose hash the test chooses.
struct Slot {
    std::uint32_t hash = 0;
    int value = 0;

    [[nodiscard]] bool IsFree() const { return value == 0; }
    [[nodiscard]] std::uint32_t Hash() const { return hash; }
};
using Table = ProbeTable<Slot>;

std::multiset<int> ValuesOf(const Table& table, std::uint32_t hash) {
    std::multiset<int> values;
    table.ForEach(hash, [&](const Slot& slot) { values.insert(slot.value); });
    return values;
}

std::size_t Find(const Table& table, std::uint32_t hash, int value) {
    return table.Find(hash, [value](const Slot& slot) { return slot.value == value; });
}

TEST(ProbeTableTest, AnEmptyOneFindsNothing) {
    const Table table;
    EXPECT_EQ(Find(table, 0, 1), Table::kNone);
    EXPECT_EQ(table.Size(), 0U);
    EXPECT_EQ(table.Capacity(), 0U);
}

TEST(ProbeTableTest, KeepsSlotsThatAreAlike) {
    Table table;
    table.Insert({5, 1});
    table.Insert({5, 1});
    table.Insert({5, 2});
    EXPECT_EQ(ValuesOf(table, 5), (std::multiset<int>{1, 1, 2}));
    table.EraseAt(Find(table, 5, 1));
    EXPECT_EQ(ValuesOf(table, 5), (std::multiset<int>{1, 2}));
}

TEST(ProbeTableTest, ASearchGoesOnAtTheFrontBehindTheLastPlace) {
    Table table;
    for (int value = 1; value <= 6; ++value) {
        table.Insert({0xFFFFFFFF, value});
    }
    table.Insert({0, 7});
    table.EraseAt(Find(table, 0xFFFFFFFF, 1));
    table.EraseAt(Find(table, 0xFFFFFFFF, 4));
    EXPECT_EQ(ValuesOf(table, 0xFFFFFFFF), (std::multiset<int>{2, 3, 5, 6}));
    EXPECT_EQ(ValuesOf(table, 0), (std::multiset<int>{7}));
}

TEST(ProbeTableTest, DoesNotGrowWithinWhatWasReserved) {
    for (std::size_t size = 1; size < 200; ++size) {
        Table table;
        table.Reserve(size);
        const std::size_t capacity = table.Capacity();
        for (std::size_t i = 0; i < size; ++i) {
            table.Insert({static_cast<std::uint32_t>(i * 77777777), 1});
        }
        EXPECT_EQ(table.Capacity(), capacity);
    }
}

TEST(ProbeTableTest, TakesLittleMoreThanItsSlots) {
    Table table;
    for (std::uint32_t i = 1; i <= 20000; ++i) {
        table.Insert({HashHandle(i), 1});
        if (i > 100) {
            ASSERT_LT(table.Capacity(), i + i / 4 * 3);
        }
    }
}

TEST(ProbeTableTest, BehavesLikeAMultisetOverRandomChanges) {
    const unsigned seed = 17;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    Table table;
    std::multiset<std::pair<std::uint32_t, int>> model;
    for (int i = 0; i < 30000; ++i) {
        // Few hashes, crowded at both ends of the range.
        auto hash = static_cast<std::uint32_t>(random() % 40);
        hash = random() % 2 == 0 ? hash * 30000000 : 0U - hash * 1000;
        const auto value = static_cast<int>(random() % 9 + 1);
        const std::size_t place = Find(table, hash, value);
        ASSERT_EQ(place != Table::kNone, model.count({hash, value}) != 0);
        if (place != Table::kNone && random() % 4 != 0) {
            table.EraseAt(place);
            model.erase(model.find({hash, value}));
        } else if (model.size() < 300) {
            table.Insert({hash, value});
            model.insert({hash, value});
        }
        ASSERT_EQ(table.Size(), model.size());
    }
    for (const auto& [hash, value] : model) {
        ASSERT_EQ(ValuesOf(table, hash).count(value), model.count({hash, value}));
    }
}

}  // namespace
}  // namespace cqsurvey
