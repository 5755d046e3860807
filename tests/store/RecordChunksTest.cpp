#include "store/RecordChunks.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <map>
#include <set>
#include <string>

#include "store/StoreTesting.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace cqsurvey {
namespace {

constexpr std::size_t kWidth = 13;

using Bytes = std::array<std::byte, kWidth>;
using Mark = RecordChunks::Mark;

Bytes Filled(std::uint32_t seed) {
    Bytes bytes;
    for (std::size_t i = 0; i < kWidth; ++i) {
        bytes[i] = static_cast<std::byte>((seed >> (i % 4 * 8)) + i);
    }
    return bytes;
}

void Put(RecordChunks& chunks, std::uint32_t number, const std::byte* bytes) {
    std::copy_n(bytes, kWidth, chunks.Place(number));
}

Bytes At(const RecordChunks& chunks, std::uint32_t number) {
    Bytes bytes{};
    const std::byte* found = chunks.Find(number);
    if (found != nullptr) {
        std::copy_n(found, kWidth, bytes.begin());
    }
    return bytes;
}

std::set<std::uint32_t> Taken(RecordChunks& chunks, Mark mark) {
    std::set<std::uint32_t> numbers;
    std::uint32_t last = 0;
    chunks.TakeMarked(mark, [&](std::uint32_t number, const std::byte* record) {
        EXPECT_TRUE(numbers.empty() || number > last);
        EXPECT_EQ(record, chunks.Find(number));
        last = number;
        numbers.insert(number);
    });
    return numbers;
}

TEST(RecordChunksTest, AnEmptyOneHasNothing) {
    const RecordChunks chunks(kWidth);
    EXPECT_EQ(chunks.GetCount(), 0U);
    EXPECT_EQ(chunks.Find(1), nullptr);
    EXPECT_EQ(chunks.Find(0xFFFFFFFF), nullptr);
    EXPECT_EQ(chunks.Next(0), 0U);
    EXPECT_EQ(chunks.Next(0xFFFFFFFF), 0U);
    EXPECT_EQ(chunks.Prev(0), 0U);
    EXPECT_EQ(chunks.Prev(std::uint64_t{1} << 32), 0U);
    EXPECT_EQ(chunks.GetMarked(Mark::Dirty), 0U);
}

TEST(RecordChunksTest, TheHighestAndLowestNumbersAreNumbersLikeAnyOther) {
    RecordChunks chunks(kWidth);
    Put(chunks, 0xFFFFFFFF, Filled(1).data());
    Put(chunks, 1, Filled(2).data());
    EXPECT_EQ(At(chunks, 0xFFFFFFFF), Filled(1));
    EXPECT_EQ(chunks.Next(1), 0xFFFFFFFF);
    EXPECT_EQ(chunks.Next(0xFFFFFFFE), 0xFFFFFFFF);
    EXPECT_EQ(chunks.Next(0xFFFFFFFF), 0U);
    EXPECT_EQ(chunks.Prev(std::uint64_t{1} << 32), 0xFFFFFFFF);
    EXPECT_EQ(chunks.Prev(0xFFFFFFFF), 1U);
    EXPECT_EQ(chunks.Prev(1), 0U);
}

TEST(RecordChunksTest, BytesStayInPlaceWhileOtherChunksChange) {
    RecordChunks chunks(kWidth);
    Put(chunks, 300, Filled(300).data());
    const std::byte* place = chunks.Find(300);
    for (std::uint32_t number = 1000; number < 3000; ++number) {
        Put(chunks, number, Filled(number).data());
    }
    Put(chunks, 1, Filled(1).data());
    EXPECT_EQ(chunks.Find(300), place);
    EXPECT_EQ(At(chunks, 300), Filled(300));
}

TEST(RecordChunksTest, MarksAreTakenInOrderAndMayBeOnNumbersWithoutARecord) {
    RecordChunks chunks(kWidth);
    Put(chunks, 5, Filled(5).data());
    for (const std::uint32_t number : {4000000000U, 5U, 70U, 5U, 1U}) {
        chunks.SetMark(number, Mark::Dirty);
    }
    chunks.SetMark(9, Mark::Touched);
    EXPECT_EQ(chunks.GetMarked(Mark::Dirty), 4U);
    EXPECT_EQ(Taken(chunks, Mark::Dirty), (std::set<std::uint32_t>{1, 5, 70, 4000000000U}));
    EXPECT_EQ(chunks.GetMarked(Mark::Dirty), 0U);
    EXPECT_TRUE(Taken(chunks, Mark::Dirty).empty());
    EXPECT_EQ(Taken(chunks, Mark::Touched), std::set<std::uint32_t>{9});
}

TEST(RecordChunksTest, AVisitThatThrowsLeavesTheMarks) {
    RecordChunks chunks(kWidth);
    for (const std::uint32_t number : {1U, 2U, 600U}) {
        chunks.SetMark(number, Mark::Dirty);
    }
    const auto stop = [](std::uint32_t number, const std::byte*) {
        if (number == 2) {
            throw number;
        }
    };
    EXPECT_THROW(chunks.TakeMarked(Mark::Dirty, stop), std::uint32_t);
    EXPECT_EQ(Taken(chunks, Mark::Dirty), (std::set<std::uint32_t>{1, 2, 600}));
}

TEST(RecordChunksTest, ClearForgetsRecordsAndMarks) {
    RecordChunks chunks(kWidth);
    Put(chunks, 7, Filled(7).data());
    chunks.SetMark(7, Mark::Dirty);
    chunks.Clear();
    EXPECT_EQ(chunks.GetCount(), 0U);
    EXPECT_EQ(chunks.Next(0), 0U);
    EXPECT_TRUE(Taken(chunks, Mark::Dirty).empty());
    Put(chunks, 7, Filled(8).data());
    EXPECT_EQ(At(chunks, 7), Filled(8));
}

TEST(RecordChunksTest, BehavesAsAMapUnderAnySequenceOfChanges) {
    for (const std::uint32_t seed : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RecordChunks chunks(kWidth);
        std::map<std::uint32_t, Bytes> model;
        std::array<std::set<std::uint32_t>, 2> marks;
        // Dense runs, chunk borders, and numbers of any size.
        const auto number = [&]() -> std::uint32_t {
            switch (random.Below(4)) {
                case 0:
                    return 1 + random.Below(700);
                case 1:
                    return random.Below(40) * 256 + 254 + random.Below(4);
                case 2:
                    return 0xFFFFFFFF - random.Below(600);
                default:
                    return std::max(1U, random.Number() >> random.Below(24));
            }
        };
        for (int step = 0; step < 20000; ++step) {
            const std::uint32_t at = number();
            const Mark mark = random.OneIn(2) ? Mark::Dirty : Mark::Touched;
            switch (random.Below(16)) {
                case 0:
                case 1:
                case 2:
                case 3:
                case 4: {
                    const Bytes bytes = Filled(random.Number());
                    Put(chunks, at, bytes.data());
                    model[at] = bytes;
                    break;
                }
                case 5:
                case 6:
                case 7:
                    chunks.Erase(at);
                    model.erase(at);
                    break;
                case 8: {
                    const Bytes bytes = Filled(random.Number());
                    chunks.PutMarked(at, bytes.data());
                    model[at] = bytes;
                    marks[0].insert(at);
                    marks[1].insert(at);
                    break;
                }
                case 9:
                    chunks.SetMark(at, mark);
                    marks[static_cast<std::size_t>(mark)].insert(at);
                    break;
                case 10:
                    if (random.OneIn(200)) {
                        EXPECT_EQ(Taken(chunks, mark), marks[static_cast<std::size_t>(mark)]);
                        marks[static_cast<std::size_t>(mark)].clear();
                    }
                    break;
                case 11: {
                    const auto next = model.upper_bound(at);
                    EXPECT_EQ(chunks.Next(at), next == model.end() ? 0 : next->first);
                    break;
                }
                case 12: {
                    const auto next = model.lower_bound(at);
                    EXPECT_EQ(chunks.Prev(at), next == model.begin() ? 0 : std::prev(next)->first);
                    break;
                }
                default:
                    EXPECT_EQ(chunks.Find(at) != nullptr, model.contains(at));
                    if (model.contains(at)) {
                        EXPECT_EQ(At(chunks, at), model[at]);
                    }
                    break;
            }
            ASSERT_EQ(chunks.GetCount(), model.size()) << "step " << step;
        }
        std::uint32_t at = 0;
        for (const auto& [wanted, bytes] : model) {
            at = chunks.Next(at);
            ASSERT_EQ(at, wanted);
            ASSERT_EQ(At(chunks, at), bytes);
        }
        EXPECT_EQ(chunks.Next(at), 0U);
    }
}

TEST(RecordChunksTest, AVisitMayEraseAndRewriteWhatItIsGiven) {
    RecordChunks chunks(kWidth);
    for (std::uint32_t number = 1; number <= 1000; ++number) {
        Put(chunks, number, Filled(number).data());
        chunks.SetMark(number, Mark::Touched);
    }
    chunks.TakeMarked(Mark::Touched, [&](std::uint32_t number, const std::byte* record) {
        ASSERT_NE(record, nullptr);
        if (number % 2 == 0) {
            chunks.Erase(number);
        } else {
            Put(chunks, number, Filled(number + 1).data());
        }
    });
    EXPECT_EQ(chunks.GetCount(), 500U);
    EXPECT_EQ(At(chunks, 999), Filled(1000));
    EXPECT_EQ(chunks.Next(0), 1U);
    EXPECT_EQ(chunks.Next(1), 3U);
}

std::size_t InUse() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 use = mallinfo2();
    return use.uordblks + use.hblkhd;
#endif
}

TEST(RecordChunksTest, MemoryIsInProportionToTheRecordsHoweverFarApartTheyAre) {
    constexpr std::uint32_t kRecords = 10000;
    const std::size_t before = InUse();
    RecordChunks sparse(64);
    const std::array<std::byte, 64> record{};
    for (std::uint32_t i = 1; i <= kRecords; ++i) {
        Put(sparse, i * 400000U, record.data());
    }
    EXPECT_LT(InUse() - before, std::size_t{kRecords} * 1000);
    const std::size_t between = InUse();
    RecordChunks dense(64);
    for (std::uint32_t i = 1; i <= kRecords; ++i) {
        Put(dense, i, record.data());
    }
    EXPECT_LT(InUse() - between, std::size_t{kRecords} * 70);
}

}  // namespace
}  // namespace cqsurvey
