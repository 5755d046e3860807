#include "cqsurvey/exchange/FieldTextReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/ErrorCodes.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

using Fate = ImportReport::Fate;

FieldTextReadOptions Order(std::string_view letters) {
    FieldTextReadOptions options;
    options.order = ColumnOrder::FromLetters(letters);
    return options;
}

/// What an attempt to read the text says is wrong with the options.
std::string FindFault(std::string_view text, const FieldTextReadOptions& options) {
    StringSource source(text);
    try {
        FieldTextReader reader(source, options);
        FieldTextLine line;
        while (reader.Next(line)) {
            if (line.kind == FieldTextLine::Kind::Refused) {
                return line.reason;
            }
        }
    } catch (const OptionError& error) {
        return error.what();
    }
    return {};
}

class FieldTextReaderTest : public testing::Test {
 protected:
    FieldTextReaderTest() { db.CreateNew(folder.Path(u"a.job")); }

    ImportReport Import(std::string_view text, const ImportOptions& options = {}) {
        StringSource source(text);
        return FieldTextReader(source, Order("pnezd")).Import(db, options);
    }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(FieldTextReaderTest, NoMoreNotesAreKeptThanTheOptionsSay) {
    EXPECT_EQ(ImportOptions().mostNotes, 100'000U);
    ImportOptions options;
    options.mostNotes = 1;
    const ImportReport report = Import("A,10,20,5\nB,x,3,4\nC,x,3,4\n", options);
    EXPECT_EQ(report.GetNotes().size(), 1U);
    EXPECT_EQ(report.GetDroppedNotes(), 1U);
    EXPECT_EQ(report.Get(Fate::Refused), 2U);
}

TEST_F(FieldTextReaderTest, RecordsTheFileAndReportsEveryLine) {
    const ImportReport report = Import("Name,N,E,Z,D\nA,10,20,5,wall\nB,1,x,3\nC,1,2,,\n");
    EXPECT_EQ(report.Get(Fate::Header), 1U);
    EXPECT_EQ(report.Get(Fate::Recorded), 2U);
    EXPECT_EQ(report.Get(Fate::Refused), 1U);
    EXPECT_EQ(report.missingHeights, 1U);
    ASSERT_EQ(report.GetNotes().size(), 1U);
    EXPECT_EQ(report.GetNotes()[0].line, 3U);
    EXPECT_EQ(report.GetNotes()[0].text, "the easting \"x\" is not a number");
    db.Close();
    db.Open(folder.Path(u"a.job"));
    EXPECT_EQ(db.GetNumCoordRecs(), 2);
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"A"), 0U);
}

TEST_F(FieldTextReaderTest, ShowsAFileWithoutAJob) {
    StringSource source("A;10;20;5;wall\nB;1;x;3\n");
    FieldTextReader reader(source, Order("pnezd"));
    EXPECT_EQ(reader.GetSeparator(), Separator::Semicolon);
    FieldTextLine line;
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ(line.kind, FieldTextLine::Kind::Point);
    EXPECT_EQ(line.easting, 20.0);
    EXPECT_EQ(line.description, u"wall");
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ(line.kind, FieldTextLine::Kind::Refused);
    EXPECT_FALSE(reader.Next(line));
}

TEST_F(FieldTextReaderTest, SaysWhichColumnsAHeaderGave) {
    StringSource source("Name,East,North,Height,Sigma\nA,1,2,3,4\n");
    FieldTextReadOptions options;
    options.recognise = true;
    FieldTextReader reader(source, options);
    EXPECT_FALSE(reader.GetOrder());
    EXPECT_EQ(reader.Import(db, {}).Get(Fate::Recorded), 1U);
    ASSERT_TRUE(reader.GetOrder());
    EXPECT_EQ(reader.GetOrder()->Describe(), "name 1, northing 3, easting 2, height 4");
    EXPECT_EQ(reader.GetUntaken(), std::vector<std::string>{"5 \"Sigma\""});
}

TEST_F(FieldTextReaderTest, PutsThePointsIntoAGroupAndOfAnOrigin) {
    ImportOptions options;
    options.group = u"Day 2";
    options.origin = SurveyCoordType{4};
    EXPECT_EQ(Import("A,1,2,3\n", options).Get(Fate::Recorded), 1U);
    CqCoordRec point;
    CqHandle handle = db.GetCoordRecHandleByPtName(u"A");
    db.GetNextCoordRec(handle, point);
    EXPECT_EQ(point.GetGroup(), db.GetGroupID(u"Day 2"));
    EXPECT_NE(point.GetGroup(), 0);
    EXPECT_EQ(point.GetType(), SurveyCoordType{4});
}

TEST_F(FieldTextReaderTest, AStrictImportRecordsNothingWhenALineIsRefused) {
    ImportOptions options;
    options.strict = true;
    options.group = u"G";
    const ImportReport report = Import("A,1,2,3\nB,x,2,3\n", options);
    EXPECT_EQ(report.GetWithheld(), 1U);
    EXPECT_EQ(report.Get(Fate::Recorded), 0U);
    EXPECT_EQ(db.GetNumCoordRecs(), 0);
    EXPECT_EQ(db.GetGroupID(u"G"), 0);
    EXPECT_EQ(Import("A,1,2,3\n", options).Get(Fate::Recorded), 1U);
    EXPECT_EQ(db.GetNumCoordRecs(), 1);
}

TEST_F(FieldTextReaderTest, AFileOfRefusedLinesLeavesNoGroup) {
    ImportOptions options;
    options.group = u"G";
    EXPECT_EQ(Import("A,x,2,3\n", options).Get(Fate::Refused), 1U);
    EXPECT_EQ(db.GetGroupID(u"G"), 0);
    EXPECT_EQ(Import("# only a comment\n", options).Get(Fate::Comment), 1U);
    EXPECT_NE(db.GetGroupID(u"G"), 0);
}

TEST_F(FieldTextReaderTest, WhatProgressThrowsUndoesTheImport) {
    ImportOptions options;
    options.group = u"G";
    options.progress = [](std::uint64_t recorded, std::uint64_t bytes,
                          std::optional<std::uint64_t> size) {
        EXPECT_EQ(bytes, 16U);
        EXPECT_EQ(size, 16U);
        if (recorded == 2) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(Import("A,1,2,3\nB,1,2,3\n", options), std::runtime_error);
    EXPECT_EQ(db.GetNumCoordRecs(), 0);
    EXPECT_EQ(db.GetGroupID(u"G"), 0);
    EXPECT_EQ(Import("A,1,2,3\n").Get(Fate::Recorded), 1U);
}

TEST_F(FieldTextReaderTest, TellsNotesAsTheyArise) {
    std::vector<std::uint64_t> lines;
    ImportOptions options;
    options.note = [&](const ImportNote& note) { lines.push_back(note.line); };
    const ImportReport report = Import("A,1,2,3\nA,1,2,3\nB,1,2,x\n", options);
    EXPECT_EQ(lines, (std::vector<std::uint64_t>{2, 3}));
    EXPECT_TRUE(report.GetNotes().empty());
}

TEST_F(FieldTextReaderTest, IsAStepOfItsOwn) {
    {
        const CqBatch batch(db);
        try {
            static_cast<void>(Import("A,1,2,3\n"));
            FAIL() << "imported";
        } catch (const CqSurveyException& failure) {
            EXPECT_EQ(failure.m_code, static_cast<std::int32_t>(error::kInvalidArgument));
        }
    }
    db.Close();
    try {
        static_cast<void>(Import("A,1,2,3\n"));
        FAIL() << "imported";
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, static_cast<std::int32_t>(error::kNoMount));
    }
}

TEST_F(FieldTextReaderTest, TheMarkOfUtf8ContradictsAnotherCodePage) {
    FieldTextReadOptions options = Order("pnezd");
    EXPECT_EQ(FindFault("\xEF\xBB\xBF"
                        "A,1,2,3\n",
                        options),
              "");
    options.codePage = 1252;
    EXPECT_EQ(FindFault("\xEF\xBB\xBF"
                        "A,1,2,3\n",
                        options),
              "text: begins with the byte-order mark of UTF-8, so it is not in code page 1252");
    options.codePage = 37;
    EXPECT_NE(FindFault("A,1,2,3\n", options).find("37 is not a narrow code page"),
              std::string::npos);
}

TEST_F(FieldTextReaderTest, AdviceNamesTheOptionsAsTheCallerDoes) {
    FieldTextReadOptions options = Order("pnezd");
    EXPECT_EQ(FindFault("\xFF,1,2,3\n", options),
              "the name \"\\xff\" is not a text of code page 65001 (UTF-8); choose another with "
              "code-page");
    options.optionPrefix = "--";
    EXPECT_EQ(FindFault("\xFF,1,2,3\n", options),
              "the name \"\\xff\" is not a text of code page 65001 (UTF-8); choose another with "
              "--code-page");
    EXPECT_EQ(
        FindFault("P,E,N,Z\n1,2,3,4\n", options),
        "text:1: the heading of column 2 is \"E\", but the order given takes name 1, northing "
        "2, easting 3, height 4, description from 5; --header 1 reads the file with that order");
    options.order.reset();
    options.recognise = true;
    EXPECT_EQ(FindFault("P,E,N\n1,2,3\n", options),
              "text:1: no heading is recognised as the height; name it with --columns height=... "
              "(height=- for none)");
    EXPECT_EQ(FindFault("P,E,N,East\n1,2,3,4\n", options),
              "text:1: columns 2 \"E\" and 4 \"East\" could both be the easting; choose one by its "
              "number: --columns easting=2");
}

TEST_F(FieldTextReaderTest, ADryRunReportsAndRecordsNothing) {
    ImportOptions options;
    options.dryRun = true;
    options.group = u"Day";
    options.layer = u"Road";
    const ImportReport report = Import("A,10,20,5,wall\nA,1,2,3\n", options);
    EXPECT_EQ(report.Get(Fate::Recorded), 1U);
    EXPECT_EQ(report.Get(Fate::Refused), 1U);
    EXPECT_EQ(report.GetExtents().maxEasting, 20.0);
    EXPECT_EQ(db.GetNumCoordRecs(), 0);
    EXPECT_EQ(db.GetNumLayers(), 1);
    EXPECT_EQ(db.GetGroupID(u"Day"), 0U);
}

TEST_F(FieldTextReaderTest, LatitudesAndLongitudesAreNotRecorded) {
    const std::string degrees =
        "A,35.6812362,139.7671248,3\nB,35.7,139.7712345,3\nC,35.681,139.7,4\n";
    EXPECT_THROW(static_cast<void>(Import("A,35.6812362,139.7671248,3\n")), OptionError);
    EXPECT_THROW(static_cast<void>(Import("A,139.7671248,35.6812362,3\n")), OptionError);
    EXPECT_EQ(db.GetNumCoordRecs(), 0);
    EXPECT_EQ(Import(degrees).Get(Fate::Recorded), 3U) << "most have fewer decimals";
    EXPECT_EQ(Import("D,35.681,139.767,3\n").Get(Fate::Recorded), 1U) << "millimetres of a grid";
    EXPECT_EQ(Import("E,35.6812362,139.7671248,3\nF,1000.12345,139.1,3\n").Get(Fate::Recorded), 2U);
    StringSource source("G,35.6812362,139.7671248,3\n");
    FieldTextReadOptions options = Order("pnez");
    options.plane = true;
    EXPECT_EQ(FieldTextReader(source, options).Import(db, {}).Get(Fate::Recorded), 1U);
}

TEST_F(FieldTextReaderTest, HeadingsOfDegreesAreRefusedUnlessTheFilesSystemIsNamed) {
    FieldTextReadOptions header;
    header.recognise = true;
    EXPECT_NE(FindFault("Name,Lat,Lon,H\nA,35,139,3\n", header).find("latitudes and longitudes"),
              std::string::npos);
    EXPECT_NE(FindFault("Name,Latitude,Longitude,H\nA,35,139,3\n", Order("pnez"))
                  .find("latitudes and longitudes"),
              std::string::npos);
    EXPECT_EQ(FindFault("Name,Lat,Lon,N,E,Z\nA,35,139,1,2,3\n", header), "")
        << "the northings and eastings are there, too";
    header.system = CoordinateSystem::Find("EPSG:4326");
    EXPECT_EQ(FindFault("Name,Longitude,Latitude,H\nA,139,35,3\n", header), "");
    FieldTextReadOptions swapped = Order("penz");
    swapped.system = header.system;
    EXPECT_NE(
        FindFault("Name,Latitude,Longitude,H\nA,35,139,3\n", swapped).find("heading of column 3"),
        std::string::npos);
}

TEST_F(FieldTextReaderTest, AFileInDegreesIsProjectedIntoTheSystemOfTheJob) {
    ASSERT_EQ(db.SetJCoordDivision(9), 1);
    StringSource source("Name,Longitude,Latitude,H\nO,139.8333333333,36,50\n");
    FieldTextReadOptions options;
    options.recognise = true;
    options.system = CoordinateSystem::Find("EPSG:6668");
    const ImportReport report = FieldTextReader(source, options).Import(db, {});
    EXPECT_EQ(report.Get(Fate::Recorded), 1U);
    EXPECT_EQ(report.accuracy, 0.0);
    CqCoordRec point;
    ASSERT_EQ(db.GetCoordRec(db.GetCoordRecHandleByPtName(u"O"), point), 1);
    double coords[3];
    point.GetPoint(coords);
    EXPECT_NEAR(coords[0], 0.0, 1e-4);
    EXPECT_NEAR(coords[1], 0.0, 1e-4);
    EXPECT_EQ(coords[2], 50.0);
    EXPECT_NEAR(report.GetFirst()[0].easting, 0.0, 1e-4);
}

}  // namespace
}  // namespace cqsurvey::exchange
