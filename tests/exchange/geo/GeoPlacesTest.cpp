#include "exchange/geo/GeoPlaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/DrawingJob.h"
#include "exchange/drawing/DrawingWalk.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// The shape of the job's only entity.
GeoShape ShapeIn(GeoPlaces& places, CqSurveyDB& db) {
    GeoShape shape;
    WalkDrawing(db, nullptr, [&](const CqCadEntity& entity, const auto& vertices) {
        shape = places.ShapeOf(entity, vertices);
    });
    return shape;
}

TEST(GeoPlacesTest, APlaceIsLongitudeLatitudeAndMetres) {
    DrawingJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:32632"), 1);
    DrawPoint(job.db, u"P", 500000, 0, 10);
    GeoPlaces places(job.db, false, LengthUnit::Foot, 0.001);
    const GeoShape shape = ShapeIn(places, job.db);
    ASSERT_EQ(shape.places.size(), 1U);
    EXPECT_NEAR(shape.places[0].x, 9.0, 1e-11);
    EXPECT_NEAR(shape.places[0].y, 0.0, 1e-11);
    EXPECT_NEAR(shape.places[0].z, 3.048, 1e-12);
    EXPECT_EQ(places.Text(shape, shape.places[0]), "9,0,3.048");
    EXPECT_EQ(places.Text(9.123456789012345), "9.12345678901");
}

TEST(GeoPlacesTest, PlainPlacesAreThoseOfTheJobToTheLastBit) {
    DrawingJob job;
    DrawPoint(job.db, u"P", 0.1 + 0.2, 6257926.788429 / 7, 10);
    GeoPlaces places(job.db, true, LengthUnit::Foot, 0.001);
    const GeoShape shape = ShapeIn(places, job.db);
    EXPECT_EQ(shape.places[0].x, 0.1 + 0.2);
    EXPECT_EQ(shape.places[0].z, 10.0);
    EXPECT_EQ(places.Text(0.1 + 0.2), "0.30000000000000004");
}

TEST(GeoPlacesTest, ACircleIsClosedAndWithinTheToleranceOfItsLines) {
    DrawingJob job;
    DrawCircle(job.db, 100, 200, 10);
    GeoPlaces places(job.db, true, std::nullopt, 0.01);
    const GeoShape shape = ShapeIn(places, job.db);
    EXPECT_TRUE(shape.broken);
    EXPECT_LE(shape.deviation, 0.01);
    EXPECT_EQ(shape.places.front().x, shape.places.back().x);
    EXPECT_EQ(shape.places.front().y, shape.places.back().y);
    for (const Vec3& place : shape.places) {
        EXPECT_NEAR(std::hypot(place.x - 100, place.y - 200), 10.0, 1e-9);
    }
}

TEST(GeoPlacesTest, OneMissingHeightLosesThemAllAndIsSaidTo) {
    DrawingJob job;
    DrawPath(job.db, {{0, 0, 5, 0}, {1, 0, kNone, 0}});
    GeoPlaces places(job.db, true, std::nullopt, 0.01);
    const GeoShape shape = ShapeIn(places, job.db);
    EXPECT_FALSE(shape.hasHeights);
    EXPECT_TRUE(shape.lostHeights);
    EXPECT_EQ(places.Text(shape, shape.places[0]), "0,0");
}

TEST(GeoPlacesTest, AJobThatIsNotOnTheGlobeIsRefused) {
    DrawingJob job;
    EXPECT_THROW(GeoPlaces(job.db, false, std::nullopt, 0.01), OptionError);
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:4326"), 1);
    EXPECT_THROW(GeoPlaces(job.db, false, std::nullopt, 0.01), OptionError);
    EXPECT_THROW(GeoPlaces(job.db, true, std::nullopt, kNone), OptionError);
}

TEST(GeoPlacesTest, TheReportTellsTheWayToTheGlobeAndItsAccuracyAndTheUnitOfHeights) {
    DrawingJob job;
    ASSERT_EQ(CqJobSystem(job.db).SetSystem(u"EPSG:25832"), 1);
    DrawPoint(job.db, u"P", 500000, 5500000, 10);
    DrawingReport report;
    GeoPlaces places(job.db, false, LengthUnit::Metre, 0.001);
    static_cast<void>(ShapeIn(places, job.db));
    places.Report(report);
    EXPECT_EQ(report.unit, "degree");
    EXPECT_TRUE(report.GetNotes().at(0).starts_with("positions went to WGS 84 by: "));
    EXPECT_TRUE(report.GetNotes().at(1).starts_with("heights are in metres above"));
    DrawingReport plain;
    GeoPlaces(job.db, true, LengthUnit::Foot, 0.001).Report(plain);
    EXPECT_EQ(plain.unit, "foot");
    EXPECT_EQ(plain.GetNotes().size(), 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange
