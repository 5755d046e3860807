#include "cqsurvey/exchange/DxfWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/dxf/DxfText.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

constexpr std::array kVersions{DxfVersion::R12, DxfVersion::R2000, DxfVersion::R2018};
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// Writes the job in the version and reads the file into a new one.
void ExpectSameJob(DrawnJob& job, DxfWriteOptions options = {}) {
    for (const DxfVersion version : kVersions) {
        options.version = version;
        DrawnJob back;
        static_cast<void>(back.Read(job.Write(options)));
        EXPECT_EQ(Details(back.db), Details(job.db)) << static_cast<int>(version);
        EXPECT_EQ(LayersOf(back.db), LayersOf(job.db)) << static_cast<int>(version);
    }
}

TEST(DxfWriterTest, PointsComeBackWithNameHeightCodeDescriptionGroupOriginAndFlags) {
    DrawnJob job;
    const std::array<double, 3> at{3000000.125, -200.0625, 312.123456789};
    job.db.AddGroup(u"Netz Ä");
    job.db.SetCurrentGroup(u"Netz Ä");
    const CqHandle point = job.db.AddCoordRec(at.data(), u"Pkt 7%%d", -42, SurveyCoordType{8}, 5);
    ASSERT_NE(job.db.AddCoordDescription(point, u"Schacht \\P {x} ^J \u65E5"), 0);
    job.db.SetCurrentGroup(u"");
    const std::array<double, 3> level{1.0, 2.0, kNone};
    job.db.AddCoordRec(level.data(), u"", 0, SurveyCoordType{1}, 0);
    ExpectSameJob(job);
    ExpectSameJob(job, {.points = DxfPoints::Block});
}

TEST(DxfWriterTest, PolylinesComeBackWithArcsHeightsLinesAndCodes) {
    DrawnJob job;
    DrawPath(job.db, {{0, 0, 5, 0.5}, {10, 0, 5, -1.25}, {10, 10, 5, 0}}, 3, 77);
    DrawPath(job.db, {{0, 0, 0, 0.1}, {10, 0, 0, 0}, {10, 10, 0, 1}, {0, 0, 0, 0}});
    DrawPath(job.db, {{0, 0, 1, 0}, {1, 0, 2, 0}, {1, 1, 3, 0}, {0, 0, 1, 0}}, 0);
    DrawPath(job.db, {{0, 0, 1, 0}, {1.0 / 3.0, 1e-7, 2, 0}}, 8);
    DrawPath(job.db, {{0, 0, kNone, 0.5}, {1, 1, kNone, 0}});
    DrawPath(job.db, {{0, 0, 0, 0}, {1, 1, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});
    DrawPath(job.db, {{0, 0, 0, 0}, {0, 0, 0, 0}});
    ExpectSameJob(job);
}

TEST(DxfWriterTest, CirclesTextsLayersAndColoursComeBack) {
    DrawnJob job;
    job.db.AddLayer(u"Straße", 3, 1);
    job.db.AddLayer(u"hidden", -250, 7);
    job.db.AddLayer(u"empty Ωμ", 9, 0);
    job.db.SetCurrentLayer(u"hidden");
    job.db.SetCurrentColor(-30);
    const std::array<double, 3> at{1, 2, 3};
    job.db.SetCurrentColor(256);
    job.db.AddCircle(at.data(), 0.1, 5, -3);
    job.db.SetCurrentLayer(u"Straße");
    job.db.SetCurrentColor(0);
    for (int along = 0; along <= 3; ++along) {
        for (int across = 0; across <= 4; ++across) {
            job.db.AddText(at.data(), u"50%% 100%%%d ^ \\U+0041 {\\P} é\u65E5\U0001F600", along,
                           across, u"Small", 2.5, 33.25, 7, 9, -1, 2);
        }
    }
    ExpectSameJob(job);
}

TEST(DxfWriterTest, StylesComeBackAlsoTheOneThatEveryFileHasAndNone) {
    for (const char16_t* style : {u"", u"STANDARD", u"Standard", u"Roman"}) {
        DrawnJob job;
        const std::array<double, 3> at{1, 2, 3};
        job.db.AddText(at.data(), u"one", 0, 0, style, 1, 0, 0, 0, 0, 0);
        job.db.AddText(at.data(), u"none", 0, 0, u"", 1, 0, 0, 0, 0, 0);
        ExpectSameJob(job);
    }
}

TEST(DxfWriterTest, ATextOfSeveralLinesComesBackUnlessTheVersionIsR12) {
    DrawnJob job;
    for (int across = 0; across <= 3; ++across) {
        DrawText(job.db, u"one\ntwo {x} \\P \\U+0041 ^ 50%%d\n\nfour \u65E5", 1, 2, 3.0, 40.0, 2,
                 across);
    }
    DrawText(job.db, CString(100, u'\u65E5') + u"\n" + CString(100, u'\\'), 1, 2, 3.0);
    for (const DxfVersion version : {DxfVersion::R2000, DxfVersion::R2018}) {
        DrawnJob back;
        static_cast<void>(back.Read(job.Write({.version = version})));
        EXPECT_EQ(Details(back.db), Details(job.db));
    }
    DrawnJob lines;
    DrawText(lines.db, u"one\ntwo", 10, 20, 2.0);
    DrawnJob back;
    static_cast<void>(back.Read(lines.Write({.version = DxfVersion::R12})));
    EXPECT_EQ(back.List(), (List{"text one 10,20,0 h2 r0 a00", "text two 10,17,0 h2 r0 a00"}));
}

TEST(DxfWriterTest, EntitiesThatTheJobHidesStayHiddenUnlessTheVersionIsR12) {
    DrawnJob job;
    job.db.SetCurrentColor(-30);
    DrawCircle(job.db, 1, 2, 3);
    job.db.SetCurrentColor(-256);
    DrawCircle(job.db, 1, 2, 3);
    for (const DxfVersion version : kVersions) {
        DrawnJob back;
        static_cast<void>(back.Read(job.Write({.version = version})));
        std::vector<int> colors;
        for (const CqCadEntityPtr& entity : Entities(back.db)) {
            colors.push_back(entity->GetColor());
        }
        EXPECT_EQ(colors, version == DxfVersion::R12 ? (std::vector<int>{30, 256})
                                                     : (std::vector<int>{-30, -256}));
    }
}

TEST(DxfWriterTest, ArcsInSpaceAreBrokenWithinTheToleranceOrKeptLevel) {
    DrawnJob job;
    DrawPath(job.db, {{0, 0, 10, 0}, {5, 0, 20, 1}, {15, 0, 40, 0}, {20, 0, 50, 0}});
    std::string text;
    DxfWriter writer(job.db, {.tolerance = 0.01}, [&](std::string_view bytes) { text += bytes; });
    const DrawingReport report = writer.Write();
    EXPECT_EQ(report.Get(DrawingFate::Converted), 1U);
    EXPECT_GT(report.GetDeviation(), 0.0);
    EXPECT_LE(report.GetDeviation(), 0.01);
    DrawnJob broken;
    const DrawingReport read = broken.Read(text);
    EXPECT_EQ(read.polylines, 1U);
    EXPECT_GT(read.vertices, 20U);
    EXPECT_EQ(broken.List().at(0).find('('), std::string::npos);

    DrawnJob kept;
    static_cast<void>(kept.Read(job.Write({.arcs = DxfArcs::Keep})));
    EXPECT_EQ(kept.List(),
              (List{"line 0,0,10 5,0,20", "line 5,0,30(1) 15,0,30", "line 15,0,40 20,0,50"}));
}

TEST(DxfWriterTest, LayersThatDifferOnlyInCaseOrHoldForbiddenSignsAreRenamedAndSaidToBe) {
    DrawnJob job;
    job.db.AddLayer(u"road", 1, 0);
    job.db.AddLayer(u"ROAD", 2, 0);
    job.db.AddLayer(u"a/b:c", 3, 0);
    std::string text;
    const DrawingReport report =
        DxfWriter(job.db, {}, [&](std::string_view bytes) { text += bytes; }).Write();
    DrawnJob back;
    static_cast<void>(back.Read(text));
    EXPECT_EQ(LayersOf(back.db), (List{"0 1 0", "road 1 0", "ROAD_2 2 0", "a_b_c 3 0"}));
    EXPECT_EQ(report.GetNotes().at(0), "the layer \"ROAD\" is called \"ROAD_2\" in the file");
}

TEST(DxfWriterTest, PointsAloneLoseTheirNamesAndTheReportSaysSo) {
    DrawnJob job;
    DrawPoint(job.db, u"P1", 1, 2, 3, 4);
    std::string text;
    const DrawingReport report =
        DxfWriter(job.db, {.points = DxfPoints::Point}, [&](std::string_view bytes) {
            text += bytes;
        }).Write();
    EXPECT_EQ(report.GetRows().at(0).what, "POINT, without its name, code and description");
    DrawnJob back;
    static_cast<void>(back.Read(text));
    EXPECT_EQ(back.List(), List{"point  1,2,3"});
}

TEST(DxfWriterTest, PointsGoToLayersOfTheirCodesWhenAskedFor) {
    DrawnJob job;
    DrawPoint(job.db, u"P1", 1, 2, 3, 4);
    DrawPoint(job.db, u"P2", 1, 2, 3, 0);
    DrawnJob back;
    static_cast<void>(back.Read(job.Write({.layersByCode = true})));
    EXPECT_EQ(LayersOf(back.db), (List{"0 1 0", "CODE_4 5 0"}));
}

TEST(DxfWriterTest, WhatCannotBeWrittenIsLeftOutWithTheReason) {
    DrawnJob job;
    DrawBitmap(job.db, u"tree", 1, 2, 3);
    DrawCircle(job.db, 1, 2, -3);
    DrawText(job.db, u"", 1, 2, 3);
    DrawPoint(job.db, u"P", HUGE_VAL, 2);
    DrawLine(job.db, {{0, 0, 0}, {kNone, 1, 0}});
    const DrawingReport report = DxfWriter(job.db, {}, [](std::string_view) {}).Write();
    EXPECT_EQ(report.GetSum(), 5U);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 5U);
}

TEST(DxfWriterTest, TheHeaderSaysUnitExtentsAndCodePage) {
    DrawnJob job;
    DrawCircle(job.db, 10, 20, 5);
    DxfWriteOptions options;
    options.unit = LengthUnit::UsSurveyFoot;
    const std::string text = job.Write(options);
    EXPECT_NE(text.find("$INSUNITS\n 70\n21\n"), std::string::npos);
    EXPECT_NE(text.find("$EXTMIN\n 10\n5.0\n 20\n15.0\n 30\n0.0\n"), std::string::npos);
    EXPECT_NE(text.find("$DWGCODEPAGE\n  3\nANSI_1252\n"), std::string::npos);
}

TEST(DxfWriterTest, TheBackgroundImageIsLeftOutOfR12AndWithoutAFileAndSaidToBe) {
    DrawnJob job;
    std::FILE* file = std::fopen(job.folder.Utf8("a.png").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fwrite("picture", 1, 7, file);
    std::fclose(file);
    ASSERT_EQ(job.db.StoreBackgroundImageFile(job.folder.Path(u"a.png"), 0, CVector(0, 0),
                                              CVector(1, 1), 0),
              1);
    const auto write = [&](const DxfWriteOptions& options, std::string& text) {
        return DxfWriter(job.db, options, [&](std::string_view bytes) { text += bytes; })
            .Write()
            .GetNotes()
            .back();
    };
    std::string old;
    EXPECT_EQ(write({.version = DxfVersion::R12, .image = DxfImage{"a.png", 4, 2}}, old),
              "the background image is not written: R12 has no images");
    EXPECT_EQ(old.find("IMAGE"), std::string::npos);
    std::string without;
    EXPECT_EQ(write({}, without), "the background image is not written");
    EXPECT_EQ(without.find("IMAGE"), std::string::npos);
}

}  // namespace
}  // namespace cqsurvey::exchange
