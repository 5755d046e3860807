#include "index/HandleSequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <set>
#include <vector>

namespace cqsurvey {
namespace {

using List = std::vector<CqHandle>;

List Content(const HandleSequence& sequence) {
    List content;
    for (std::uint32_t i = 0; i < sequence.Size(); ++i) {
        content.push_back(sequence.At(i));
    }
    return content;
}

/// 1, 2 ... size.
List Ascending(std::size_t size) {
    List handles(size);
    std::iota(handles.begin(), handles.end(), 1);
    return handles;
}

/// A sequence beside a plain array, both told the same.
class ModelledSequence {
 public:
    explicit ModelledSequence(unsigned seed) : m_random(seed) {}

    std::size_t Below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(m_random);
    }
    void Insert(std::size_t at, CqHandle handle) {
        sequence.Insert(static_cast<std::uint32_t>(at), handle);
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), handle);
    }
    void RemoveAt(std::size_t at) {
        sequence.RemoveAt(static_cast<std::uint32_t>(at));
        model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
    }
    /// A handle below 4,000, of which some come to stand more than once.
    void InsertAny() { Insert(Below(model.size() + 1), static_cast<CqHandle>(Below(4000))); }
    void RemoveAny() { RemoveAt(Below(model.size())); }
    void Expect() const {
        ASSERT_EQ(Content(sequence), model);
        for (CqHandle handle = 0; handle < 4000; handle += 37) {
            const auto found = std::find(model.begin(), model.end(), handle);
            const auto index = sequence.IndexOf(handle);
            ASSERT_EQ(index.has_value(), found != model.end());
            if (index) {
                ASSERT_EQ(*index, found - model.begin());
            }
        }
    }

    HandleSequence sequence;
    List model;

 private:
    std::mt19937 m_random;
};

TEST(HandleSequenceTest, AnEmptyOneHoldsNothing) {
    const HandleSequence sequence;
    EXPECT_EQ(sequence.Size(), 0U);
    EXPECT_FALSE(sequence.IndexOf(1).has_value());
    EXPECT_EQ(sequence.CountPreceding([](CqHandle) { return true; }), 0U);
}

TEST(HandleSequenceTest, TheLowestIndexOfAHandleThatStandsTwiceIsFound) {
    HandleSequence sequence(Ascending(3000));
    sequence.Insert(2500, 9999);
    sequence.Insert(17, 9999);
    sequence.Insert(16, 9999);
    ASSERT_TRUE(sequence.IndexOf(9999).has_value());
    EXPECT_EQ(*sequence.IndexOf(9999), 16U);
    sequence.RemoveAt(16);
    EXPECT_EQ(*sequence.IndexOf(9999), 17U);
    sequence.RemoveAt(17);
    EXPECT_EQ(*sequence.IndexOf(9999), 2500U);
    sequence.RemoveAt(2500);
    EXPECT_FALSE(sequence.IndexOf(9999).has_value());
    EXPECT_EQ(sequence.Size(), 3000U);
}

TEST(HandleSequenceTest, GrowsAtEitherEnd) {
    HandleSequence forward;
    HandleSequence backward;
    List expected = Ascending(5000);
    for (const CqHandle handle : expected) {
        forward.Insert(forward.Size(), handle);
        backward.Insert(0, handle);
    }
    EXPECT_EQ(Content(forward), expected);
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(Content(backward), expected);
}

TEST(HandleSequenceTest, HoldsTheLargestRecordNumbers) {
    const List handles{0xFFFFFFFF, 1, 0x80000000, 0xFFFFFFFE};
    const HandleSequence sequence(handles);
    EXPECT_EQ(Content(sequence), handles);
    EXPECT_EQ(*sequence.IndexOf(0x80000000), 2U);
}

TEST(HandleSequenceTest, CountsWhatPrecedes) {
    for (const std::uint32_t size : {1U, 2U, 447U, 448U, 449U, 896U, 897U, 5000U}) {
        const HandleSequence sequence(Ascending(size));
        for (std::uint32_t count = 0; count <= size; ++count) {
            ASSERT_EQ(sequence.CountPreceding([count](CqHandle handle) { return handle <= count; }),
                      count);
        }
    }
}

TEST(HandleSequenceTest, ASearchMeetsTheEntriesThatItMeetsInAPlainArray) {
    const unsigned seed = 4;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    ModelledSequence both(seed);
    for (int i = 0; i < 5000; ++i) {
        const auto handle = static_cast<CqHandle>(both.Below(4000));
        List met;
        const std::uint32_t place = both.sequence.CountPreceding([&](CqHandle entry) {
            met.push_back(entry);
            return entry % 1000 < handle % 1000;
        });
        std::size_t low = 0;
        std::size_t high = both.model.size();
        List expected;
        while (low < high) {
            const std::size_t middle = (low + high) / 2;
            expected.push_back(both.model[middle]);
            (both.model[middle] % 1000 < handle % 1000 ? low : high) =
                both.model[middle] % 1000 < handle % 1000 ? middle + 1 : middle;
        }
        ASSERT_EQ(place, low);
        ASSERT_EQ(met, expected);
        both.Insert(place, handle);
    }
}

TEST(HandleSequenceTest, BehavesLikeAnArrayOverRandomChanges) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ModelledSequence both(seed);
        for (int round = 0; round < 60; ++round) {
            const bool grows = both.Below(2) == 0 || both.model.size() < 100;
            for (int i = 0; i < 300; ++i) {
                if (grows || both.model.empty()) {
                    both.InsertAny();
                } else {
                    both.RemoveAny();
                }
            }
            both.Expect();
        }
        while (!both.model.empty()) {
            both.RemoveAny();
        }
        EXPECT_EQ(both.sequence.Size(), 0U);
    }
}

TEST(HandleSequenceTest, UndoingRestoresWhatWasKept) {
    for (const unsigned seed : {21U, 22U, 23U, 24U}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ModelledSequence both(seed);
        List kept;
        for (int round = 0; round < 150; ++round) {
            // Now and then so much goes or comes that blocks are joined and split.
            const std::size_t changes = both.Below(6) == 0 ? both.Below(3000) : both.Below(5);
            const std::size_t growing = 2 + both.Below(7);
            for (std::size_t i = 0; i < changes; ++i) {
                if (both.model.empty() || both.Below(10) < growing) {
                    both.InsertAny();
                } else {
                    both.RemoveAny();
                }
            }
            if (both.Below(3) == 0) {
                both.sequence.KeepStep();
                kept = both.model;
            } else {
                both.sequence.UndoStep();
                both.model = kept;
            }
            both.Expect();
        }
    }
}

TEST(HandleSequenceTest, UndoingTwiceUndoesNothingMore) {
    HandleSequence sequence(Ascending(3));
    sequence.RemoveAt(1);
    sequence.UndoStep();
    sequence.UndoStep();
    EXPECT_EQ(Content(sequence), Ascending(3));
}

TEST(HandleSequenceTest, AHandleWhoseRemovalWasKeptMayComeBack) {
    HandleSequence sequence(Ascending(40));
    while (sequence.Size() != 0) {
        sequence.RemoveAt(sequence.Size() / 2);
    }
    sequence.KeepStep();
    EXPECT_FALSE(sequence.IndexOf(7).has_value());
    sequence.Insert(0, 7);
    EXPECT_EQ(*sequence.IndexOf(7), 0U);
}

}  // namespace
}  // namespace cqsurvey
