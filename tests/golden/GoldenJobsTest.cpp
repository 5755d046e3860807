#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <string>

#include "cqsurvey/cqsurvey.h"
#include "golden/GoldenJob.h"
#include "golden/JobListing.h"
#include "store/VolumeDatabase.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

/// A job that some version of the library wrote, and that every later one reads.
struct Golden {
    const char* name;
    int formatVersion;
};

std::ostream& operator<<(std::ostream& out, const Golden& golden) {
    return out << golden.name;
}

constexpr std::array<Golden, 2> kGoldenJobs{{
    {"version-1.job", 1},
    {"version-2.job", 2},
}};

std::string GoldenPath(const std::string& name) {
    return CQSURVEY_SOURCE_DIR "/tests/golden/" + name;
}

/// What the golden jobs hold, as it was written down by hand.
std::string ExpectedListing() {
    return HostFileBytes(GoldenPath("contents.txt"));
}

class GoldenJobs : public testing::TestWithParam<Golden> {
 protected:
    [[nodiscard]] CString Path() const { return FromUtf8(GoldenPath(GetParam().name)); }

    TempDir m_folder;
};

INSTANTIATE_TEST_SUITE_P(EachVersion, GoldenJobs, testing::ValuesIn(kGoldenJobs),
                         [](const auto& each) {
                             return "Version" + std::to_string(each.param.formatVersion);
                         });

TEST_P(GoldenJobs, HoldWhatWasWrittenDown) {
    const std::string before = HostFileBytes(GoldenPath(GetParam().name));
    CqSurveyDB db;
    db.OpenReadOnly(Path());
    EXPECT_EQ(ListJob(db), ExpectedListing());
    db.Close();
    EXPECT_TRUE(HostFileBytes(GoldenPath(GetParam().name)) == before) << "a reader changed it";
}

TEST_P(GoldenJobs, HaveNoFault) {
    CqSurveyDB db;
    db.OpenReadOnly(Path());
    const CqJobCheck check(db);
    for (const CqJobFinding& finding : check.GetFindings()) {
        // The tie to a deleted point is one of the things that a job can hold.
        EXPECT_EQ(finding.kind, CqJobFinding::Kind::Note)
            << finding.table << " " << finding.record << ": " << finding.text;
    }
    EXPECT_GT(check.GetChecks(), 0U);
}

TEST_P(GoldenJobs, SayTheirVersion) {
    const std::string bytes = HostFileBytes(GoldenPath(GetParam().name));
    ASSERT_GT(bytes.size(), 100U);
    EXPECT_EQ(bytes.substr(60, 4),
              std::string({0, 0, 0, static_cast<char>(GetParam().formatVersion)}));
    EXPECT_EQ(bytes.substr(68, 4), "CqSv");
}

TEST_P(GoldenJobs, CanBeWrittenAndKeepEverythingElse) {
    const std::string copy = m_folder.Utf8("copy.job");
    PutHostFile(copy, HostFileBytes(GoldenPath(GetParam().name)));
    CqSurveyDB db(FromUtf8(copy));
    const std::array<double, 3> at{1, 2, 3};
    // Records that were deleted do not give their numbers back.
    EXPECT_EQ(db.AddCoordRec(at.data(), u"new", 0, static_cast<SurveyCoordType>(1), 0), 67U);
    EXPECT_EQ(db.AddGroup(u"new"), 1);
    EXPECT_EQ(db.GetGroupID(u"new"), 4U);
    EXPECT_EQ(db.DelCoordRec(u"new"), 1);
    EXPECT_EQ(db.DelGroup(u"new"), 1);
    db.Open(FromUtf8(copy));
    EXPECT_EQ(ListJob(db), ExpectedListing());
}

TEST(GoldenJobsTest, TheLastIsOfTheVersionThatIsWritten) {
    EXPECT_EQ(kGoldenJobs.back().formatVersion, static_cast<int>(VolumeDatabase::kFormatVersion));
}

/// The 64-bit FNV-1a hash.
std::uint64_t Digest(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : bytes) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    return hash;
}

/// The bytes of a job without those that may depend on the version of SQLite: who wrote the page,
/// at 96, what SQLite leaves of freed cells in the unused middle of a page, and the page's sum,
/// which depends on both. SQLite's file format names the places.
std::string WithoutLeavings(std::string bytes) {
    constexpr std::size_t kHeader = 100;
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes.at(at)); };
    const auto number = [&](std::size_t at) { return std::size_t{byte(at)} * 256 + byte(at + 1); };
    const auto clear = [&](std::size_t from, std::size_t to) {
        bytes.replace(from, to - from, to - from, '\0');
    };
    clear(96, kHeader);
    const std::size_t pageSize = number(16);
    const std::size_t reserved = byte(20);
    for (std::size_t page = 0; page < bytes.size(); page += pageSize) {
        const std::size_t at = page == 0 ? kHeader : page;
        const int kind = byte(at);
        const bool inner = kind == 2 || kind == 5;
        // Any other page begins with the number of a page, and the job has few pages.
        if (inner || kind == 10 || kind == 13) {
            clear(at + (inner ? 12 : 8) + 2 * number(at + 3), page + number(at + 5));
        }
        clear(page + pageSize - reserved, page + pageSize);
    }
    return bytes;
}

TEST(GoldenJobsTest, AJobIsMadeOfTheSameBytesOnEveryMachine) {
    const TempDir folder;
    MakeGoldenJob(folder.Utf8("made.job"), folder.Utf8("."));
    const std::string bytes = HostFileBytes(folder.Utf8("made.job"));
    ASSERT_EQ(bytes.size(), 110592U);
    EXPECT_EQ(Digest(WithoutLeavings(bytes)), 0xC45B8CD2E8BADBE3U);
}

}  // namespace
}  // namespace cqsurvey
