#include "cqsurvey/exchange/DxfReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "exchange/dxf/read/DrawnDxf.h"

namespace cqsurvey::exchange {
namespace {

TEST(DxfReaderTest, CountsThatLieAreAnErrorWithTheLine) {
    EXPECT_EQ(
        FaultOf(DxfText{.entities = "0 LWPOLYLINE|8 0|90 1000000|10 0|20 0|10 1|20 1"}.Make()),
        "text:9: the polyline says it has 1000000 vertices, and has 2");
    EXPECT_EQ(FaultOf(DxfText{.entities = "0 SPLINE|8 0|71 3|72 99|40 0"}.Make()),
              "text:11: the spline says it has 99 knots, and has 1");
}

TEST(DxfReaderTest, AFileThatIsCutAnywhereIsAnErrorAndTheJobAsItWas) {
    const std::string whole =
        DxfText{.header = "9 $ACADVER|1 AC1015",
                .tables = "0 TABLE|2 LAYER|0 LAYER|2 Road|70 0|62 3|0 ENDTAB",
                .blocks = kSquare,
                .entities = "0 LINE|8 Road|10 1|20 2|11 3|21 4|0 INSERT|8 Road|2 S|10 0|20 0"}
            .Make();
    EXPECT_EQ(FaultOf(whole), "none");
    for (std::size_t length = 0; length + 4 < whole.size(); length += 3) {
        EXPECT_NE(FaultOf(whole.substr(0, length)), "none") << length;
    }
}

TEST(DxfReaderTest, WhatIsNoDxfFileIsAnError) {
    EXPECT_EQ(FaultOf(""), "text:0: the file is empty");
    EXPECT_EQ(FaultOf("P1,100,200\n"), "text:1: \"P1,100,200\" is no group code of a DXF file");
    EXPECT_EQ(FaultOf("0\nLINE\n"),
              "text:1: this is no DXF file: it does not begin with a section");
    EXPECT_EQ(FaultOf(DxfText{.entities = "0 LINE|8 0|10 abc"}.Make()),
              "text:9: \"abc\" of group 10 is not a number");
}

TEST(DxfReaderTest, LayersHaveTheFilesColoursLinesAndVisibility) {
    DrawnJob job;
    static_cast<void>(job.Read(
        DxfText{.tables = "0 TABLE|2 LTYPE|0 LTYPE|2 MY|73 4|40 3|49 2|49 -0.5|49 0|49 -0.5|"
                          "0 ENDTAB|0 TABLE|2 LAYER|0 LAYER|2 0|70 0|62 5|6 CONTINUOUS|"
                          "0 LAYER|2 Off|70 0|62 -3|6 DASHED|0 LAYER|2 Frozen|70 1|62 4|6 MY|"
                          "0 LAYER|2 True|70 0|62 1|420 255|0 ENDTAB",
                .entities = "0 LINE|8 off|10 0|20 0|11 1|21 1"}
            .Make()));
    EXPECT_EQ(job.db.GetLayerColor(u"0"), 5);
    EXPECT_EQ(job.db.GetLayerColor(u"Off"), -3);
    EXPECT_EQ(job.db.GetLayerLine(u"Off"), 1);
    EXPECT_EQ(job.db.GetLayerColor(u"Frozen"), -4);
    EXPECT_EQ(job.db.GetLayerLine(u"Frozen"), 3);
    EXPECT_EQ(job.db.GetLayerColor(u"True"), 5);
    EXPECT_EQ(job.db.GetNumLayers(), 4);
}

TEST(DxfReaderTest, ALayerOfAJobThatHasADrawingKeepsItsColour) {
    DrawnJob job;
    job.db.AddLayer(u"Road", 2, 0);
    static_cast<void>(job.Draw("0 LINE|8 Road|10 0|20 0|11 1|21 1"));
    const DrawingReport report = job.Read(DxfText{.tables = "0 LAYER|2 Road|70 0|62 5"}.Make());
    EXPECT_EQ(job.db.GetLayerColor(u"Road"), 2);
    EXPECT_EQ(report.GetNotes().back(),
              "the job's layer \"Road\" keeps its colour, line and visibility, which differ from "
              "the file's");
}

TEST(DxfReaderTest, PaperSpaceAndUnknownKindsAreLeftOutAndCounted) {
    DrawnJob job;
    const DrawingReport report = job.Draw(
        "0 LINE|67 1|8 0|10 0|20 0|11 1|21 1|0 3DSOLID|8 Body|1 abc|0 WIPEOUT|8 0|310 00FF");
    EXPECT_TRUE(job.List().empty());
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 3U);
    EXPECT_EQ(report.GetSum(), 3U);
    EXPECT_EQ(report.GetRows().at(0).kind, "3DSOLID");
    EXPECT_EQ(report.GetRows().at(0).layer, "Body");
    EXPECT_EQ(report.GetRows().at(1).what, "it is in paper space");
}

TEST(DxfReaderTest, LengthsAreScaledWhenBothUnitsAreKnown) {
    const std::string text = DxfText{.header = "9 $ACADVER|1 AC1015|9 $INSUNITS|70 4",
                                     .entities = "0 CIRCLE|8 0|10 1000|20 2000|30 500|40 250"}
                                 .Make();
    DxfReadOptions options;
    DrawnJob same;
    EXPECT_EQ(same.Read(text, options).scale, 1.0);
    EXPECT_EQ(same.List(), List{"circle 1000,2000,500 250"});
    options.jobUnit = LengthUnit::Metre;
    DrawnJob scaled;
    EXPECT_EQ(scaled.Read(text, options).scale, 0.001);
    EXPECT_EQ(scaled.List(), List{"circle 1,2,0.5 0.25"});
    options.fileUnit = LengthUnit::Metre;
    DrawnJob told;
    EXPECT_EQ(told.Read(text, options).scale, 1.0);
    EXPECT_EQ(told.List(), List{"circle 1000,2000,500 250"});
}

TEST(DxfReaderTest, TheVersionDecidesOnTheEncodingBeforeTheCodePage) {
    const auto layerOf = [](const char* version, const char* page, const std::string& bytes) {
        DrawnJob job;
        const DrawingReport report = job.Read(
            DxfText{.header = std::string("9 $ACADVER|1 ") + version + "|9 $DWGCODEPAGE|3 " + page,
                    .entities = "0 CIRCLE|8 " + bytes + "|10 0|20 0|40 1"}
                .Make());
        return report.GetRows().at(0).layer;
    };
    EXPECT_EQ(layerOf("AC1024", "ANSI_1251", "План"), "План");
    EXPECT_EQ(layerOf("AC1015", "ANSI_1251", "\xCF\xEB\xE0\xED"), "План");
    EXPECT_EQ(layerOf("AC1009", "ANSI_1252", "\\U+039B\xC4"), "ΛÄ");
}

TEST(DxfReaderTest, TheReportAccountsForEveryEntity) {
    DrawnJob job;
    const DrawingReport report = job.Read(
        DxfText{.blocks = kSquare,
                .entities = "0 LINE|8 A|10 0|20 0|11 1|21 1|0 LINE|8 A|10 0|20 0|11 1|21 1|"
                            "0 INSERT|8 A|2 S|10 0|20 0|0 INSERT|8 A|2 gone|10 0|20 0|0 RAY|8 A"}
            .Make());
    EXPECT_EQ(report.GetSum(), 5U);
    EXPECT_EQ(report.GetInBlocks(), 2U);
    EXPECT_EQ(report.Get(DrawingFate::Taken), 2U);
    EXPECT_EQ(report.Get(DrawingFate::Converted), 1U);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 2U);
    std::vector<std::string> rows;
    for (const DrawingRow& row : report.GetRows()) {
        rows.push_back(std::to_string(row.count) + " " + row.kind + (row.inBlock ? "*" : "") +
                       ": " + row.what);
    }
    EXPECT_EQ(rows, (List{"1 INSERT: the entities of its block", "1 INSERT: there is no such block",
                          "2 LINE: polyline", "1 RAY: a job has nothing like it",
                          "1 LINE*: polyline", "1 LWPOLYLINE*: polyline"}));
}

TEST(DxfReaderTest, TheCurrentLayerAndColourStayAsTheyWere) {
    DrawnJob job;
    job.db.AddLayer(u"Mine", 2, 0);
    job.db.SetCurrentLayer(u"Mine");
    job.db.SetCurrentColor(3);
    static_cast<void>(job.Draw("0 LINE|8 A|62 5|10 0|20 0|11 1|21 1"));
    EXPECT_EQ(job.db.GetCurrentLayer(), u"Mine");
    EXPECT_EQ(job.db.GetCurrentColor(), 3);
}

TEST(DxfReaderTest, AnInterruptedImportLeavesTheJobAsItWas) {
    DxfReadOptions options;
    options.progress = [](std::uint64_t entities, std::uint64_t, std::optional<std::uint64_t>) {
        if (entities == 2) {
            throw std::runtime_error("stop");
        }
    };
    DrawnJob job;
    EXPECT_THROW(static_cast<void>(job.Draw("0 LINE|8 A|10 0|20 0|11 1|21 1|0 LINE|8 A|10 0|20 0|"
                                            "11 1|21 1",
                                            options)),
                 std::runtime_error);
    EXPECT_TRUE(job.List().empty());
    EXPECT_EQ(job.db.GetNumLayers(), 1);
}

TEST(DxfReaderTest, AToleranceThatIsNotPositiveIsRefused) {
    StringSource source("");
    for (const double tolerance : {0.0, -1.0, std::nan(""), HUGE_VAL}) {
        DxfReadOptions options;
        options.tolerance = tolerance;
        EXPECT_THROW(DxfReader(source, options), OptionError);
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
