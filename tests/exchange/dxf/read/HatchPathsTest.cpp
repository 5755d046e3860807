#include "exchange/dxf/read/HatchPaths.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/dxf/DxfText.h"
#include "exchange/dxf/read/RecordReader.h"

namespace cqsurvey::exchange::dxf {
namespace {

/// The outlines of a hatch with these groups.
std::vector<std::vector<PathVertex>> PathsOf(const std::string& groups) {
    const std::string text = Groups("0 HATCH|2 SOLID|70 1|71 0|" + groups + "|75 0|76 1|0 EOF");
    StringSource source(text);
    GroupReader reader(source);
    RecordReader records(reader, DxfReadOptions().mostEntityBytes);
    Record record;
    EXPECT_TRUE(records.Next(record));
    CurveFitter fitter(0.001, true);
    return ReadHatchPaths(record, fitter);
}

TEST(HatchPathsTest, APolylineKeepsItsBulges) {
    const auto paths = PathsOf("91 1|92 2|72 1|73 1|93 2|10 0|20 0|42 1|10 4|20 0|42 0.5|97 0");
    ASSERT_EQ(paths.size(), 1U);
    ASSERT_GE(paths[0].size(), 2U);
    EXPECT_EQ(paths[0][0].bulge, 1.0);
    EXPECT_EQ(paths[0][1].at.x, 4.0);
    EXPECT_EQ(paths[0][1].bulge, 0.5);
}

TEST(HatchPathsTest, LinesAndArcsAreJoinedAndTheirTurnKept) {
    // A quarter of a circle clockwise; its angles are written the other way round.
    const auto paths = PathsOf(
        "91 1|92 1|93 2|72 2|10 0|20 0|40 5|50 270|51 360|73 0|72 1|10 5|20 0|11 0|21 5|97 0");
    ASSERT_EQ(paths.size(), 1U);
    ASSERT_GE(paths[0].size(), 2U);
    EXPECT_NEAR(paths[0][0].at.x, 0.0, 1e-9);
    EXPECT_NEAR(paths[0][0].at.y, 5.0, 1e-9);
    EXPECT_NEAR(paths[0][0].bulge, -std::tan(std::atan(1.0) / 2), 1e-9);
}

TEST(HatchPathsTest, EllipsesAreFittedWithinTheTolerance) {
    const auto paths =
        PathsOf("91 1|92 1|93 1|72 3|10 0|20 0|11 10|21 0|40 0.5|50 0|51 360|73 1|97 0");
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_GT(paths[0].size(), 8U);
    for (const PathVertex& vertex : paths[0]) {
        const double x = vertex.at.x / 10;
        const double y = vertex.at.y / 5;
        EXPECT_NEAR(x * x + y * y, 1.0, 0.001);
    }
}

TEST(HatchPathsTest, SeveralOutlinesAreSeveralPaths) {
    EXPECT_EQ(PathsOf("91 2|92 2|72 0|73 1|93 3|10 0|20 0|10 4|20 0|10 4|20 4|97 0|92 18|72 0|73 "
                      "1|93 3|10 1|20 1|10 2|20 1|10 2|20 2|97 0")
                  .size(),
              2U);
    EXPECT_TRUE(PathsOf("91 0").empty());
}

TEST(HatchPathsTest, CountsThatLieAreAnError) {
    EXPECT_THROW(PathsOf("91 1|92 2|72 0|73 1|93 1000000|10 0|20 0|97 0"), ExchangeError);
    EXPECT_THROW(PathsOf("91 1|92 1|93 5|72 1|10 0|20 0|11 1|21 1|97 0"), ExchangeError);
    EXPECT_THROW(PathsOf("91 7|92 2|72 0|73 1|93 1|10 0|20 0|97 0"), ExchangeError);
    EXPECT_THROW(PathsOf("91 -1"), ExchangeError);
    EXPECT_THROW(PathsOf("91 1|92 1e300|93 1"), ExchangeError);
    EXPECT_THROW(PathsOf("91 1|92 1|93 1|72 nan"), ExchangeError);
}

TEST(HatchPathsTest, CountsOfSourcesThatAreNotThereAreNotGoneThroughOneByOne) {
    // With one step for each source that is said to be there, this would not end within an hour.
    constexpr int kPaths = 200'000;
    std::string groups = "91 " + std::to_string(kPaths);
    for (int i = 0; i < kPaths; ++i) {
        groups += "|92 2|93 0|97 500000";
    }
    EXPECT_TRUE(PathsOf(groups).empty());
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
