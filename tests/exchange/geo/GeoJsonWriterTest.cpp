#include "cqsurvey/exchange/GeoJsonWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/DrawingJob.h"
#include "support/Holds.h"

namespace cqsurvey::exchange {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

class GeoJsonJob : public DrawingJob {
 public:
    GeoJsonJob() { EXPECT_EQ(CqJobSystem(db).SetSystem(u"EPSG:32632"), 1); }

    DrawingReport WriteTo(std::string& text, const GeoJsonWriteOptions& options) {
        return GeoJsonWriter(db, options, [&](std::string_view bytes) { text += bytes; }).Write();
    }

    std::string Write(const GeoJsonWriteOptions& options = {}) {
        std::string text;
        static_cast<void>(WriteTo(text, options));
        return text;
    }
};

TEST(GeoJsonWriterTest, PositionsAreLongitudeAndLatitudeOfWgs84) {
    GeoJsonJob job;
    // On the central meridian of zone 32, which is 9 degrees east; the equator has northing 0.
    const std::array at{500000.0, 0.0, 10.0};
    job.db.AddCoordRec(at.data(), u"A \"1\"", 12, SurveyCoordType{1}, 0);
    const std::string text = job.Write({.unit = LengthUnit::Foot});
    EXPECT_EQ(text,
              "{\"type\":\"FeatureCollection\",\"features\":[\n"
              "{\"type\":\"Feature\",\"id\":2,\"geometry\":{\"type\":\"Point\",\"coordinates\":"
              "[9,0,3.048]},\"properties\":{\"kind\":\"point\",\"layer\":\"0\",\"code\":12,"
              "\"name\":\"A \\\"1\\\"\"}}\n]}\n");
}

TEST(GeoJsonWriterTest, PlainCoordinatesAreThoseOfTheJob) {
    GeoJsonJob job;
    const std::array at{0.1 + 0.2, 6257926.788429, kNone};
    job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{1}, 0);
    const std::string text = job.Write({.plain = true});
    EXPECT_TRUE(Holds(text, "\"coordinates\":[0.30000000000000004,6257926.788429]")) << text;
}

TEST(GeoJsonWriterTest, ArcsAndCirclesAreBrokenWithinTheTolerance) {
    GeoJsonJob job;
    DrawPath(job.db, {{0, 0, 5, 1}, {10, 0, 7, 0}});
    const std::array at{0.0, 0.0, kNone};
    job.db.AddCircle(at.data(), 10, 0, 0);
    std::string text;
    const DrawingReport report = job.WriteTo(text, {.plain = true, .tolerance = 0.1});
    EXPECT_EQ(report.GetRows().at(0).what, "LineString, its arcs broken into lines");
    EXPECT_EQ(report.GetRows().at(1).what, "LineString, its arcs broken into lines");
    EXPECT_LE(report.GetDeviation(), 0.1);
    EXPECT_GT(report.GetDeviation(), 0.01);
    EXPECT_TRUE(Holds(text, "\"type\":\"LineString\",\"coordinates\":[[0,0,5],"));
    EXPECT_TRUE(Holds(text, "[10,0,7]]"));
    EXPECT_TRUE(Holds(text, "\"coordinates\":[[10,0],"));
}

TEST(GeoJsonWriterTest, TextsCodesGroupsAndDescriptionsAreProperties) {
    GeoJsonJob job;
    job.db.AddGroup(u"Road");
    job.db.SetCurrentGroup(u"Road");
    job.db.SetCurrentColor(-3);
    const std::array at{1.0, 2.0, 3.0};
    const CqHandle point = job.db.AddCoordRec(at.data(), u"", 0, SurveyCoordType{1}, 0);
    ASSERT_EQ(job.db.AddCoordDescription(point, u"two\nlines"), 1);
    job.db.AddText(at.data(), u"label", 0, 0, u"", 2.5, 30, 0, 0, 0, 0);
    const std::string text = job.Write({.plain = true});
    EXPECT_TRUE(Holds(text,
                      "\"color\":3,\"hidden\":1,\"group\":\"Road\",\"description\":"
                      "\"two\\u000alines\""))
        << text;
    EXPECT_TRUE(Holds(text, "\"text\":\"label\",\"height\":2.5,\"rotation\":30")) << text;
}

TEST(GeoJsonWriterTest, ALineWithSomeHeightsMissingHasNone) {
    GeoJsonJob job;
    DrawPath(job.db, {{0, 0, 5, 0}, {10, 0, kNone, 0}});
    std::string text;
    const DrawingReport report = job.WriteTo(text, {.plain = true});
    EXPECT_EQ(report.GetRows().at(0).what, "LineString without heights, of which some are missing");
    EXPECT_TRUE(Holds(text, "[[0,0],[10,0]]"));
}

TEST(GeoJsonWriterTest, AJobWithoutSystemIsRefusedUnlessCoordinatesArePlain) {
    DrawingJob job;
    const auto sink = [](std::string_view) {};
    EXPECT_THROW(GeoJsonWriter(job.db, {}, sink), OptionError);
    EXPECT_NO_THROW(GeoJsonWriter(job.db, {.plain = true}, sink));
    EXPECT_THROW(GeoJsonWriter(job.db, {.plain = true, .tolerance = 0}, sink), OptionError);
}

TEST(GeoJsonWriterTest, WhatHasNoPositionIsLeftOutWithTheReason) {
    GeoJsonJob job;
    const std::array at{1.0, 2.0, 3.0};
    const std::array lost{kNone, 2.0, 3.0};
    job.db.AddBitmap(at.data(), u"photo", CVector(1, 1));
    job.db.AddCoordRec(lost.data(), u"A", 0, SurveyCoordType{1}, 0);
    const std::array far{1e30, 1e30, 0.0};
    job.db.AddCoordRec(far.data(), u"B", 0, SurveyCoordType{1}, 0);
    std::string text;
    const DrawingReport report = job.WriteTo(text, {});
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 3U);
    EXPECT_TRUE(Holds(text, "\"features\":[\n]}"));
}

TEST(GeoJsonWriterTest, APolylineIsALineStringOnItsLayerWithItsCode) {
    GeoJsonJob job;
    job.db.AddLayer(u"Kerb", 3, 2);
    job.db.SetCurrentLayer(u"Kerb");
    DrawPath(job.db, {{0, 0, 5, 0}, {10, 0, 6, 0}}, 4, 77);
    EXPECT_TRUE(Holds(job.Write({.plain = true}),
                      "\"geometry\":{\"type\":\"LineString\",\"coordinates\":[[0,0,5],[10,0,6]]},"
                      "\"properties\":{\"kind\":\"polyline\",\"layer\":\"Kerb\",\"code\":77}}"))
        << job.Write({.plain = true});
}

TEST(GeoJsonWriterTest, OriginsFlagsTimesTiesLinesAndSettingsAreLostAndSaidToBe) {
    GeoJsonJob job;
    const std::array at{1.0, 2.0, 3.0};
    const CqHandle point = job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{4}, 99);
    ASSERT_EQ(job.db.EditCoordRecTime(point, 86400), 1);
    std::string text;
    const DrawingReport report = job.WriteTo(text, {.plain = true});
    EXPECT_TRUE(Holds(text, "\"properties\":{\"kind\":\"point\",\"layer\":\"0\",\"name\":\"A\"}}"));
    EXPECT_FALSE(Holds(text, "32632"));
    bool said = false;
    for (const std::string& note : report.GetNotes()) {
        said =
            said || (Holds(note, "times and flags of points") && Holds(note, "ties of vertices") &&
                     Holds(note, "settings and the background image") && Holds(note, "line types"));
    }
    EXPECT_TRUE(said) << testing::PrintToString(report.GetNotes());
}

TEST(GeoJsonWriterTest, PlainHeightsAreAsInTheJob) {
    GeoJsonJob job;
    const std::array at{1.0, 2.0, 10.0};
    job.db.AddCoordRec(at.data(), u"A", 0, SurveyCoordType{1}, 0);
    EXPECT_TRUE(Holds(job.Write({.plain = true, .unit = LengthUnit::Foot}), "[1,2,10]"));
}

TEST(GeoJsonWriterTest, NumbersThatAreNoneAreNotWritten) {
    GeoJsonJob job;
    const std::array at{1.0, 2.0, 3.0};
    job.db.AddText(at.data(), u"a", 0, 0, u"", kNone, 0, 0, 0, 0, 0);
    job.db.AddText(at.data(), u"b", 0, 0, u"", 1, std::numeric_limits<double>::infinity(), 0, 0, 0,
                   0);
    const std::array high{500000.0, 0.0, 1e308};
    job.db.AddCoordRec(high.data(), u"A", 0, SurveyCoordType{1}, 0);
    DrawPath(job.db, {{-1e308, 0, 1, 0.5}, {1e308, 0, 1, 0}});
    for (const bool plain : {true, false}) {
        std::string text;
        const DrawingReport report =
            job.WriteTo(text, {.plain = plain, .unit = LengthUnit::Kilometre});
        EXPECT_EQ(report.Get(DrawingFate::LeftOut), plain ? 3U : 4U);
        EXPECT_FALSE(Holds(text, "inf")) << text;
        EXPECT_FALSE(Holds(text, "nan"));
        EXPECT_FALSE(Holds(text, ":,"));
        EXPECT_FALSE(Holds(text, "[,"));
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
