#include "cqsurvey/exchange/ImportReport.h"

#include <gtest/gtest.h>

#include <cmath>
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

TEST(ImportReport, KeepsNoMoreNotesThanItMayAndCountsTheRest) {
    ImportReport report({}, 2);
    for (std::uint64_t line = 1; line <= 5; ++line) {
        report.Note({line, 1, "refused", "the northing is empty", "empty"});
    }
    ASSERT_EQ(report.GetNotes().size(), 2U);
    EXPECT_EQ(report.GetNotes()[1].line, 2U);
    EXPECT_EQ(report.GetDroppedNotes(), 3U);
    EXPECT_EQ(report.GetCauses()[0].count, 5U);
}

TEST(ImportReport, TellsItsNotesToWhoListensAndKeepsNone) {
    std::vector<std::string> told;
    ImportReport report([&](const ImportNote& note) { told.push_back(note.text); });
    report.Note({7, 1, "refused", "the northing is empty"});
    report.Note({9, 3, "note", "x"});
    EXPECT_EQ(told, (std::vector<std::string>{"the northing is empty", "x"}));
    EXPECT_TRUE(report.GetNotes().empty());
}

TEST(ImportReport, RefusalsAreCountedByTheirCause) {
    ImportReport report;
    report.Note(
        {7, 1, "refused", "the northing \"x\" is not a number", "not a number", "try this"});
    report.Note({8, 1, "refused", "the height is empty", "empty", ""});
    report.Note({9, 2, "refused", "the northing \"y\" is not a number", "not a number", ""});
    report.Note({11, 1, "note", "x", "", ""});
    ASSERT_EQ(report.GetCauses().size(), 2U);
    EXPECT_EQ(report.GetCauses()[0].text, "not a number");
    EXPECT_EQ(report.GetCauses()[0].count, 2U);
    EXPECT_EQ(report.GetCauses()[0].firstLine, 7U);
    EXPECT_EQ(report.GetCauses()[0].hint, "try this");
    EXPECT_EQ(report.GetCauses()[1].count, 1U);
}

TEST(ImportReport, ShowsTheExtentsAndTheFirstThreePoints) {
    ImportReport report;
    EXPECT_EQ(report.GetExtents().points, 0U);
    report.Show({u"A", 10, -5, std::nan("")});
    report.Show({u"B", -3, 7, 100});
    report.Show({u"C", 4, 8, 90});
    report.Show({u"D", 5, 9, 95});
    const ImportExtents& extents = report.GetExtents();
    EXPECT_EQ(extents.points, 4U);
    EXPECT_EQ(extents.minEasting, -3.0);
    EXPECT_EQ(extents.maxEasting, 10.0);
    EXPECT_EQ(extents.minNorthing, -5.0);
    EXPECT_EQ(extents.maxNorthing, 9.0);
    EXPECT_EQ(extents.heights, 3U);
    EXPECT_EQ(extents.minHeight, 90.0);
    EXPECT_EQ(extents.maxHeight, 100.0);
    ASSERT_EQ(report.GetFirst().size(), 3U);
    EXPECT_EQ(report.GetFirst()[2].name, u"C");
}

TEST(ImportReport, SeveralFilesAddUp) {
    ImportReport first;
    first.Count(Fate::Recorded, 1);
    first.Count(Fate::Refused, 2);
    first.Note({3, 2, "refused", "x", "not a number", ""});
    first.Show({u"A", 1, 2, std::nan("")});
    ImportReport second;
    second.Count(Fate::Updated, 1);
    second.Count(Fate::Checked, 1);
    second.Count(Fate::Refused, 1);
    second.Note({5, 1, "refused", "y", "not a number", "try"});
    second.Show({u"B", 3, -4, 7});
    second.outOfTolerance = 1;
    ImportReport sum;
    sum.Add(first);
    sum.Add(second);
    sum.Add(ImportReport());
    EXPECT_EQ(sum.DescribeSum(),
              "6 lines = 0 header + 0 comment + 0 blank + 1 recorded + 1 continued + 0 skipped + 2 "
              "refused + 1 updated + 1 checked");
    ASSERT_EQ(sum.GetCauses().size(), 1U);
    EXPECT_EQ(sum.GetCauses()[0].count, 2U);
    EXPECT_EQ(sum.GetCauses()[0].hint, "try");
    EXPECT_EQ(sum.GetExtents().points, 2U);
    EXPECT_EQ(sum.GetExtents().minNorthing, -4.0);
    EXPECT_EQ(sum.GetExtents().maxEasting, 3.0);
    EXPECT_EQ(sum.GetExtents().heights, 1U);
    EXPECT_EQ(sum.GetExtents().maxHeight, 7.0);
    EXPECT_EQ(sum.outOfTolerance, 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange
