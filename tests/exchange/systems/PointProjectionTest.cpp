#include "exchange/systems/PointProjection.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "support/TempDir.h"

namespace cqsurvey::exchange {
namespace {

class PointProjectionTest : public testing::Test {
 protected:
    PointProjectionTest() { db.CreateNew(folder.Path(u"a.job")); }

    TempDir folder;
    CqSurveyDB db;
    CqJobSystem own{db};
    CoordinateSystem degrees = CoordinateSystem::Find("EPSG:4269");
};

TEST_F(PointProjectionTest, PositionsAndHeightsComeIntoTheUnitOfTheJob) {
    ASSERT_EQ(own.SetSystem(u"EPSG:2230"), 1);
    PointProjection projection(db, degrees, std::nullopt, "");
    ImportedPoint point{u"A", -116.25, 32.0 + 1.0 / 6.0, 1200.0};
    ASSERT_TRUE(projection.Apply(point));
    EXPECT_NEAR(point.easting, 6561666.667, 1e-3);
    EXPECT_NEAR(point.northing, 1640416.667, 1e-3);
    EXPECT_NEAR(point.height, 3937.0, 1e-9) << "1200 m are 3937 US survey feet";
    point = {u"B", -116.25, 32.5, std::nan("")};
    ASSERT_TRUE(projection.Apply(point));
    EXPECT_TRUE(std::isnan(point.height));
    ImportReport report;
    projection.Report(report);
    EXPECT_NE(report.operation.find("from EPSG:4269 NAD83 to EPSG:2230 NAD83 / California zone 6"),
              std::string::npos)
        << report.operation;
    EXPECT_EQ(report.accuracy, 0.0);
    EXPECT_EQ(report.heightChange, "changed from the unit m to us-ft");
}

TEST_F(PointProjectionTest, TheUnitOfTheHeightsMayBeNamed) {
    ASSERT_EQ(own.SetSystem(u"EPSG:2230"), 1);
    PointProjection projection(db, degrees, CqLengthUnit::UsSurveyFoot, "");
    ImportedPoint point{u"A", -116.25, 32.5, 100.0};
    ASSERT_TRUE(projection.Apply(point));
    EXPECT_EQ(point.height, 100.0);
}

TEST_F(PointProjectionTest, APlaneSystemMayBeProjectedIntoAnother) {
    ASSERT_EQ(db.SetJCoordDivision(9), 1);
    PointProjection projection(db, CoordinateSystem::Find("EPSG:6678"), std::nullopt, "");
    ImportedPoint point{u"A", 0.0, 0.0, 5.0};
    ASSERT_TRUE(projection.Apply(point));
    // The origin of zone X is at 40 degrees north, 140 degrees 50 minutes east.
    EXPECT_NEAR(point.easting, 85400.0, 500.0);
    EXPECT_NEAR(point.northing, 444400.0, 1500.0);
    EXPECT_EQ(point.height, 5.0);
}

TEST_F(PointProjectionTest, APositionOutsideOfTheWorldIsNotProjected) {
    ASSERT_EQ(db.SetJCoordDivision(9), 1);
    PointProjection projection(db, CoordinateSystem::Find("EPSG:6668"), std::nullopt, "");
    ImportedPoint point{u"A", 139.0, 95.0, 1.0};
    EXPECT_FALSE(projection.Apply(point));
    EXPECT_EQ(point.northing, 95.0);
    EXPECT_EQ(point.height, 1.0);
}

TEST_F(PointProjectionTest, AJobWithoutAProjectedSystemIsRefused) {
    EXPECT_THROW(PointProjection(db, degrees, std::nullopt, ""), OptionError);
    ASSERT_EQ(own.SetSystem(u"EPSG:4326"), 1);
    EXPECT_THROW(PointProjection(db, degrees, std::nullopt, ""), OptionError);
    ASSERT_EQ(own.SetSystem(u"EPSG:2230"), 1);
    ASSERT_EQ(own.SetUnit(CqLengthUnit::Metre), 1);
    EXPECT_THROW(PointProjection(db, degrees, std::nullopt, ""), OptionError);
}

TEST_F(PointProjectionTest, AJobInDegreesTakesNoPoints) {
    EXPECT_NO_THROW(RequirePlaneJob(db));
    ASSERT_EQ(own.SetSystem(u"some local grid"), 1);
    EXPECT_NO_THROW(RequirePlaneJob(db));
    ASSERT_EQ(own.SetSystem(u"EPSG:2230"), 1);
    EXPECT_NO_THROW(RequirePlaneJob(db));
    ASSERT_EQ(own.SetSystem(u"EPSG:4326"), 1);
    EXPECT_THROW(RequirePlaneJob(db), OptionError);
}

}  // namespace
}  // namespace cqsurvey::exchange
