#include "cqsurvey/exchange/DxfReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/dxf/read/DrawnDxf.h"

namespace cqsurvey::exchange {
namespace {

TEST(DxfEntitiesTest, ALineKeepsItsHeights) {
    EXPECT_EQ(Drawn("0 LINE|8 0|10 1|20 2|30 3|11 4|21 5|31 6"), List{"line 1,2,3 4,5,6"});
}

TEST(DxfEntitiesTest, ALightPolylineKeepsBulgesAndElevationAndIsClosedByItsFirstVertex) {
    EXPECT_EQ(Drawn("0 LWPOLYLINE|8 0|90 3|70 1|38 7.5|10 0|20 0|42 0.5|10 4|20 0|10 4|20 4|42 -1"),
              List{"line 0,0,7.5(0.5) 4,0,7.5 4,4,7.5(-1) 0,0,7.5"});
}

TEST(DxfEntitiesTest, AnOldPolylineIsReadWithItsVertices) {
    const std::string vertices =
        "|0 VERTEX|8 0|10 1|20 2|30 9|42 0.25|0 VERTEX|8 0|10 3|20 4|30 9|0 SEQEND|8 0";
    EXPECT_EQ(Drawn("0 POLYLINE|8 0|66 1|10 0|20 0|30 9|70 0" + vertices),
              List{"line 1,2,9(0.25) 3,4,9"});
    EXPECT_EQ(Drawn("0 POLYLINE|8 0|66 1|70 8|0 VERTEX|10 1|20 2|30 3|70 32|0 VERTEX|10 4|20 5|"
                    "30 6|70 32|0 SEQEND"),
              List{"line 1,2,3 4,5,6"});
}

TEST(DxfEntitiesTest, FrameVerticesOfASplinedPolylineAreNotOnIt) {
    EXPECT_EQ(Drawn("0 POLYLINE|66 1|70 4|0 VERTEX|10 9|20 9|70 16|0 VERTEX|10 1|20 2|70 8|"
                    "0 VERTEX|10 3|20 4|70 8|0 VERTEX|10 8|20 8|70 16|0 SEQEND"),
              List{"line 1,2,0 3,4,0"});
}

TEST(DxfEntitiesTest, WidthsAreLostAndSaidToBe) {
    const DrawingRow row = RowOf("0 LWPOLYLINE|8 A|90 2|43 0.5|10 0|20 0|10 1|20 0");
    EXPECT_EQ(row.fate, DrawingFate::Converted);
    EXPECT_EQ(row.what, "polyline, without its width");
    EXPECT_EQ(row.layer, "A");
    EXPECT_EQ(row.kind, "LWPOLYLINE");
    EXPECT_EQ(row.place, 5U);
}

TEST(DxfEntitiesTest, AnArcIsTrueAndTurnsCounterClockwise) {
    EXPECT_EQ(Drawn("0 ARC|10 0|20 0|30 2|40 10|50 0|51 90"),
              List{"line 10,0,2(0.414214) 6.123234e-16,10,2"});
    EXPECT_EQ(Drawn("0 ARC|10 0|20 0|40 1|50 10|51 370"), List{"circle 0,0,0 1"});
    EXPECT_EQ(
        Drawn("0 ARC|10 0|20 0|40 1|50 0|51 300").at(0).find("(0.767327)") != std::string::npos,
        true);
}

TEST(DxfEntitiesTest, AnExtrusionDownwardMirrorsAnArc) {
    EXPECT_EQ(Drawn("0 LWPOLYLINE|90 2|38 5|10 1|20 2|42 0.5|10 3|20 2|210 0|220 0|230 -1"),
              List{"line -1,2,-5(-0.5) -3,2,-5"});
    EXPECT_EQ(Drawn("0 CIRCLE|10 1|20 2|30 3|40 4|230 -1"), List{"circle -1,2,-3 4"});
}

TEST(DxfEntitiesTest, ATiltedCircleIsFittedWithinTheTolerance) {
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

TEST(DxfEntitiesTest, EllipsesAndSplinesAreFittedWithinTheTolerance) {
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

TEST(DxfEntitiesTest, TextsKeepTheirAlignmentAndStandAtTheSecondPointWhenAligned) {
    EXPECT_EQ(Drawn("0 TEXT|10 1|20 2|30 3|40 2.5|1 Road|50 30|72 0|73 0"),
              List{"text Road 1,2,3 h2.5 r30 a00"});
    EXPECT_EQ(Drawn("0 TEXT|10 1|20 2|40 2|1 x|72 2|73 3|11 7|21 8|31 9"),
              List{"text x 7,8,9 h2 r0 a23"});
    EXPECT_EQ(Drawn("0 TEXT|10 1|20 2|40 2|1 x|72 4|11 7|21 8"), List{"text x 7,8,0 h2 r0 a12"});
}

TEST(DxfEntitiesTest, RotationAndHeightOfATextAreExact) {
    for (const double rotation : {33.3, -10.1, 370.0, 0.1}) {
        DrawnJob job;
        static_cast<void>(job.Draw("0 TEXT|10 0|20 0|40 0.1|1 x|50 " + std::to_string(rotation)));
        for (const CqCadEntityPtr& entity : Entities(job.db)) {
            EXPECT_EQ(entity->GetRot(), rotation);
            EXPECT_EQ(entity->GetHeight(), 0.1);
        }
    }
}

TEST(DxfEntitiesTest, AnMTextIsPlainTextInLines) {
    EXPECT_EQ(Drawn("0 MTEXT|10 1|20 2|40 2|71 5|3 {\\fArial;one\\P|1 two}|11 0|21 1|31 0"),
              List{"text one\ntwo 1,2,0 h2 r90 a12"});
}

TEST(DxfEntitiesTest, FillsAreTakenAsOutlinesWhenAskedFor) {
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

TEST(DxfEntitiesTest, NumbersThatAreNotFiniteLeaveTheirEntityOut) {
    for (const char* number : {"nan", "inf", "-inf", "1e999", "1e300"}) {
        const DrawingRow row = RowOf(std::string("0 LINE|8 0|10 ") + number + "|20 0|11 1|21 1");
        EXPECT_EQ(row.what, "its numbers are not finite, or too large") << number;
    }
}

TEST(DxfEntitiesTest, EntitiesHaveTheirColourLineAndVisibility) {
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

}  // namespace
}  // namespace cqsurvey::exchange
