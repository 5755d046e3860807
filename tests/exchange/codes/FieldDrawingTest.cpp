#include "cqsurvey/exchange/FieldDrawing.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/codes/FieldDrawingFixture.h"

namespace cqsurvey::exchange {
namespace {

using FieldDrawingTest = FieldDrawingFixture;

TEST_F(FieldDrawingTest, ALineRunsThroughItsPointsAndIsTiedToThem) {
    Point("1", 0, 0, "EP2 B", 5);
    Point("2", 1, 1, "KERB B");
    Point("3", 10, 0, "EP2", 6);
    Point("4", 2, 2, "KERB");
    Point("5", 20, 1, "EP2 E", 7);
    EXPECT_EQ(Show(Draw()),
              "1 EP2: drawn, line\n2 KERB: drawn, line\n3 EP2: drawn, line\n4 KERB: drawn, line\n"
              "5 EP2: drawn, line\n");
    EXPECT_EQ(Show(),
              "line Road 3 1 12:\n  0.000 0.000 5.000 bulge 0.0000 1\n"
              "  10.000 0.000 6.000 bulge 0.0000 3\n  20.000 1.000 7.000 bulge 0.0000 5\n"
              "line Kerb 256 256 13:\n  1.000 1.000 0.000 bulge 0.0000 2\n"
              "  2.000 2.000 0.000 bulge 0.0000 4\n");
}

TEST_F(FieldDrawingTest, LayersLookLikeTheirCodesAndPointsGetThemWithTheFeatureCode) {
    Point("1", 0, 0, "EP B");
    Point("2", 1, 1, "EP");
    Point("3", 1, 1, "nothing");
    m_db.AddLayer(u"Kerb", 99, 4);
    Draw();
    EXPECT_EQ(m_db.GetLayerColor(u"Road"), 3);
    EXPECT_EQ(m_db.GetLayerLine(u"Road"), 1);
    EXPECT_EQ(m_db.GetLayerColor(u"Kerb"), 99);
    EXPECT_EQ(m_db.GetLayerColor(u"Trees"), 0) << "no code of it was met";
    for (const auto& [handle, record] : Points(m_db)) {
        const bool coded = record.GetPtName() != u"3";
        EXPECT_EQ(record.GetCode(), coded ? 12 : 0);
        CqHandle next = m_db.GetCadEntityHandleByCoordRecHandle(handle);
        CqCadEntity* read = nullptr;
        ASSERT_EQ(m_db.GetNextCadEntity(next, read), 1);
        EXPECT_EQ(CqCadEntityPtr(read)->GetLayer(), coded ? u"Road" : u"0");
    }
    EXPECT_EQ(m_db.GetCurrentLayer(), u"0");
}

TEST_F(FieldDrawingTest, ThreeShotsOfACurveGiveTheirCircle) {
    Point("1", -10, 0, "EP B");
    Point("2", 0, 0, "EP BC");
    Point("3", 10, 10, "EP");
    Point("4", 0, 20, "EP EC");
    Point("5", -10, 20, "EP");
    const CodeReport report = Draw();
    EXPECT_EQ(report.arcs, 2U);
    const std::string quarter = fmt::format("{:.4f}", std::tan(std::atan(1.0) / 2));
    EXPECT_EQ(Show(),
              "line Road 3 1 12:\n  -10.000 0.000 0.000 bulge 0.0000 1\n"
              "  0.000 0.000 0.000 bulge " +
                  quarter +
                  " 2\n"
                  "  10.000 10.000 0.000 bulge " +
                  quarter +
                  " 3\n"
                  "  0.000 20.000 0.000 bulge 0.0000 4\n"
                  "  -10.000 20.000 0.000 bulge 0.0000 5\n");
}

TEST_F(FieldDrawingTest, TwoShotsOfACurveGoOnInTheDirectionBefore) {
    Point("1", 0, -10, "EP B");
    Point("2", 0, 0, "EP BC");
    Point("3", 10, 10, "EP EC");
    EXPECT_EQ(Draw().arcs, 1U);
    EXPECT_NE(Show().find("0.000 0.000 0.000 bulge -0.4142 2"), std::string::npos) << Show();
}

TEST_F(FieldDrawingTest, ShotsFarFromACircleAreDrawnStraightWithAWarning) {
    for (int i = 0; i < 6; ++i) {
        Point(std::to_string(i), 10 * std::cos(i * 0.3), 10 * std::sin(i * 0.3) + (i == 3 ? 1 : 0),
              i == 0   ? "EP BC"
              : i == 5 ? "EP EC"
                       : "EP");
    }
    const CodeReport report = Draw();
    EXPECT_EQ(report.arcs, 0U);
    EXPECT_EQ(report.lines, 1U);
    EXPECT_EQ(report.Count(CodeFate::Suspicious), 1U);
    EXPECT_NE(report.rows[0].reason.find("from the circle that fits best"), std::string::npos);
}

TEST_F(FieldDrawingTest, ClosedFiguresGoBackToTheirFirstPoint) {
    Point("1", 0, 0, "BLD");
    Point("2", 4, 0, "BLD");
    Point("3", 4, 3, "BLD");
    Point("4", 10, 0, "EP B");
    Point("5", 14, 0, "EP");
    Point("6", 14, 3, "EP CLS");
    const CodeReport report = Draw();
    EXPECT_EQ(report.rows[0].what, "closed line");
    EXPECT_EQ(report.rows[5].what, "closed line");
    EXPECT_EQ(Show(),
              "line Buildings 256 256 0:\n  0.000 0.000 0.000 bulge 0.0000 1\n"
              "  4.000 0.000 0.000 bulge 0.0000 2\n  4.000 3.000 0.000 bulge 0.0000 3\n"
              "  0.000 0.000 0.000 bulge 0.0000 1\n"
              "line Road 3 1 12:\n  10.000 0.000 0.000 bulge 0.0000 4\n"
              "  14.000 0.000 0.000 bulge 0.0000 5\n  14.000 3.000 0.000 bulge 0.0000 6\n"
              "  10.000 0.000 0.000 bulge 0.0000 4\n");
}

TEST_F(FieldDrawingTest, RectanglesTurnsCirclesJoinsAndParallelsAreDrawn) {
    Point("1", 0, 0, "EP1 B RECT 2");
    Point("2", 5, 0, "EP1");
    Point("3", 0, 10, "EP2 B RECT");
    Point("4", 5, 10, "EP2");
    Point("5", 4, 13, "EP2");
    Point("6", 0, 20, "EP3 B");
    Point("7", 5, 20, "EP3 RT -2 3 E");
    Point("8", 0, 30, "EP4 B CIR");
    Point("9", 3, 34, "EP4");
    Point("10", 0, 40, "EP5 B");
    Point("11", 5, 40, "EP5 JPT 1 E");
    Point("12", 0, 50, "EP6 B H0.5 V-1.2");
    Point("13", 10, 50, "EP6 E");
    EXPECT_EQ(Draw().Count(CodeFate::Drawn), 13U);
    EXPECT_EQ(Show(),
              "line Road 3 1 12:\n  0.000 0.000 0.000 bulge 0.0000 1\n"
              "  5.000 0.000 0.000 bulge 0.0000 2\n  5.000 -2.000 0.000 bulge 0.0000 free\n"
              "  0.000 -2.000 0.000 bulge 0.0000 free\n  0.000 0.000 0.000 bulge 0.0000 1\n"
              "line Road 3 1 12:\n  0.000 10.000 0.000 bulge 0.0000 3\n"
              "  5.000 10.000 0.000 bulge 0.0000 4\n  5.000 13.000 0.000 bulge 0.0000 free\n"
              "  0.000 13.000 0.000 bulge 0.0000 free\n  0.000 10.000 0.000 bulge 0.0000 3\n"
              "line Road 3 1 12:\n  0.000 20.000 0.000 bulge 0.0000 6\n"
              "  5.000 20.000 0.000 bulge 0.0000 7\n  5.000 22.000 0.000 bulge 0.0000 free\n"
              "  8.000 22.000 0.000 bulge 0.0000 free\n"
              "circle Road 0.000 30.000 r 5.000\n"
              "line Road 3 1 12:\n  0.000 40.000 0.000 bulge 0.0000 10\n"
              "  5.000 40.000 0.000 bulge 0.0000 11\n"
              "line Road 3 1 12:\n  5.000 40.000 0.000 bulge 0.0000 11\n"
              "  0.000 0.000 0.000 bulge 0.0000 1\n"
              "line Road 3 1 12:\n  0.000 50.000 0.000 bulge 0.0000 12\n"
              "  10.000 50.000 0.000 bulge 0.0000 13\n"
              "line Road 3 1 12:\n  0.000 49.500 -1.200 bulge 0.0000 free\n"
              "  10.000 49.500 -1.200 bulge 0.0000 free\n");
}

TEST_F(FieldDrawingTest, SymbolsTextsAndCirclesAreMadeAtPoints) {
    Point("1", 0, 0, "TR oak");
    Point("2", 5, 0, "TX 12 SAN");
    Point("3", 8, 0, "MH");
    Point("4", 9, 0, "MH 0.6");
    Point("5", 9, 9, "GS");
    EXPECT_EQ(Show(Draw()),
              "1 TR: drawn, label\n2 TX: drawn, text\n3 MH: drawn, circle by radius\n"
              "4 MH: drawn, circle by radius\n5 GS: only a point\n");
    EXPECT_EQ(Show(),
              "text Trees 0.600 0.600 h 1.000 oak\ntext Texts 5.000 0.000 h 2.500 12 SAN\n"
              "circle Pipes 8.000 0.000 r 0.400\ncircle Pipes 9.000 0.000 r 0.600\n");
}

TEST_F(FieldDrawingTest, EveryCodeOfEveryPointIsAccountedFor) {
    Point("1", 0, 0, "EP1 B");
    Point("2", 0, 1, "XY");
    Point("3", 0, 2, "B");
    Point("4", 0, 3, "");
    Point("5", 0, 4, "KERB BC");
    Point("6", 0, 5, "KERB");
    Point("7", 0, 6, "BLD");
    Point("8", 0, 7, "BLD CLS");
    Point("9", 0, 8, "EP2 C");
    Point("10", 0, 8, "EP2 EC");
    Point("11", 5, 8, "EP3 CIR");
    Point("12", 5, 9, "EP4 B JPT 99");
    Point("13", 5, 10, "EP4 RT 2 GS EP5");
    const CodeReport report = Draw();
    EXPECT_EQ(Show(report),
              "1 EP1: incomplete: a figure of one point\n"
              "2 XY: unknown: the code table does not have it\n"
              "3 B: unknown: a control word without a line's code\n"
              "5 KERB: incomplete, line: the curve has no end, so it is drawn straight\n"
              "6 KERB: drawn, line\n"
              "7 BLD: drawn, line\n"
              "8 BLD: incomplete, line: a closed figure of two points, so it is not closed\n"
              "9 EP2: suspicious, line: there is no figure to continue, so one begins here\n"
              "10 EP2: incomplete, line: the end of a curve that did not begin; the segment before "
              "it has no length\n"
              "11 EP3: incomplete: a circle of one point without a radius\n"
              "12 EP4: incomplete, line: there is no point \"99\" to join\n"
              "13 EP4: drawn, line\n"
              "13 GS: only a point\n"
              "13 EP5: incomplete: a figure of one point\n");
    EXPECT_EQ(report.withoutCode, 1U);
    EXPECT_EQ(report.points, 13U);
}

TEST_F(FieldDrawingTest, FiguresThatCrossThemselvesOrJumpAreSuspicious) {
    Point("1", 0, 0, "BLD B");
    Point("2", 4, 4, "BLD");
    Point("3", 4, 0, "BLD");
    Point("4", 0, 4, "BLD CLS");
    for (int i = 0; i < 6; ++i) {
        Point("J" + std::to_string(i), i == 5 ? 500 : i, 20, "EP");
    }
    const CodeReport report = Draw();
    EXPECT_EQ(report.rows[0].fate, CodeFate::Suspicious);
    EXPECT_EQ(report.rows[0].reason, "the closed figure crosses itself after this point");
    EXPECT_EQ(report.rows[9].fate, CodeFate::Suspicious);
    EXPECT_EQ(report.rows[9].reason,
              "the figure jumps here by 496.000; its segments are usually 1.000");
    EXPECT_EQ(report.Count(CodeFate::Suspicious), 2U);
}

TEST_F(FieldDrawingTest, AFigureBeginsAnewWhereTheNextPointIsTooFarAway) {
    Point("1", 0, 0, "EP");
    Point("2", 10, 0, "EP");
    Point("3", 100, 0, "EP");
    Point("4", 110, 0, "EP");
    DrawOptions options;
    options.codes = m_codes;
    options.longest = 50.0;
    const CodeReport report = FieldDrawing(options).Draw(m_db);
    EXPECT_EQ(report.lines, 2U);
    EXPECT_EQ(report.rows[2].fate, CodeFate::Suspicious);
    EXPECT_EQ(report.rows[2].reason, "the point before is too far away, so a figure begins here");
    EXPECT_EQ(report.Count(CodeFate::Drawn), 3U);
}

TEST_F(FieldDrawingTest, ANameOrderIsTheOneOfNumbers) {
    Point("10", 10, 0, "EP");
    Point("9", 9, 0, "EP");
    Point("100", 100, 0, "EP");
    DrawOptions options;
    options.codes = m_codes;
    options.sequence = PointSequence::Names;
    static_cast<void>(FieldDrawing(options).Draw(m_db));
    EXPECT_EQ(Show(),
              "line Road 3 1 12:\n  9.000 0.000 0.000 bulge 0.0000 9\n"
              "  10.000 0.000 0.000 bulge 0.0000 10\n"
              "  100.000 0.000 0.000 bulge 0.0000 100\n");
}

TEST_F(FieldDrawingTest, TheJobsOwnTableIsUsedWhenNoneIsGiven) {
    Point("1", 0, 0, "EP I");
    Point("2", 1, 0, "EP");
    EXPECT_THROW(static_cast<void>(FieldDrawing({}).Draw(m_db)), ExchangeError);
    ASSERT_EQ(m_codes.SetWords(u"words,begin=I"), 1);
    ASSERT_EQ(CqJobCodes(m_db).Set(m_codes), 1);
    EXPECT_EQ(FieldDrawing({}).Draw(m_db).Count(CodeFate::Drawn), 2U);
}

TEST_F(FieldDrawingTest, AFailedDrawingLeavesTheJobAsItWas) {
    for (int i = 0; i < 2000; ++i) {
        Point(std::to_string(i), i, i % 7, i % 2 == 0 ? "EP1" : "EP2");
    }
    DrawOptions options;
    options.codes = m_codes;
    options.progress = [](std::uint64_t done, std::uint64_t) {
        if (done > 0) {
            throw ExchangeError("stop");
        }
    };
    EXPECT_THROW(static_cast<void>(FieldDrawing(options).Draw(m_db)), ExchangeError);
    EXPECT_EQ(Show(), "");
    EXPECT_EQ(m_db.GetNumLayers(), 1);
}

TEST_F(FieldDrawingTest, NumberSuffixesDrawLinesAndArcsOfTwoCodesAtOnce) {
    Row({.code = u"10", .layer = u"A", .kind = CqCodeKind::Line});
    Row({.code = u"20", .layer = u"B", .kind = CqCodeKind::Line});
    ASSERT_EQ(m_codes.SetWords(u"numbers"), 1);
    Point("1", 0, 0, "10-1+20-3");
    Point("2", 10, 10, "10-2+20-3");
    Point("3", 20, 0, "10-9+20-3");
    const CodeReport report = Draw();
    EXPECT_EQ(report.lines, 2U);
    EXPECT_EQ(report.arcs, 2U);
    EXPECT_EQ(report.Count(CodeFate::Drawn), 6U);
}

TEST_F(FieldDrawingTest, AFeatureCodeWithoutADescriptionIsACodeOfTheTable) {
    Row({.code = u"50", .number = 7, .layer = u"Trees", .kind = CqCodeKind::Circle, .size = 1.5});
    const std::array<double, 3> coords{1, 2, 3};
    m_db.AddCoordRec(coords.data(), u"A", 50, SurveyCoordType{1}, 0);
    m_db.AddCoordRec(coords.data(), u"B", 51, SurveyCoordType{1}, 0);
    EXPECT_EQ(Show(Draw()), "A 50: drawn, circle by radius\n");
    EXPECT_FALSE(Draw(true).HasChanged());
}

TEST_F(FieldDrawingTest, OptionsThatMakeNoSenseAreRefused) {
    EXPECT_THROW(FieldDrawing({.words = "klingon"}), OptionError);
    EXPECT_THROW(FieldDrawing({.arcTolerance = -1.0}), OptionError);
    EXPECT_THROW(FieldDrawing({.longest = 0.0}), OptionError);
    EXPECT_THROW(FieldDrawing({.textHeight = 0.0}), OptionError);
}

}  // namespace
}  // namespace cqsurvey::exchange
