#include "cqsurvey/exchange/ImportReport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace cqsurvey::exchange {
namespace {

using Fate = ImportReport::Fate;

TEST(ImportReport, CountsEachLineOnce) {
    ImportReport report;
    report.Count(Fate::Header, 1);
    report.Count(Fate::Comment, 1);
    report.Count(Fate::Blank, 1);
    report.Count(Fate::Recorded, 1);
    report.Count(Fate::Recorded, 3);
    report.Count(Fate::Skipped, 1);
    report.Count(Fate::Refused, 2);
    EXPECT_EQ(report.GetSum(), 10U);
    EXPECT_EQ(report.Get(Fate::Recorded), 2U);
    EXPECT_EQ(report.Get(Fate::Refused), 1U);
    EXPECT_EQ(report.DescribeSum(),
              "10 lines = 1 header + 1 comment + 1 blank + 2 recorded + 3 continued + 1 skipped + "
              "1 refused");
}

TEST(ImportReport, WithheldPointsAreNotRecordedAndStillCount) {
    ImportReport report;
    report.Count(Fate::Recorded, 1);
    report.Count(Fate::Refused, 1);
    report.Withhold();
    EXPECT_EQ(report.Get(Fate::Recorded), 0U);
    EXPECT_EQ(report.DescribeSum(),
              "2 lines = 0 header + 0 comment + 0 blank + 0 recorded + 0 continued + 0 skipped + "
              "1 refused + 1 withheld");
}

TEST(ImportReport, KeepsItsNotes) {
    ImportReport report;
    report.Note({7, 1, "refused", "the northing is empty"});
    report.Note({9, 3, "note", "x"});
    ASSERT_EQ(report.GetNotes().size(), 2U);
    EXPECT_EQ(report.GetNotes()[0].line, 7U);
    EXPECT_STREQ(report.GetNotes()[0].what, "refused");
    EXPECT_EQ(report.GetNotes()[0].text, "the northing is empty");
    EXPECT_EQ(report.GetNotes()[1].lines, 3U);
}

TEST(ImportReport, TellsItsNotesToWhoListensAndKeepsNone) {
    std::vector<std::string> told;
    ImportReport report([&](const ImportNote& note) { told.push_back(note.text); });
    report.Note({7, 1, "refused", "the northing is empty"});
    report.Note({9, 3, "note", "x"});
    EXPECT_EQ(told, (std::vector<std::string>{"the northing is empty", "x"}));
    EXPECT_TRUE(report.GetNotes().empty());
}

}  // namespace
}  // namespace cqsurvey::exchange
