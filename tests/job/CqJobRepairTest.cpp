#include "cqsurvey/CqJobRepair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <random>
#include <set>
#include <string>

#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/RepairFixture.h"
#include "job/repair/SavedJob.h"
#include "store/salvage/VolumeRefill.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

TEST_F(JobRepair, SavesAllOfASoundJob) {
    const Outcome outcome = Repair(s_bytes);
    EXPECT_TRUE(outcome.missing.empty() && outcome.changed.empty()) << outcome.text;
    EXPECT_EQ(outcome.losses, 0U) << outcome.text;
}

/// What befalls a page.
enum class Damage : std::uint8_t { Zeros, RandomBytes, AnotherPage, OneBit };

std::ostream& operator<<(std::ostream& out, Damage damage) {
    constexpr std::array<const char*, 4> kNames{"Zeros", "RandomBytes", "AnotherPage", "OneBit"};
    return out << kNames[static_cast<std::size_t>(damage)];
}

std::string DamagePage(const std::string& whole, std::size_t page, Damage damage,
                       std::mt19937& random) {
    std::string bytes = whole;
    const std::size_t at = (page - 1) * kPage;
    switch (damage) {
        case Damage::Zeros:
            bytes.replace(at, kPage, kPage, '\0');
            break;
        case Damage::RandomBytes:
            std::generate_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), kPage,
                            [&] { return static_cast<char>(random()); });
            break;
        case Damage::AnotherPage: {
            const std::size_t pages = whole.size() / kPage;
            const std::size_t other = (page - 1 + 1 + random() % (pages - 1)) % pages;
            bytes.replace(at, kPage, whole, other * kPage, kPage);
            break;
        }
        case Damage::OneBit:
            bytes[at + random() % kPage] ^= static_cast<char>(1U << (random() % 8));
            break;
    }
    return bytes;
}

class DamagedPage : public JobRepair, public testing::WithParamInterface<Damage> {};

TEST_P(DamagedPage, CostsNothingOfTheOtherPages) {
    constexpr std::uint32_t kSeed = 20;
    std::mt19937 random(kSeed);
    for (std::size_t page = 1; page <= s_bytes.size() / kPage; ++page) {
        SCOPED_TRACE("seed " + std::to_string(kSeed));
        ExpectOnePageLost(DamagePage(s_bytes, page, GetParam(), random), page);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPage, DamagedPage,
                         testing::Values(Damage::Zeros, Damage::RandomBytes, Damage::AnotherPage,
                                         Damage::OneBit),
                         testing::PrintToStringParamName());

TEST_F(JobRepair, IsTestedOnRowsOfEveryTable) {
    std::set<std::string> tables;
    for (const auto& [page, held] : s_places) {
        for (const auto& [table, numbers] : held) {
            if (!numbers.empty()) {
                tables.insert(table);
            }
        }
    }
    for (const auto& [table, root] : ListRoots(s_folder->Utf8("whole.job"))) {
        EXPECT_TRUE(tables.contains(table)) << table;
    }
    for (const StoreTableLayout& layout : SavedJob::Layouts()) {
        EXPECT_TRUE(tables.contains(layout.name)) << layout.name;
    }
}

TEST_F(JobRepair, ListsWhatATruncatedFileHasLost) {
    for (std::size_t pages = 20; pages < s_bytes.size() / kPage; pages += 23) {
        SCOPED_TRACE(std::to_string(pages) + " pages");
        const Outcome outcome = Repair(s_bytes.substr(0, pages * kPage + 100));
        EXPECT_EQ(outcome.unlisted, 0U) << outcome.text;
    }
}

TEST_F(JobRepair, MakesASoundJobOfAnyBytesOrNone) {
    std::mt19937 random(4);
    int made = 0;
    for (int i = 0; i < 40; ++i) {
        std::string bytes = s_bytes;
        const std::size_t pages = bytes.size() / kPage;
        switch (i % 4) {
            case 0:  // single bytes anywhere
                for (unsigned change = 0; change <= random() % 400; ++change) {
                    bytes[random() % bytes.size()] = static_cast<char>(random());
                }
                break;
            case 1:  // pages in each other's place
                for (unsigned change = 0; change <= random() % 20; ++change) {
                    bytes.replace(random() % pages * kPage, kPage,
                                  s_bytes.substr(random() % pages * kPage, kPage));
                }
                break;
            case 2:  // the heads of pages, and what names other pages
                for (unsigned change = 0; change <= random() % 60; ++change) {
                    bytes[random() % pages * kPage + random() % 40] = static_cast<char>(random());
                }
                break;
            default:  // every page but a few
                for (std::size_t page = 0; page < pages; ++page) {
                    if (random() % 8 != 0) {
                        bytes.replace(page * kPage, kPage, kPage, static_cast<char>(random()));
                    }
                }
                break;
        }
        const TempDir folder;
        PutHostFile(folder.Utf8("bad.job"), bytes);
        try {
            const CqJobRepair repair(folder.Path(u"bad.job"), folder.Path(u"good.job"));
            CqSurveyDB db(folder.Path(u"good.job"));
            const CqJobCheck check(db);
            for (const CqJobFinding& finding : check.GetFindings()) {
                EXPECT_EQ(finding.kind, CqJobFinding::Kind::Note)
                    << i << ": " << finding.table << " " << finding.record << ": " << finding.text;
            }
            ++made;
        } catch (const CqSurveyException& failure) {
            EXPECT_TRUE(failure.m_code == error::kDamaged || failure.m_code == error::kNewerVersion)
                << i << ": " << failure.what();
            EXPECT_FALSE(std::filesystem::exists(folder.Utf8("good.job")));
        }
        EXPECT_TRUE(HostFileBytes(folder.Utf8("bad.job")) == bytes) << "the damaged file changed";
    }
    EXPECT_GT(made, 35);
}

TEST_F(JobRepair, OverwritesNothingAndLeavesNothing) {
    const TempDir folder;
    const auto repair = [&](const CString& from, const CString& to) -> std::int32_t {
        try {
            const CqJobRepair made(folder.Path(from), folder.Path(to));
        } catch (const CqSurveyException& failure) {
            return failure.m_code;
        }
        return error::kNone;
    };
    PutHostFile(folder.Utf8("bad.job"), s_bytes);
    PutHostFile(folder.Utf8("thesis"), std::string(20000, 'x'));
    EXPECT_EQ(repair(u"bad.job", u"thesis"), error::kFileExists);
    EXPECT_EQ(repair(u"bad.job", u"bad.job"), error::kFileExists);
    EXPECT_EQ(repair(u"none.job", u"good.job"), error::kNoVolume);
    EXPECT_EQ(repair(u"thesis", u"good.job"), error::kDamaged);
    PutHostFile(folder.Utf8("bad.job-journal"), "a journal");
    EXPECT_EQ(repair(u"bad.job", u"good.job"), error::kAccessDenied);
    std::filesystem::remove(folder.Utf8("bad.job-journal"));
    {
        CqSurveyDB holder(folder.Path(u"bad.job"));
        EXPECT_EQ(repair(u"bad.job", u"good.job"), error::kVolumeMounted);
    }
    EXPECT_EQ(HostFileBytes(folder.Utf8("thesis")), std::string(20000, 'x'));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Utf8("")), {}), 2);
}

TEST_F(JobRepair, SaysWhichRecordsAreOnAPageThatTheMediumHasChanged) {
    // The radius 100.5 as it stands in the file. Nothing but the page's sum can tell that its last
    // byte is another now.
    const std::string radius("\x40\x59\x20\0\0\0\0\0", 8);
    std::size_t at = std::string::npos;
    for (const auto& [page, tables] : s_places) {
        const std::size_t found = s_bytes.find(radius, (page - 1) * kPage);
        if (tables.contains("_CircleData") && found < page * kPage) {
            at = found + 7;
        }
    }
    ASSERT_NE(at, std::string::npos);
    std::string bytes = s_bytes;
    bytes[at] = 1;
    const Outcome outcome = Repair(bytes);
    EXPECT_TRUE(outcome.missing.empty()) << outcome.text;
    EXPECT_EQ(outcome.changed.size(), 1U) << outcome.text;
    EXPECT_EQ(outcome.unlisted, 0U) << outcome.text;
    EXPECT_EQ(outcome.losses, 1U) << outcome.text;
    EXPECT_NE(outcome.text.find("does not match its sum"), std::string::npos) << outcome.text;
}

TEST_F(JobRepair, KeepsRecordNumbersFromBeingGivenAgain) {
    const TempDir folder;
    PutHostFile(folder.Utf8("bad.job"), s_bytes);
    const CqJobRepair repair(folder.Path(u"bad.job"), folder.Path(u"good.job"));
    CqSurveyDB bad(folder.Path(u"bad.job"));
    CqSurveyDB good(folder.Path(u"good.job"));
    const std::array<double, 3> place{1, 2, 3};
    EXPECT_EQ(good.AddCoordRec(place.data(), u"new", 0, SurveyCoordType{1}, 0),
              bad.AddCoordRec(place.data(), u"new", 0, SurveyCoordType{1}, 0));
    EXPECT_EQ(good.AddCircle(place.data(), 1, 0, 0), bad.AddCircle(place.data(), 1, 0, 0));
}

}  // namespace
}  // namespace cqsurvey
