#include "cqsurvey/exchange/SimaWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/sima/SimaText.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

void AddPoint(CqSurveyDB& db, const CString& name, double x, double y, double z) {
    const std::array at{x, y, z};
    db.AddCoordRec(at.data(), name, 0, SurveyCoordType{1}, 0);
}

TEST(SimaWriterTest, PointsAndParcelsWithTheirNumbersComeBack) {
    SimaJob job;
    AddPoint(job.db, u"T-1", 0.1 + 0.2, 6257926.788429 / 7, 7.5);
    AddPoint(job.db, u"\u5883\u754C", 8, 0, kNone);
    AddPoint(job.db, u"K3", 8, 6, kNone);
    AddPoint(job.db, u"K4", 0, 6, kNone);
    job.db.AddLayer(u"Parcels", 7, 0);
    job.db.AddLayer(u"Parcel numbers", 7, 0);
    job.db.SetCurrentLayer(u"Parcels");
    DrawPath(job.db, {{8, 0, kNone, 0}, {8, 6, kNone, 0}, {0, 6, kNone, 0}, {8, 0, kNone, 0}});
    job.db.SetCurrentLayer(u"Parcel numbers");
    const std::array at{16.0 / 3, 4.0, kNone};
    job.db.AddText(at.data(), u"12-3", 1, 2, u"", 1, 0, 0, 0, 0, 0);
    SimaJob back;
    static_cast<void>(back.Read(job.Write()));
    EXPECT_EQ(back.List(), job.List());
    EXPECT_EQ(LayersOf(back.db), LayersOf(job.db));
    const std::string text = job.Write();
    EXPECT_NE(text.find("A01,1,T-1,893989.541204143,0.30000000000000004,7.5,\r\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("A01,2,\x8B\xAB\x8A\x45,0,8,,\r\n"), std::string::npos);
}

TEST(SimaWriterTest, CornersWithoutAPointBecomePointsOfTheFile) {
    SimaJob job;
    DrawPath(job.db, {{8, 0, 1, 0}, {8, 6, 1, 0}, {0, 6, 1, 0}, {8, 0, 1, 0}});
    std::string text;
    const DrawingReport report = job.WriteTo(text);
    EXPECT_EQ(report.GetRows().at(0).what, "D00, with corners that are new points of the file");
    SimaJob back;
    static_cast<void>(back.Read(text));
    EXPECT_EQ(back.List(),
              (List{"point  8,0,1", "point  8,6,1", "point  0,6,1", "line 8,0,1 8,6,1 0,6,1 8,0,1",
                    "text 1 5.33333333,4,- h1 r0 a12"}));
}

TEST(SimaWriterTest, ArcsAreBrokenWithinTheTolerance) {
    SimaJob job;
    DrawPath(job.db, {{10, 0, kNone, 1}, {-10, 0, kNone, 1}, {10, 0, kNone, 0}});
    std::string text;
    SimaWriteOptions options;
    options.unit = LengthUnit::Metre;
    options.tolerance = 0.1;
    const DrawingReport report = job.WriteTo(text, options);
    EXPECT_EQ(report.GetRows().at(0).what, "D00, its arcs broken into lines");
    EXPECT_GT(report.GetDeviation(), 0.01);
    EXPECT_LE(report.GetDeviation(), 0.1);
}

TEST(SimaWriterTest, LengthsAreInMetres) {
    SimaJob job;
    AddPoint(job.db, u"A", 1000, 2000, 3000);
    EXPECT_NE(job.Write({.unit = LengthUnit::Millimetre}).find("A01,1,A,2,1,3,"),
              std::string::npos);
    std::string text;
    EXPECT_THROW(static_cast<void>(job.WriteTo(text, {})), OptionError);
}

TEST(SimaWriterTest, WhatSimaCannotHoldIsLeftOutOrChangedAndSaidToBe) {
    SimaJob job;
    AddPoint(job.db, u"a,b\u20AC", 1, 2, 3);
    const std::array at{1.0, 2.0, 3.0};
    job.db.AddCircle(at.data(), 1, 0, 0);
    job.db.AddText(at.data(), u"free", 0, 0, u"", 1, 0, 0, 0, 0, 0);
    DrawPath(job.db, {{0, 0, 0, 0}, {1, 1, 0, 0}});
    std::string text;
    const DrawingReport report = job.WriteTo(text);
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 3U);
    EXPECT_EQ(report.Get(DrawingFate::Converted), 1U);
    EXPECT_NE(text.find("A01,1,a\x81\x43"
                        "b?,2,1,3,"),
              std::string::npos)
        << text;
}

TEST(SimaWriterTest, WhatSimaHasNoPlaceForIsLostAndSaidToBe) {
    SimaJob job;
    job.db.AddGroup(u"Road");
    job.db.SetCurrentGroup(u"Road");
    job.db.AddLayer(u"Kerb", 3, 2);
    job.db.SetCurrentLayer(u"Kerb");
    job.db.SetCurrentColor(5);
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:6677"), 1);
    const std::array at{1.0, 2.0, 3.0};
    const CqHandle point = job.db.AddCoordRec(at.data(), u"A", 12, SurveyCoordType{4}, 9);
    ASSERT_EQ(job.db.AddCoordDescription(point, u"found"), 1);
    ASSERT_EQ(job.db.EditCoordRecTime(point, 86400), 1);
    std::string text;
    const DrawingReport report = job.WriteTo(text);
    EXPECT_EQ(report.GetNotes().back(),
              "codes, descriptions, groups, layers, colours and times are not written; nor are the "
              "job's settings and the background image");
    SimaJob back;
    static_cast<void>(back.Read(text));
    const std::string details = Details(back.db).at(0);
    EXPECT_TRUE(details.starts_with("0 0 256 1,2,3 ")) << details;
    EXPECT_NE(details.find(" c0 A "), std::string::npos) << details;
    EXPECT_TRUE(details.ends_with("p1,0,,")) << details;
    EXPECT_EQ(LayersOf(back.db), List{"0 1 0"});
    EXPECT_EQ(CqJobSystem(back.db).GetSystem(), u"");
    CqCoordRec record;
    ASSERT_NE(back.db.GetCoordRec(back.db.GetCoordRecHandleByPtName(u"A"), record), 0);
    EXPECT_NE(record.GetRecTime(), 86400U);
}

TEST(SimaWriterTest, BitmapsAndOpenPolylinesAreLeftOutWithTheReason) {
    SimaJob job;
    const std::array at{1.0, 2.0, 3.0};
    job.db.AddBitmap(at.data(), u"photo", CVector(1, 1));
    DrawPath(job.db, {{0, 0, 0, 0}, {1, 1, 0, 0}, {2, 0, 0, 0}});
    std::string text;
    const DrawingReport report = job.WriteTo(text);
    EXPECT_EQ(report.GetRows().at(0).what, "its picture is not in the job");
    EXPECT_EQ(report.GetRows().at(1).what, "it is not closed, so it is no parcel");
    EXPECT_EQ(text.find("D00"), std::string::npos);
}

TEST(SimaWriterTest, ACornerNamesThePointAtItsPlaceAndHasItsHeight) {
    SimaJob job;
    AddPoint(job.db, u"P", 8, 0, 7.5);
    DrawPath(job.db, {{8, 0, 1, 0}, {8, 6, 1, 0}, {0, 6, 1, 0}, {8, 0, 1, 0}});
    std::string text;
    static_cast<void>(job.WriteTo(text));
    EXPECT_NE(text.find("D00,1,1,1,\r\nB01,1,P,\r\nB01,2,,\r\n"), std::string::npos) << text;
    SimaJob back;
    static_cast<void>(back.Read(text));
    EXPECT_EQ(back.List().at(3), "line 8,0,7.5 8,6,1 0,6,1 8,0,7.5");
}

TEST(SimaWriterTest, NumbersTooLargeToReckonWithLeaveTheirEntityOut) {
    SimaJob job;
    AddPoint(job.db, u"far", 1e308, 0, 0);
    AddPoint(job.db, u"P", 8, 0, 1e308);
    DrawPath(job.db, {{-1e308, 0, 1, 0.5}, {1e308, 0, 1, 0.5}, {0, 1, 1, 0}, {-1e308, 0, 1, 0}});
    DrawPath(job.db, {{-1e306, 0, 1, 0}, {1e306, 0, 1, 0}, {0, 1, 1, 0}, {-1e306, 0, 1, 0}});
    std::string text;
    EXPECT_EQ(job.WriteTo(text, {.unit = LengthUnit::Kilometre}).Get(DrawingFate::LeftOut), 4U);
    EXPECT_EQ(text.find("inf"), std::string::npos) << text;
    EXPECT_EQ(text.find("nan"), std::string::npos);
    EXPECT_EQ(text.find("D00"), std::string::npos);
    SimaJob back;
    EXPECT_EQ(back.Read(text).points, 0U);
}

TEST(SimaWriterTest, AnotherCodePageWillDoWhenBothSidesAreTold) {
    SimaJob job;
    AddPoint(job.db, u"\u00C4\u00DF", 8, 0, kNone);
    const std::string text = job.Write({.codePage = 1252, .unit = LengthUnit::Metre});
    EXPECT_NE(text.find("A01,1,\xC4\xDF,"), std::string::npos);
    SimaReadOptions options;
    options.codePage = 1252;
    SimaJob back;
    EXPECT_EQ(back.Read(text, options).codePage, 1252);
    EXPECT_EQ(back.List(), job.List());
}

}  // namespace
}  // namespace cqsurvey::exchange
