#include "cqsurvey/exchange/LandXmlReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "exchange/landxml/DrawnLandXml.h"

namespace cqsurvey::exchange {
namespace {

TEST(LandXmlArcsTest, ACurveIsAnArcByAnyTwoOfRadiusCentreAndRotation) {
    const std::string ends = "<Start>0 10</Start><End>10 0</End>";
    const std::string centre = "<Center>0 0</Center>";
    for (const std::string& curve :
         {"<Curve rot=\"ccw\" radius=\"10\">" + ends + "</Curve>",
          "<Curve rot=\"ccw\">" + ends + centre + "</Curve>",
          "<Curve radius=\"10\">" + ends + centre + "</Curve>",
          "<Curve rot=\"ccw\" radius=\"10\">" + ends + centre + "</Curve>"}) {
        EXPECT_EQ(Drawn(PlanFeatureText(curve)), List{"line 10,0,-(0.414214) 0,10,-"}) << curve;
        EXPECT_EQ(RowOf("Curve", PlanFeatureText(curve)).fate, DrawingFate::Taken) << curve;
    }
}

TEST(LandXmlArcsTest, ClockwiseArcsBendToTheOtherSideAndMayBeTheLongWayRound) {
    const std::string ends = "<Start>0 10</Start><End>10 0</End>";
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\" radius=\"10\">" + ends + "</Curve>")),
              List{"line 10,0,-(-0.414214) 0,10,-"});
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\"><Center>0 0</Center>" + ends + "</Curve>")),
              List{"line 10,0,-(-2.41421) 0,10,-"});
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\" radius=\"10\" length=\"47.1\">" + ends +
                                    "</Curve>")),
              List{"line 10,0,-(-2.41421) 0,10,-"});
}

TEST(LandXmlArcsTest, ACurveThatEndsWhereItBeganIsAWholeCircle) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Curve rot=\"cw\" radius=\"10\"><Start>0 10</Start>"
                                    "<Center>0 0</Center><End>0 10</End></Curve>")),
              List{"line 10,0,-(-1) -10,0,-(-1) 10,0,-"});
}

TEST(LandXmlArcsTest, ACurveThatItsFileContradictsTellsHowFar) {
    const DrawingRow row =
        RowOf("Curve", PlanFeatureText("<Curve rot=\"ccw\" radius=\"10.01\"><Start>0 10</Start>"
                                       "<Center>0 0</Center><End>10 0</End></Curve>"));
    EXPECT_EQ(row.fate, DrawingFate::Converted);
    EXPECT_NEAR(row.deviation, 0.01, 1e-3);
}

TEST(LandXmlArcsTest, ACurveOfWhichTooLittleIsKnownIsDrawnStraightAndSaidToBe) {
    const std::string text =
        PlanFeatureText("<Curve radius=\"10\"><Start>0 10</Start><End>10 0</End></Curve>");
    EXPECT_EQ(Drawn(text), List{"line 10,0,- 0,10,-"});
    EXPECT_EQ(RowOf("Curve", text).fate, DrawingFate::Converted);
}

TEST(LandXmlArcsTest, ASpiralIsFittedWithArcsWithinTheTolerance) {
    // A clothoid of 60 m to a radius of 200 m, by its series.
    const double length = 60;
    const double a2 = 200 * length;
    const auto at = [&](double s) {
        const double t = s * s / (2 * a2);
        const double along = s * (1 - t * t / 10 + t * t * t * t / 216);
        const double across = s * (t / 3 - t * t * t / 42 + t * t * t * t * t / 1320);
        return std::pair(along, across);
    };
    const auto [x, y] = at(length);
    const std::string text = PlanFeatureText(
        "<Spiral rot=\"ccw\" spiType=\"clothoid\" length=\"60\" radiusStart=\"INF\" "
        "radiusEnd=\"200\"><Start>0 0</Start><End>" +
        std::to_string(y) + " " + std::to_string(x) + "</End></Spiral>");
    const DrawingRow row = RowOf("Spiral", text);
    EXPECT_EQ(row.what, "part of a polyline, with fitted arcs");
    EXPECT_LE(row.deviation, 0.001);
    EXPECT_GT(row.deviation, 0.0);
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(text)));
    double end = 0.0;
    int vertices = 0;
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        if (entity->GetType() == EntVertex) {
            double p[3];
            entity->GetPoint(p);
            double nearest = 1e9;
            for (int i = 0; i <= 60000; ++i) {
                const auto [u, v] = at(length * i / 60000);
                nearest = std::min(nearest, std::hypot(u - p[0], v - p[1]));
            }
            EXPECT_LT(nearest, 0.001);
            end = p[0];
            ++vertices;
        }
    }
    EXPECT_NEAR(end, x, 1e-6);
    EXPECT_GT(vertices, 3);
    EXPECT_LT(vertices, 20);
}

TEST(LandXmlArcsTest, ASpiralWithoutLengthIsDrawnStraightAndSaidToBe) {
    const std::string text = PlanFeatureText(
        "<Spiral rot=\"ccw\" spiType=\"clothoid\" radiusStart=\"INF\" radiusEnd=\"200\">"
        "<Start>0 0</Start><End>3 59</End></Spiral>");
    EXPECT_EQ(Drawn(text), List{"line 0,0,- 59,3,-"});
    EXPECT_EQ(RowOf("Spiral", text).fate, DrawingFate::Converted);
}

}  // namespace
}  // namespace cqsurvey::exchange
