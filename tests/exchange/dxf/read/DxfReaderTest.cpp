#include "cqsurvey/exchange/DxfReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/dxf/DxfText.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

/// What the job's drawing is after reading these entities.
List Drawn(const std::string& entities, const DxfReadOptions& options = {}) {
    DrawnJob job;
    static_cast<void>(job.Draw(entities, options));
    return job.List();
}

List DrawnWith(const std::string& blocks, const std::string& entities) {
    DrawnJob job;
    static_cast<void>(job.Read(DxfText{.blocks = blocks, .entities = entities}.Make()));
    return job.List();
}

std::string FaultOf(const std::string& text) {
    DrawnJob job;
    try {
        static_cast<void>(job.Read(text));
    } catch (const ExchangeError& error) {
        EXPECT_TRUE(job.List().empty());
        EXPECT_EQ(job.db.GetNumLayers(), 1);
        return error.what();
    }
    return "none";
}

/// The only row of the report.
DrawingRow RowOf(const std::string& entities, const DxfReadOptions& options = {}) {
    DrawnJob job;
    const DrawingReport report = job.Draw(entities, options);
    EXPECT_EQ(report.GetRows().size(), 1U);
    return report.GetRows().at(0);
}

TEST(DxfReaderTest, ALineKeepsItsHeights) {
    EXPECT_EQ(Drawn("0 LINE|8 0|10 1|20 2|30 3|11 4|21 5|31 6"), List{"line 1,2,3 4,5,6"});
}

TEST(DxfReaderTest, ALightPolylineKeepsBulgesAndElevationAndIsClosedByItsFirstVertex) {
    EXPECT_EQ(Drawn("0 LWPOLYLINE|8 0|90 3|70 1|38 7.5|10 0|20 0|42 0.5|10 4|20 0|10 4|20 4|42 -1"),
              List{"line 0,0,7.5(0.5) 4,0,7.5 4,4,7.5(-1) 0,0,7.5"});
}

TEST(DxfReaderTest, AnOldPolylineIsReadWithItsVertices) {
    const std::string vertices =
        "|0 VERTEX|8 0|10 1|20 2|30 9|42 0.25|0 VERTEX|8 0|10 3|20 4|30 9|0 SEQEND|8 0";
    EXPECT_EQ(Drawn("0 POLYLINE|8 0|66 1|10 0|20 0|30 9|70 0" + vertices),
              List{"line 1,2,9(0.25) 3,4,9"});
    EXPECT_EQ(Drawn("0 POLYLINE|8 0|66 1|70 8|0 VERTEX|10 1|20 2|30 3|70 32|0 VERTEX|10 4|20 5|"
                    "30 6|70 32|0 SEQEND"),
              List{"line 1,2,3 4,5,6"});
}

TEST(DxfReaderTest, FrameVerticesOfASplinedPolylineAreNotOnIt) {
    EXPECT_EQ(Drawn("0 POLYLINE|66 1|70 4|0 VERTEX|10 9|20 9|70 16|0 VERTEX|10 1|20 2|70 8|"
                    "0 VERTEX|10 3|20 4|70 8|0 VERTEX|10 8|20 8|70 16|0 SEQEND"),
              List{"line 1,2,0 3,4,0"});
}

TEST(DxfReaderTest, WidthsAreLostAndSaidToBe) {
    const DrawingRow row = RowOf("0 LWPOLYLINE|8 A|90 2|43 0.5|10 0|20 0|10 1|20 0");
    EXPECT_EQ(row.fate, DrawingFate::Converted);
    EXPECT_EQ(row.what, "polyline, without its width");
    EXPECT_EQ(row.layer, "A");
    EXPECT_EQ(row.kind, "LWPOLYLINE");
    EXPECT_EQ(row.place, 5U);
}

TEST(DxfReaderTest, AnArcIsTrueAndTurnsCounterClockwise) {
    EXPECT_EQ(Drawn("0 ARC|10 0|20 0|30 2|40 10|50 0|51 90"),
              List{"line 10,0,2(0.414214) 6.123234e-16,10,2"});
    EXPECT_EQ(Drawn("0 ARC|10 0|20 0|40 1|50 10|51 370"), List{"circle 0,0,0 1"});
    EXPECT_EQ(
        Drawn("0 ARC|10 0|20 0|40 1|50 0|51 300").at(0).find("(0.767327)") != std::string::npos,
        true);
}

TEST(DxfReaderTest, AnExtrusionDownwardMirrorsAnArc) {
    EXPECT_EQ(Drawn("0 LWPOLYLINE|90 2|38 5|10 1|20 2|42 0.5|10 3|20 2|210 0|220 0|230 -1"),
              List{"line -1,2,-5(-0.5) -3,2,-5"});
    EXPECT_EQ(Drawn("0 CIRCLE|10 1|20 2|30 3|40 4|230 -1"), List{"circle -1,2,-3 4"});
}

TEST(DxfReaderTest, ATiltedCircleIsFittedWithinTheTolerance) {
    DxfReadOptions options;
    options.tolerance = 0.01;
    DrawnJob job;
    const DrawingReport report =
        job.Draw("0 CIRCLE|10 0|20 0|40 10|210 0|220 0.6|230 0.8", options);
    EXPECT_EQ(report.Get(DrawingFate::Converted), 1U);
    EXPECT_GT(report.GetDeviation(), 0.0);
    EXPECT_LE(report.GetDeviation(), 0.01);
    CVector low;
    CVector high;
    ASSERT_NE(job.db.GetEntityBound(low, high), 0);
    EXPECT_NEAR(high.GetX(), 10.0, 0.011);
    EXPECT_NEAR(high.GetY(), 8.0, 0.011);
}

TEST(DxfReaderTest, EllipsesAndSplinesAreFittedWithinTheTolerance) {
    for (const char* entity :
         {"0 ELLIPSE|10 0|20 0|11 10|21 0|40 0.4|41 0|42 6.283185307179586",
          "0 SPLINE|71 3|72 8|73 4|74 0|40 0|40 0|40 0|40 0|40 1|40 1|40 1|40 1|10 0|20 0|10 0|"
          "20 10|10 10|20 -10|10 10|20 0"}) {
        DrawnJob job;
        const DrawingReport report = job.Draw(entity);
        EXPECT_EQ(report.Get(DrawingFate::Converted), 1U) << entity;
        EXPECT_EQ(report.polylines, 1U);
        EXPECT_GT(report.GetDeviation(), 0.0);
        EXPECT_LE(report.GetDeviation(), 0.001);
    }
}

TEST(DxfReaderTest, TextsKeepTheirAlignmentAndStandAtTheSecondPointWhenAligned) {
    EXPECT_EQ(Drawn("0 TEXT|10 1|20 2|30 3|40 2.5|1 Road|50 30|72 0|73 0"),
              List{"text Road 1,2,3 h2.5 r30 a00"});
    EXPECT_EQ(Drawn("0 TEXT|10 1|20 2|40 2|1 x|72 2|73 3|11 7|21 8|31 9"),
              List{"text x 7,8,9 h2 r0 a23"});
    EXPECT_EQ(Drawn("0 TEXT|10 1|20 2|40 2|1 x|72 4|11 7|21 8"), List{"text x 7,8,0 h2 r0 a12"});
}

TEST(DxfReaderTest, RotationAndHeightOfATextAreExact) {
    for (const double rotation : {33.3, -10.1, 370.0, 0.1}) {
        DrawnJob job;
        static_cast<void>(job.Draw("0 TEXT|10 0|20 0|40 0.1|1 x|50 " + std::to_string(rotation)));
        for (const CqCadEntityPtr& entity : Entities(job.db)) {
            EXPECT_EQ(entity->GetRot(), rotation);
            EXPECT_EQ(entity->GetHeight(), 0.1);
        }
    }
}

TEST(DxfReaderTest, AnMTextIsPlainTextInLines) {
    EXPECT_EQ(Drawn("0 MTEXT|10 1|20 2|40 2|71 5|3 {\\fArial;one\\P|1 two}|11 0|21 1|31 0"),
              List{"text one\ntwo 1,2,0 h2 r90 a12"});
}

TEST(DxfReaderTest, ATextInAMirroredBlockIsNotMirroredAndSaidNotToBe) {
    const std::string block = "0 BLOCK|2 B|10 0|20 0|0 TEXT|8 0|10 1|20 0|40 2|1 x|0 ENDBLK";
    DrawnJob job;
    const DrawingReport report =
        job.Read(DxfText{.blocks = block, .entities = "0 INSERT|2 B|10 0|20 0|41 -1"}.Make());
    EXPECT_EQ(job.List(), List{"text x -1,0,0 h2 r180 a00"});
    EXPECT_EQ(report.GetRows().back().what, "text, not mirrored");
}

const char* const kSquare =
    "0 BLOCK|2 S|10 1|20 1|30 0|0 LINE|8 0|62 0|10 1|20 1|11 3|21 1|"
    "0 LWPOLYLINE|8 Fix|90 2|10 1|20 1|42 1|10 1|20 3|0 ENDBLK";

TEST(DxfReaderTest, ABlockIsScaledTurnedAndMovedByItsBasePoint) {
    EXPECT_EQ(DrawnWith(kSquare, "0 INSERT|2 S|10 100|20 200|30 5|41 2|42 2|43 2|50 90"),
              (List{"line 100,200,5 100,204,5", "line 100,200,5(1) 96,200,5"}));
}

TEST(DxfReaderTest, AMirroredBlockTurnsItsArcsTheOtherWay) {
    EXPECT_EQ(DrawnWith(kSquare, "0 INSERT|2 S|10 0|20 0|41 -1"),
              (List{"line 0,0,0 -2,0,0", "line 0,0,0(-1) 0,2,0"}));
}

TEST(DxfReaderTest, AnArrayInsertsItsBlockInRowsAndColumns) {
    EXPECT_EQ(DrawnWith("0 BLOCK|2 L|10 0|20 0|0 LINE|8 0|10 0|20 0|11 1|21 0|0 ENDBLK",
                        "0 INSERT|2 L|10 0|20 0|70 2|71 2|44 10|45 20"),
              (List{"line 0,0,0 1,0,0", "line 10,0,0 11,0,0", "line 0,20,0 1,20,0",
                    "line 10,20,0 11,20,0"}));
}

TEST(DxfReaderTest, BlocksNestAndTheirEntitiesTakeLayerAndColourOfTheInsert) {
    DrawnJob job;
    const std::string blocks =
        std::string(kSquare) + "|0 BLOCK|2 T|10 0|20 0|0 INSERT|8 0|62 0|2 S|10 5|20 0|0 ENDBLK";
    static_cast<void>(job.Read(
        DxfText{.blocks = blocks, .entities = "0 INSERT|8 Tree|62 3|2 T|10 0|20 0"}.Make()));
    std::vector<std::string> styles;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        if (entity->GetType() == EntPline) {
            styles.push_back(ToUtf8(entity->GetLayer()) + std::to_string(entity->GetColor()));
        }
    }
    EXPECT_EQ(styles, (List{"Tree3", "Fix256"}));
    EXPECT_EQ(job.List().at(0), "line 5,0,0 7,0,0");
}

TEST(DxfReaderTest, AttributesOfABlockAreTextsUnlessInvisible) {
    EXPECT_EQ(DrawnWith("0 BLOCK|2 A|10 0|20 0|0 ENDBLK",
                        "0 INSERT|66 1|2 A|10 0|20 0|0 ATTRIB|8 0|10 1|20 2|40 1|1 seen|2 T|70 0|"
                        "0 ATTRIB|8 0|10 1|20 2|40 1|1 hidden|2 U|70 1|0 SEQEND|8 0"),
              List{"text seen 1,2,0 h1 r0 a00"});
}

TEST(DxfReaderTest, ABlockThatContainsItselfIsAnErrorWithTheLine) {
    const std::string blocks =
        "0 BLOCK|2 A|10 0|20 0|0 INSERT|8 0|2 B|10 0|20 0|0 ENDBLK|"
        "0 BLOCK|2 B|10 0|20 0|0 INSERT|8 0|2 a|10 0|20 0|0 ENDBLK";
    EXPECT_EQ(FaultOf(DxfText{.blocks = blocks, .entities = "0 INSERT|2 A|10 0|20 0"}.Make()),
              "text:33: the block \"A\" contains itself, or stands too deep in other blocks");
}

TEST(DxfReaderTest, BlocksThatStandForTooManyEntitiesAreAnError) {
    std::string blocks = "0 BLOCK|2 B0|10 0|20 0|0 ENDBLK";
    for (int i = 1; i <= 12; ++i) {
        blocks += "|0 BLOCK|2 B" + std::to_string(i) + "|10 0|20 0|0 INSERT|8 0|2 B" +
                  std::to_string(i - 1) + "|70 100|71 100|0 ENDBLK";
    }
    DxfReadOptions options;
    options.mostDrawn = 1000;
    DrawnJob job;
    EXPECT_THROW(
        static_cast<void>(job.Read(
            DxfText{.blocks = blocks, .entities = "0 INSERT|2 B12|10 0|20 0"}.Make(), options)),
        ExchangeError);
}

TEST(DxfReaderTest, AnArrayOfAnEmptyBlockEndsToo) {
    DxfReadOptions options;
    options.mostDrawn = 1000;
    DrawnJob job;
    EXPECT_THROW(
        static_cast<void>(job.Read(DxfText{.blocks = "0 BLOCK|2 B|10 0|20 0|0 ENDBLK",
                                           .entities = "0 INSERT|2 B|70 2000000000|71 2000000000"}
                                       .Make(),
                                   options)),
        ExchangeError);
}

TEST(DxfReaderTest, ADimensionIsDrawnByItsBlockWithoutItsPoints) {
    EXPECT_EQ(DrawnWith("0 BLOCK|2 *D1|10 0|20 0|0 LINE|8 0|10 1|20 1|11 2|21 1|0 POINT|8 0|10 1|"
                        "20 1|0 ENDBLK",
                        "0 DIMENSION|8 0|2 *D1|10 50|20 50"),
              List{"line 1,1,0 2,1,0"});
}

TEST(DxfReaderTest, FillsAreTakenAsOutlinesWhenAskedFor) {
    const std::string solid = "0 SOLID|10 0|20 0|11 4|21 0|12 0|22 3|13 4|23 3";
    EXPECT_TRUE(Drawn(solid).empty());
    EXPECT_EQ(RowOf(solid).what, "fills were not asked for");
    DxfReadOptions options;
    options.fills = true;
    EXPECT_EQ(Drawn(solid, options), List{"line 0,0,0 4,0,0 4,3,0 0,3,0 0,0,0"});
    const std::string hatch =
        "0 HATCH|10 0|20 0|30 2|2 SOLID|70 1|71 0|91 2|92 3|72 1|73 1|93 2|10 0|20 0|42 1|10 4|"
        "20 0|42 1|97 0|92 1|93 3|72 1|10 0|20 0|11 1|21 0|72 1|10 1|20 0|11 1|21 1|72 2|10 0.5|"
        "20 0.5|40 0.7071067811865476|50 45|51 225|73 1|97 0|75 0|76 1";
    EXPECT_EQ(Drawn(hatch, options),
              (List{"line 0,0,2(1) 4,0,2(1) 0,0,2", "line 0,0,2 1,0,2 1,1,2(1) 0,0,2"}));
}

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

TEST(DxfReaderTest, NumbersThatAreNotFiniteLeaveTheirEntityOut) {
    for (const char* number : {"nan", "inf", "-inf", "1e999", "1e300"}) {
        const DrawingRow row = RowOf(std::string("0 LINE|8 0|10 ") + number + "|20 0|11 1|21 1");
        EXPECT_EQ(row.what, "its numbers are not finite, or too large") << number;
    }
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

TEST(DxfReaderTest, EntitiesHaveTheirColourLineAndVisibility) {
    DrawnJob job;
    static_cast<void>(
        job.Draw("0 CIRCLE|8 0|10 0|20 0|40 1|62 30|6 DOT|0 CIRCLE|8 0|10 0|20 0|"
                 "40 1|62 2|60 1|0 CIRCLE|8 0|10 0|20 0|40 1|62 9|420 16711680|"
                 "0 CIRCLE|8 0|10 0|20 0|40 1|6 ByLayer"));
    std::vector<int> colors;
    std::vector<int> lines;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        colors.push_back(entity->GetColor());
        lines.push_back(entity->GetLine());
    }
    EXPECT_EQ(colors, (std::vector<int>{30, -2, 1, 256}));
    EXPECT_EQ(lines, (std::vector<int>{2, 256, 256, 256}));
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

TEST(DxfReaderTest, EveryPointBecomesASurveyPointUnlessTheRulesSayOtherwise) {
    const std::string points = "0 POINT|8 A|10 1|20 2|30 3|0 POINT|8 B|10 4|20 5|30 6";
    EXPECT_EQ(Drawn(points), (List{"point  1,2,3", "point  4,5,6"}));
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Layer, "b", ""}};
    EXPECT_EQ(Drawn(points, options), List{"point  4,5,6"});
    options.points.emplace();
    EXPECT_TRUE(Drawn(points, options).empty());
}

TEST(DxfReaderTest, BlocksBecomeSurveyPointsNamedByAnAttribute) {
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Block, "spot", "nr"}};
    DrawnJob job;
    static_cast<void>(
        job.Draw("0 INSERT|8 0|66 1|2 SPOT|10 1|20 2|30 0|0 ATTRIB|2 NR|1 K7|"
                 "0 ATTRIB|2 HEIGHT|1 12.5|0 ATTRIB|2 CODE|1 9|0 ATTRIB|"
                 "2 DESCRIPTION|1 pipe|0 SEQEND",
                 options));
    EXPECT_EQ(job.List(), List{"point K7 1,2,12.5"});
    CqCoordRec record;
    ASSERT_NE(job.db.GetCoordRec(job.db.GetCoordRecHandleByPtName(u"K7"), record), 0);
    EXPECT_EQ(record.GetCode(), 9);
    CString description;
    job.db.GetCoordDescription(job.db.GetCoordRecHandleByPtName(u"K7"), description);
    EXPECT_EQ(description, u"pipe");
}

TEST(DxfReaderTest, ANameThatTheJobHasIsRefusedOrNumbered) {
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Block, "S", "N"}};
    const std::string insert = "0 INSERT|66 1|2 S|10 1|20 2|0 ATTRIB|2 N|1 P|0 SEQEND";
    const std::string two = insert + "|" + insert;
    EXPECT_EQ(Drawn(two, options), List{"point P 1,2,0"});
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(Drawn(two, options), (List{"point P 1,2,0", "point P_2 1,2,0"}));
}

TEST(DxfReaderTest, PointsAreNamedAfterTheNearestTextsEachTextOnce) {
    DxfReadOptions options;
    options.namesFromTexts = true;
    const std::string text = "|0 TEXT|8 Nr|40 1|10 ";
    EXPECT_EQ(Drawn("0 POINT|8 0|10 0|20 0|0 POINT|8 0|10 2|20 0|0 POINT|8 0|10 90|20 0" + text +
                        "0.4|20 0|1 near" + text + "3|20 0|1 next",
                    options),
              (List{"point near 0,0,0", "point next 2,0,0", "point  90,0,0",
                    "text near 0.4,0,0 h1 r0 a00", "text next 3,0,0 h1 r0 a00"}));
    options.nameLayer = "Other";
    EXPECT_EQ(Drawn("0 POINT|8 0|10 0|20 0" + text + "0.4|20 0|1 near", options).at(0),
              "point  0,0,0");
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
