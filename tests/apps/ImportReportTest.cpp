#include "cqjob/ImportReport.h"

#include <gtest/gtest.h>

#include "apps/CapturedConsole.h"

namespace cqsurvey::cqjob {
namespace {

using Fate = ImportReport::Fate;

TEST(ImportReport, CountsEachLineOnce) {
    CapturedConsole captured;
    ImportReport report(captured.console, "a.csv", false);
    report.Count(Fate::Header, 1);
    report.Count(Fate::Comment, 1);
    report.Count(Fate::Blank, 1);
    report.Count(Fate::Recorded, 1);
    report.Count(Fate::Recorded, 3);
    report.Count(Fate::Skipped, 1);
    report.Count(Fate::Refused, 2);
    EXPECT_EQ(report.GetSum(), 10U);
    EXPECT_EQ(report.GetRecorded(), 2U);
    EXPECT_EQ(report.GetRefused(), 1U);
    EXPECT_EQ(report.DescribeSum(),
              "10 lines = 1 header + 1 comment + 1 blank + 2 recorded + 3 continued + 1 skipped + "
              "1 refused");
}

TEST(ImportReport, WithheldPointsAreNotRecordedAndStillCount) {
    CapturedConsole captured;
    ImportReport report(captured.console, "a.csv", false);
    report.Count(Fate::Recorded, 1);
    report.Count(Fate::Refused, 1);
    report.Withhold();
    EXPECT_EQ(report.GetRecorded(), 0U);
    EXPECT_EQ(report.DescribeSum(),
              "2 lines = 0 header + 0 comment + 0 blank + 0 recorded + 0 continued + 0 skipped + "
              "1 refused + 1 withheld");
}

TEST(ImportReport, NamesTheFileAndTheLine) {
    CapturedConsole captured;
    ImportReport report(captured.console, "a.csv", false);
    report.Note(7, 1, "refused", "the northing is empty");
    report.Note(9, 3, "note", "x");
    EXPECT_EQ(captured.Err(), "a.csv:7: refused: the northing is empty\na.csv:9-11: note: x\n");
    EXPECT_EQ(captured.Out(), "");
}

TEST(ImportReport, WritesItsNotesAsJsonInstead) {
    CapturedConsole captured;
    ImportReport report(captured.console, "a.csv", true);
    report.Count(Fate::Refused, 2);
    report.Note(7, 2, "refused", "the northing \"a\" is no number");
    JsonWriter json(captured.console);
    json.BeginObject();
    report.WriteJson(json);
    json.EndObject();
    EXPECT_EQ(captured.Err(), "");
    const std::string out = captured.Out();
    EXPECT_NE(out.find("\"refused\": 1,"), std::string::npos) << out;
    EXPECT_NE(out.find("\"continued\": 1,"), std::string::npos) << out;
    EXPECT_NE(out.find("\"line\": 7,\n      \"lines\": 2,\n      \"what\": \"refused\",\n      "
                       "\"text\": \"the northing \\\"a\\\" is no number\""),
              std::string::npos)
        << out;
}

}  // namespace
}  // namespace cqsurvey::cqjob
