#include "cqsurvey/exchange/SimaWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

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

}  // namespace
}  // namespace cqsurvey::exchange
