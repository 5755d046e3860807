#include "store/DatabasePage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/ByteOrder.h"

namespace cqsurvey {
namespace {

std::vector<std::byte> PageOf(std::uint32_t seed) {
    std::vector<std::byte> page(512);
    for (std::size_t at = 0; at < page.size(); ++at) {
        page[at] = static_cast<std::byte>(seed * 31 + at * 7);
    }
    return page;
}

TEST(DatabasePageTest, TheSumOfAPageIsTheFletcherSumOfItsWords) {
    std::vector<std::byte> page(512);
    EXPECT_EQ(ComputePageSum(page.data(), page.size()), PageSum{});
    // With one pair of words, 1 and 2, at the end: the first sum is 1, the second 2 + 1.
    StoreLittle(page.data() + 496, std::uint32_t{1});
    StoreLittle(page.data() + 500, std::uint32_t{2});
    WritePageSum(page.data(), page.size());
    EXPECT_EQ(LoadLittle<std::uint32_t>(page.data() + 504), 1U);
    EXPECT_EQ(LoadLittle<std::uint32_t>(page.data() + 508), 3U);
    // The same pair one place earlier counts once more: 1 + 3, and 3 + 4.
    std::rotate(page.begin() + 488, page.begin() + 496, page.begin() + 504);
    WritePageSum(page.data(), page.size());
    EXPECT_EQ(LoadLittle<std::uint32_t>(page.data() + 504), 4U);
    EXPECT_EQ(LoadLittle<std::uint32_t>(page.data() + 508), 7U);
}

TEST(DatabasePageTest, EveryChangedBitIsSeenInTheSum) {
    std::vector<std::byte> page = PageOf(1);
    WritePageSum(page.data(), page.size());
    ASSERT_TRUE(HasItsSum(page.data(), page.size()));
    for (std::size_t bit = 0; bit < page.size() * 8; ++bit) {
        page[bit / 8] ^= std::byte{1} << (bit % 8);
        EXPECT_FALSE(HasItsSum(page.data(), page.size())) << bit;
        page[bit / 8] ^= std::byte{1} << (bit % 8);
    }
}

TEST(DatabasePageTest, AStampTellsTheStepAndWhetherItIsWhole) {
    std::vector<std::byte> page = PageOf(2);
    page[20] = std::byte{8};
    const DatabaseHeader header(page.data());
    EXPECT_FALSE(header.HasPageSums());
    DatabaseHeader::Stamp(page.data(), page.size(), 7, false);
    EXPECT_TRUE(header.HasPageSums());
    EXPECT_EQ(header.GetStep(), 7U);
    EXPECT_FALSE(header.IsStepWhole());
    EXPECT_TRUE(HasItsSum(page.data(), page.size()));
    DatabaseHeader::Stamp(page.data(), page.size(), 7, true);
    EXPECT_TRUE(header.IsStepWhole());
    EXPECT_TRUE(HasItsSum(page.data(), page.size()));
    // Another tool writes its own version, or leaves no room for sums.
    page[99] = std::byte{0};
    EXPECT_FALSE(header.HasPageSums());
}

TEST(DatabasePageTest, TheNumberOfAStepBeginsAgainAfterTheLast) {
    std::vector<std::byte> page = PageOf(3);
    DatabaseHeader::Stamp(page.data(), page.size(), 0, false);
    const JournalStamp stamp{0xFFFFFFFF, {}};
    EXPECT_TRUE(stamp.Fits(page.data(), page.size()));
}

TEST(DatabasePageTest, AJournalFitsTheStateBeforeItsStepAndTheStateAfterIt) {
    std::vector<std::byte> before = PageOf(4);
    DatabaseHeader::Stamp(before.data(), before.size(), 7, true);
    JournalStamp stamp{7, {}};
    std::copy(before.end() - kPageSumBytes, before.end(), stamp.sum.begin());
    EXPECT_TRUE(stamp.Fits(before.data(), before.size()));

    std::vector<std::byte> page = PageOf(5);
    for (const bool whole : {false, true}) {
        DatabaseHeader::Stamp(page.data(), page.size(), 8, whole);
        EXPECT_TRUE(stamp.Fits(page.data(), page.size()));
        DatabaseHeader::Stamp(page.data(), page.size(), 9, whole);
        EXPECT_FALSE(stamp.Fits(page.data(), page.size()));
        DatabaseHeader::Stamp(page.data(), page.size(), 6, whole);
        EXPECT_FALSE(stamp.Fits(page.data(), page.size()));
    }
    // The same number, but of another file.
    DatabaseHeader::Stamp(page.data(), page.size(), 7, true);
    EXPECT_FALSE(stamp.Fits(page.data(), page.size()));
    // A page that the crash tore must not keep its own journal away.
    page[300] ^= std::byte{1};
    EXPECT_TRUE(stamp.Fits(page.data(), page.size()));
}

TEST(DatabasePageTest, AStampIsReadFromAJournalThatWouldBePlayedBack) {
    std::vector<std::byte> journal(JournalStamp::kHeader);
    const JournalStamp stamp{123456789, {std::byte{1}, std::byte{2}}};
    stamp.Write(journal.data());
    EXPECT_FALSE(JournalStamp::Read(journal.data())) << "its magic is still zero";
    const std::array<unsigned char, 8> magic{0xd9, 0xd5, 0x05, 0xf9, 0x20, 0xa1, 0x63, 0xd7};
    std::transform(magic.begin(), magic.end(), journal.begin(),
                   [](unsigned char c) { return std::byte{c}; });
    const auto read = JournalStamp::Read(journal.data());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->step, stamp.step);
    EXPECT_EQ(read->sum, stamp.sum);
    journal[28] = std::byte{0};
    EXPECT_FALSE(JournalStamp::Read(journal.data())) << "another tool wrote it";
}

}  // namespace
}  // namespace cqsurvey
