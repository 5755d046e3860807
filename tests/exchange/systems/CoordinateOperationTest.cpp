#include "cqsurvey/exchange/CoordinateOperation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <utility>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

namespace {

CoordinateOperation Make(const char* from, const char* to) {
    return {CoordinateSystem::Find(from), CoordinateSystem::Find(to)};
}

/// The length of the ellipsoid's meridian (GRS80) between two latitudes in degrees, summed up in
/// small pieces.
double MeridianLength(double from, double to) {
    constexpr double kAxis = 6378137.0;
    constexpr double kFlattening = 1.0 / 298.257222101;
    constexpr double kSquare = kFlattening * (2.0 - kFlattening);
    constexpr int kPieces = 200000;
    const double step = (to - from) * std::numbers::pi / 180.0 / kPieces;
    double length = 0.0;
    for (int i = 0; i < kPieces; ++i) {
        const double latitude = from * std::numbers::pi / 180.0 + (i + 0.5) * step;
        const double sine = std::sin(latitude);
        length += kAxis * (1.0 - kSquare) / std::pow(1.0 - kSquare * sine * sine, 1.5) * step;
    }
    return length;
}

TEST(CoordinateOperationTest, TheOriginOfAPlaneSystemIsAtZero) {
    CoordinateOperation operation = Make("EPSG:6668", "EPSG:6677");
    double east = 139.0 + 50.0 / 60.0;
    double north = 36.0;
    ASSERT_TRUE(operation.Transform(east, north));
    EXPECT_NEAR(east, 0.0, 1e-6);
    EXPECT_NEAR(north, 0.0, 1e-6);
}

TEST(CoordinateOperationTest, TheEastingComesFirstEvenWhereTheSystemSaysNorthingFirst) {
    // EPSG:6677 lists the northing before the easting, and EPSG:4326 the latitude first.
    CoordinateOperation operation = Make("EPSG:6668", "EPSG:6677");
    double east = 139.0 + 50.0 / 60.0;
    double north = 36.5;
    ASSERT_TRUE(operation.Transform(east, north));
    EXPECT_NEAR(east, 0.0, 1e-6);
    EXPECT_NEAR(north, 0.9999 * MeridianLength(36.0, 36.5), 1e-4);
    east = 139.9;
    north = 36.0;
    ASSERT_TRUE(operation.Transform(east, north));
    EXPECT_GT(east, 5000.0);
    EXPECT_LT(std::fabs(north), 10.0);
}

TEST(CoordinateOperationTest, AFalseOriginInFeetComesOutInFeet) {
    // The false origin of California zone 6: 2,000,000 m and 500,000 m in US survey feet.
    CoordinateOperation operation = Make("EPSG:4269", "EPSG:2230");
    double east = -(116.0 + 15.0 / 60.0);
    double north = 32.0 + 10.0 / 60.0;
    ASSERT_TRUE(operation.Transform(east, north));
    EXPECT_NEAR(east, 6561666.667, 1e-3);
    EXPECT_NEAR(north, 1640416.667, 1e-3);
}

TEST(CoordinateOperationTest, TheOperationAndItsAccuracyAreToldAfterTheFirstPosition) {
    CoordinateOperation operation = Make("EPSG:4326", "EPSG:2230");
    EXPECT_EQ(operation.GetName(), "");
    double east = -117.1;
    double north = 32.8;
    ASSERT_TRUE(operation.Transform(east, north));
    EXPECT_NE(operation.GetName().find("NAD83 to WGS 84"), std::string::npos)
        << operation.GetName();
    EXPECT_EQ(operation.GetAccuracy(), 4.0);
}

TEST(CoordinateOperationTest, ItMayBeMoved) {
    CoordinateOperation first = Make("EPSG:4326", "EPSG:32633");
    CoordinateOperation operation = std::move(first);
    double east = 15.0;
    double north = 0.0;
    ASSERT_TRUE(operation.Transform(east, north));
    EXPECT_NEAR(east, 500000.0, 1e-6);
    EXPECT_NEAR(north, 0.0, 1e-6);
}

TEST(CoordinateOperationTest, APositionThatCannotBeTransformedStaysAsItIs) {
    CoordinateOperation operation = Make("EPSG:4326", "EPSG:32633");
    double east = 15.0;
    double north = 95.0;
    EXPECT_FALSE(operation.Transform(east, north));
    EXPECT_EQ(east, 15.0);
    EXPECT_EQ(north, 95.0);
    north = std::nan("");
    EXPECT_FALSE(operation.Transform(east, north));
    north = 10.0;
    EXPECT_TRUE(operation.Transform(east, north));
}

TEST(CoordinateOperationTest, SystemsWithoutAWayBetweenThemAreRefused) {
    // Two systems of the Earth and the Moon.
    EXPECT_THROW(Make("IAU_2015:30100", "EPSG:2230"), OptionError);
}

}  // namespace

}  // namespace cqsurvey::exchange
