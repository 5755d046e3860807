#include "exchange/PointImport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

class PointImportTest : public testing::Test {
 protected:
    PointImportTest() { db.CreateNew(folder.Path(u"a.job")); }

    /// Imports a text in the order pnezd and returns how its lines add up.
    std::string Import(std::string_view text, Duplicates duplicates = Duplicates::Refuse) {
        StringSource source(text);
        FieldTextReadOptions options;
        options.order = ColumnOrder::FromLetters("pnezd");
        FieldTextFile file(source, options);
        ImportReport report([&](const ImportNote& note) {
            notes +=
                "a.csv:" + std::to_string(note.line) + ": " + note.what + ": " + note.text + "\n";
        });
        ImportOptions how = importOptions;
        how.duplicates = duplicates;
        PointImport(db, report, how).Run(file, source);
        return report.DescribeSum();
    }

    CqCoordRec Find(const CString& name) {
        CqCoordRec point;
        CqHandle handle = db.GetCoordRecHandleByPtName(name);
        EXPECT_EQ(db.GetNextCoordRec(handle, point), 1);
        return point;
    }

    CString Describe(const CString& name) {
        CString text;
        db.GetCoordDescription(db.GetCoordRecHandleByPtName(name), text);
        return text;
    }

    TempDir folder;
    CqSurveyDB db;
    ImportOptions importOptions;
    std::string notes;
};

TEST_F(PointImportTest, RecordsPointsAndAccountsForEveryLine) {
    EXPECT_EQ(
        Import("Name,N,E,Z,D\r\n# c\r\n\r\nA,10,20,,\"wall, \"\"old\"\"\r\nhigh\"\r\nB,1,2,3,50\r\n"
               "C,x,2,3\r\n"),
        "7 lines = 1 header + 1 comment + 1 blank + 2 recorded + 1 continued + 0 skipped + 1 "
        "refused");
    double coords[3];
    Find(u"A").GetPoint(coords);
    EXPECT_EQ(coords[0], 20.0);
    EXPECT_EQ(coords[1], 10.0);
    EXPECT_TRUE(std::isnan(coords[2]));
    EXPECT_EQ(Describe(u"A"), u"wall, \"old\"\r\nhigh");
    EXPECT_EQ(Find(u"B").GetCode(), 50);
    EXPECT_EQ(Describe(u"B"), u"");
    EXPECT_EQ(notes, "a.csv:7: refused: the northing \"x\" is not a number\n");
}

TEST_F(PointImportTest, RefusesOrSkipsDuplicatesAsAsked) {
    EXPECT_EQ(Import("A,1,2,3\nA,4,5,6\n"),
              "2 lines = 0 header + 0 comment + 0 blank + 1 recorded + 0 continued + 0 skipped + 1 "
              "refused");
    EXPECT_EQ(Import("A,1,2,3\n", Duplicates::Skip),
              "1 lines = 0 header + 0 comment + 0 blank + 0 recorded + 0 continued + 1 skipped + 0 "
              "refused");
    EXPECT_EQ(
        notes,
        "a.csv:2: refused: the job already has a point \"A\": dE 3.0000, dN 3.0000, dH 3.0000\n"
        "a.csv:1: skipped: the job already has a point \"A\": dE 0.0000, dN 0.0000, dH "
        "0.0000\n");
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
}

TEST_F(PointImportTest, RenamesDuplicatesWhenAsked) {
    Import("A,1,2,3\nA_2,4,5,6\nA,7,8,9\nA,10,11,12\n", Duplicates::Rename);
    EXPECT_EQ(notes,
              "a.csv:3: note: the job already has a point \"A\": dE 6.0000, dN 6.0000, dH 6.0000; "
              "recorded as \"A_3\"\n"
              "a.csv:4: note: the job already has a point \"A\": dE 9.0000, dN 9.0000, dH 9.0000; "
              "recorded as \"A_4\"\n");
    EXPECT_EQ(db.GetNumCoordRecs(), 4);
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"A_4"), 0U);
}

TEST_F(PointImportTest, ReportsNamesThatAreCutAndTheDuplicatesThatArise) {
    const std::string sum = Import("12345678901234567890,1,2,3\n1234567890123456789x,1,2,3\n");
    EXPECT_NE(sum.find("1 recorded"), std::string::npos);
    EXPECT_EQ(notes,
              "a.csv:1: note: the name \"12345678901234567890\" is longer than 19 characters, cut "
              "to \"1234567890123456789\"\n"
              "a.csv:2: refused: the name \"1234567890123456789x\" is longer than 19 characters, "
              "cut to \"1234567890123456789\", which the job already has: dE 0.0000, dN 0.0000, dH "
              "0.0000\n");
    Import("1234567890123456789y,1,2,3\n", Duplicates::Rename);
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"12345678901234567_2"), 0U);
}

TEST_F(PointImportTest, PointsWithoutNameAreNoDuplicates) {
    EXPECT_NE(Import(",1,2,3\n,1,2,3\n").find("2 recorded"), std::string::npos);
    EXPECT_EQ(notes, "");
}

TEST_F(PointImportTest, SaysWhichMarkItKept) {
    Import("1,1,2,3,\"A\" frame\n2,1,2,3,12\"\n");
    EXPECT_EQ(Describe(u"1"), u"\"A\" frame");
    EXPECT_EQ(Describe(u"2"), u"12\"");
    EXPECT_EQ(notes, "a.csv:1: note: a quotation mark that encloses no field is kept as it is\n");
}

TEST_F(PointImportTest, ABatchThatIsNotCommittedLeavesNothing) {
    {
        CqBatch batch(db);
        Import("A,1,2,3,x\n");
        EXPECT_EQ(db.GetNumCoordRecs(), 1);
    }
    EXPECT_EQ(db.GetNumCoordRecs(), 0);
    EXPECT_EQ(db.GetCoordRecHandleByPtName(u"A"), 0U);
}

TEST_F(PointImportTest, NamesTheLineThatTheJobDoesNotTake) {
    db.Close();
    db.OpenReadOnly(folder.Path(u"a.job"));
    try {
        Import("\nA,1,2,3\n");
        FAIL() << "recorded";
    } catch (const ExchangeError& error) {
        EXPECT_TRUE(std::string(error.what()).starts_with("text:2: cannot be recorded: 0x30000004"))
            << error.what();
    }
}

TEST_F(PointImportTest, FailsWhenTheLinesDoNotAddUp) {
    StringSource whole("A,1,2,3\nB,4,5,6\n");
    std::string all;
    while (whole.Read(all)) {
    }
    StringSource less("A,1,2,3\n");
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromLetters("pnezd");
    FieldTextFile file(less, options);
    ImportReport report;
    PointImport import(db, report, importOptions);
    EXPECT_THROW(import.Run(file, whole), ExchangeError);
}

TEST_F(PointImportTest, UpdatesWhatALineSaysAndLeavesTheRest) {
    Import("A,1,2,3,\"7\",wall\n");
    db.EditCoordRecFlags(db.GetCoordRecHandleByPtName(u"A"), 5);
    EXPECT_EQ(Import("A,10,20,30,9\n", Duplicates::Update),
              "1 lines = 0 header + 0 comment + 0 blank + 0 recorded + 0 continued + 0 skipped + 0 "
              "refused + 1 updated");
    EXPECT_EQ(notes,
              "a.csv:1: updated: the job already has a point \"A\": dE 18.0000, dN 9.0000, dH "
              "27.0000\n");
    double coords[3];
    Find(u"A").GetPoint(coords);
    EXPECT_EQ(coords[0], 20.0);
    EXPECT_EQ(coords[1], 10.0);
    EXPECT_EQ(coords[2], 30.0);
    EXPECT_EQ(Find(u"A").GetCode(), 9);
    EXPECT_EQ(Find(u"A").GetFlags(), 5U);
    EXPECT_EQ(Describe(u"A"), u"wall");
    Import("A,11,21,,corner\n", Duplicates::Update);
    Find(u"A").GetPoint(coords);
    EXPECT_EQ(coords[0], 21.0);
    EXPECT_EQ(coords[2], 30.0) << "the line has no height";
    EXPECT_EQ(Find(u"A").GetCode(), 9) << "and no code";
    EXPECT_EQ(Describe(u"A"), u"corner");
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
}

TEST_F(PointImportTest, ChecksAreComparedAndRecordNothing) {
    Import("A,1,2,3\nB,1,2,\n");
    importOptions.tolerance = 0.02;
    StringSource source("A,1.01,2.01,3.02\nA,1.02,2.02,3\nA,1,2,3.03\nB,1,2,9\nA,1,2,\nC,5,5,5\n");
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromLetters("pnezd");
    FieldTextFile file(source, options);
    ImportReport report;
    importOptions.duplicates = Duplicates::Check;
    PointImport(db, report, importOptions).Run(file, source);
    EXPECT_EQ(report.Get(ImportReport::Fate::Checked), 5U);
    EXPECT_EQ(report.Get(ImportReport::Fate::Recorded), 1U);
    EXPECT_EQ(report.outOfTolerance, 2U);
    EXPECT_EQ(report.GetNotes()[0].text,
              "the job already has a point \"A\": dE 0.0100, dN 0.0100, dH 0.0200");
    EXPECT_EQ(report.GetNotes()[1].text,
              "the job already has a point \"A\": dE 0.0200, dN 0.0200, dH 0.0000; out of "
              "tolerance");
    EXPECT_EQ(report.GetNotes()[3].text,
              "the job already has a point \"B\": dE 0.0000, dN 0.0000, dH unknown");
    double coords[3];
    Find(u"A").GetPoint(coords);
    EXPECT_EQ(coords[2], 3.0);
}

}  // namespace
}  // namespace cqsurvey::exchange
