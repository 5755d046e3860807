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

constexpr std::array<Golden, 1> kGoldenJobs{{
    {"version-1.job", 1},
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
        ADD_FAILURE() << finding.table << " " << finding.record << ": " << finding.text;
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

TEST(GoldenJobsTest, AJobIsMadeOfTheSameBytesOnEveryMachine) {
    const TempDir folder;
    MakeGoldenJob(folder.Utf8("made.job"), folder.Utf8("."));
    std::string bytes = HostFileBytes(folder.Utf8("made.job"));
    ASSERT_GT(bytes.size(), 100U);
    // SQLite puts its own version number at 96. Everything else is the library's doing, the number
    // of commits at 24 and 92 included.
    bytes.replace(96, 4, 4, '\0');
    EXPECT_EQ(bytes.size(), 110592U);
    EXPECT_EQ(Digest(bytes), 0xF58F79862FEC8C39U);
}

}  // namespace
}  // namespace cqsurvey
