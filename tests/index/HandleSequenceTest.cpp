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

/// With a digest that tells it from others.
HandleSequence::Entry EntryOf(CqHandle handle) {
    return {handle, {handle, ~std::uint64_t{handle}}};
}

std::vector<HandleSequence::Entry> Entries(const std::vector<CqHandle>& handles) {
    std::vector<HandleSequence::Entry> entries(handles.size());
    std::transform(handles.begin(), handles.end(), entries.begin(), EntryOf);
    return entries;
}

std::vector<CqHandle> Content(const HandleSequence& sequence) {
    std::vector<CqHandle> content;
    for (std::uint32_t i = 0; i < sequence.Size(); ++i) {
        content.push_back(sequence.At(i));
        EXPECT_EQ(sequence.EntryAt(i).handle, content.back());
    }
    return content;
}

TEST(HandleSequenceTest, AnEmptyOneHoldsNothing) {
    const HandleSequence sequence;
    EXPECT_EQ(sequence.Size(), 0U);
    EXPECT_FALSE(sequence.Contains(1));
    EXPECT_FALSE(sequence.IndexOf(1).has_value());
    EXPECT_EQ(sequence.CountPreceding([](const HandleSequence::Entry&) { return true; }), 0U);
}

TEST(HandleSequenceTest, TheLowestIndexOfAHandleThatStandsTwiceIsFound) {
    HandleSequence sequence;
    for (std::uint32_t i = 0; i < 3000; ++i) {
        sequence.Insert(i, {i + 1, {}});
    }
    sequence.Insert(2500, {9999, {}});
    sequence.Insert(17, {9999, {}});
    sequence.Insert(16, {9999, {}});
    ASSERT_TRUE(sequence.IndexOf(9999).has_value());
    EXPECT_EQ(*sequence.IndexOf(9999), 16U);
    sequence.RemoveAt(16);
    EXPECT_EQ(*sequence.IndexOf(9999), 17U);
    sequence.RemoveAt(17);
    EXPECT_EQ(*sequence.IndexOf(9999), 2500U);
    sequence.RemoveAt(2500);
    EXPECT_FALSE(sequence.Contains(9999));
    EXPECT_EQ(sequence.Size(), 3000U);
}

TEST(HandleSequenceTest, GrowsAtEitherEnd) {
    HandleSequence forward;
    HandleSequence backward;
    std::vector<CqHandle> expected(5000);
    std::iota(expected.begin(), expected.end(), 1);
    for (const CqHandle handle : expected) {
        forward.Insert(forward.Size(), EntryOf(handle));
        backward.Insert(0, EntryOf(handle));
    }
    EXPECT_EQ(Content(forward), expected);
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(Content(backward), expected);
}

TEST(HandleSequenceTest, HoldsTheLargestRecordNumbers) {
    HandleSequence sequence;
    const std::vector<CqHandle> handles{0xFFFFFFFF, 1, 0x80000000, 0xFFFFFFFE};
    sequence.Assign(Entries(handles));
    EXPECT_EQ(Content(sequence), handles);
    EXPECT_EQ(*sequence.IndexOf(0x80000000), 2U);
}

TEST(HandleSequenceTest, CountsWhatPrecedes) {
    for (const std::uint32_t size : {1U, 2U, 445U, 446U, 447U, 510U, 511U, 5000U}) {
        HandleSequence sequence;
        std::vector<CqHandle> handles(size);
        std::iota(handles.begin(), handles.end(), 1);
        sequence.Assign(Entries(handles));
        for (std::uint32_t count = 0; count <= size; ++count) {
            ASSERT_EQ(sequence.CountPreceding([count](const HandleSequence::Entry& entry) {
                return entry.handle <= count;
            }),
                      count);
        }
    }
}

TEST(HandleSequenceTest, CountsWhatPrecedesAfterInsertionsAndRemovals) {
    const unsigned seed = 4;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    HandleSequence sequence;
    std::set<CqHandle> model;
    for (int i = 0; i < 20000; ++i) {
        const auto handle = static_cast<CqHandle>(random() % 3000 + 1);
        const auto expected =
            static_cast<std::uint32_t>(std::distance(model.begin(), model.lower_bound(handle)));
        const std::uint32_t place = sequence.CountPreceding(
            [handle](const HandleSequence::Entry& entry) { return entry.digest.high < handle; });
        ASSERT_EQ(place, expected);
        if (model.erase(handle) == 1) {
            ASSERT_EQ(sequence.RemoveAt(place), handle);
        } else {
            model.insert(handle);
            sequence.Insert(place, EntryOf(handle));
        }
    }
}

TEST(HandleSequenceTest, BehavesLikeAnArrayOverRandomChanges) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto below = [&](std::size_t bound) {
            return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
        };
        HandleSequence sequence;
        std::vector<CqHandle> model;
        for (int round = 0; round < 60; ++round) {
            const bool grows = below(2) == 0 || model.size() < 100;
            for (int i = 0; i < 300; ++i) {
                if (grows || model.empty()) {
                    const std::size_t at = below(model.size() + 1);
                    const auto handle = static_cast<CqHandle>(below(4000));
                    sequence.Insert(static_cast<std::uint32_t>(at), EntryOf(handle));
                    model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), handle);
                } else {
                    const std::size_t at = below(model.size());
                    ASSERT_EQ(sequence.RemoveAt(static_cast<std::uint32_t>(at)), model[at]);
                    model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
                }
            }
            ASSERT_EQ(Content(sequence), model);
            for (std::uint32_t i = 0; i < sequence.Size(); ++i) {
                ASSERT_EQ(sequence.EntryAt(i).digest, EntryOf(model[i]).digest);
            }
            for (CqHandle handle = 0; handle < 4000; handle += 37) {
                const auto found = std::find(model.begin(), model.end(), handle);
                ASSERT_EQ(sequence.Contains(handle), found != model.end());
                const auto index = sequence.IndexOf(handle);
                ASSERT_EQ(index.has_value(), found != model.end());
                if (index) {
                    ASSERT_EQ(*index, found - model.begin());
                }
            }
        }
        while (!model.empty()) {
            const std::size_t at = below(model.size());
            ASSERT_EQ(sequence.RemoveAt(static_cast<std::uint32_t>(at)), model[at]);
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
        }
        EXPECT_EQ(sequence.Size(), 0U);
    }
}

}  // namespace
}  // namespace cqsurvey
