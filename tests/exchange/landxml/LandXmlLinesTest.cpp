#include "cqsurvey/exchange/LandXmlReader.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/landxml/DrawnLandXml.h"

namespace cqsurvey::exchange {
namespace {

TEST(LandXmlLinesTest, SegmentsThatFollowEachOtherAreOnePolyline) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start>0 0 1</Start><End>0 10 2</End></Line>"
                                    "<Line><Start>0 10 2</Start><End>5 10 3</End></Line>")),
              List{"line 0,0,1 10,0,2 10,5,3"});
}

TEST(LandXmlLinesTest, SegmentsApartArePolylinesOfTheirOwn) {
    const std::string text = PlanFeatureText(
        "<Line><Start>0 0</Start><End>0 10</End></Line>"
        "<Line><Start>1 10</Start><End>5 10</End></Line>");
    EXPECT_EQ(Drawn(text), (List{"line 0,0,- 10,0,-", "line 10,1,- 10,5,-"}));
    EXPECT_EQ(RowOf("PlanFeature", text).what, "several polylines");
}

TEST(LandXmlLinesTest, ASegmentWrittenBackwardsIsTurnedRound) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start>0 10</Start><End>0 0</End></Line>"
                                    "<Line><Start>0 10</Start><End>5 10</End></Line>"
                                    "<Line><Start>9 9</Start><End>5 10</End></Line>")),
              List{"line 0,0,- 10,0,- 10,5,- 9,9,-"});
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start>0 0</Start><End>0 10</End></Line>"
                                    "<Curve rot=\"ccw\" radius=\"5\"><Start>10 10</Start>"
                                    "<End>0 10</End></Curve>")),
              List{"line 0,0,- 10,0,-(-1) 10,10,-"});
}

TEST(LandXmlLinesTest, AnIrregularLineHasItsEndsOnce) {
    EXPECT_EQ(Drawn(PlanFeatureText("<IrregularLine><Start>0 0 1</Start><End>3 3 4</End>"
                                    "<PntList3D>0 0 1 1 1 2 2 1 3 3 3 4</PntList3D>"
                                    "</IrregularLine>")),
              List{"line 0,0,1 1,1,2 1,2,3 3,3,4"});
    EXPECT_EQ(Drawn(PlanFeatureText("<IrregularLine><Start>0 0</Start><End>3 3</End>"
                                    "<PntList2D>1 1 2 1</PntList2D></IrregularLine>")),
              List{"line 0,0,- 1,1,- 1,2,- 3,3,-"});
}

TEST(LandXmlLinesTest, AChainGoesThroughThePointsThatItNames) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">1 2</CgPoint><CgPoint name=\"B\">3 4</CgPoint>"
                    "</CgPoints>" +
                    PlanFeatureText("<Chain>A\n B</Chain>"))
                  .back(),
              "line 2,1,- 4,3,-");
}

TEST(LandXmlLinesTest, ALineIsTiedToThePointsThatItNamesWhereverTheyStand) {
    const std::string line = PlanFeatureText(
        "<Line><Start pntRef=\"A\"/><End pntRef=\"B\"/></Line><Line><Start pntRef=\"B\"/>"
        "<End>7 8</End></Line>");
    const std::string points =
        "<CgPoints><CgPoint name=\"A\">1 2 3</CgPoint><CgPoint name=\"B\">4 5</CgPoint></CgPoints>";
    for (const std::string& text : {points + line, line + points}) {
        LandXmlJob job;
        const DrawingReport report = job.Read(LandXmlText(text));
        EXPECT_EQ(job.List(), (List{"point A 2,1,3", "point B 5,4,-", "line 2,1,3 5,4,- 8,7,-"}));
        EXPECT_EQ(report.Get(DrawingFate::LeftOut), 0U);
        List ties;
        for (const CqCadEntityPtr& entity : Entities(job.db)) {
            if (entity->GetType() == EntVertex) {
                CqCoordRec point;
                const CqHandle tied = entity->GetMcadSiPointHandle();
                ties.push_back(
                    tied == 0 || job.db.GetCoordRec(job.db.GetCoordRecHandleByCadEntityHandle(tied),
                                                    point) == 0
                        ? ""
                        : ToUtf8(point.GetPtName()));
            }
        }
        EXPECT_EQ(ties, (List{"A", "B", ""}));
    }
}

TEST(LandXmlLinesTest, FeaturesStayInOrderWhenOneWaitsForAPoint) {
    EXPECT_EQ(Drawn(PlanFeatureText("<Line><Start pntRef=\"A\"/><End>0 1</End></Line>") +
                    PlanFeatureText("<Line><Start>5 5</Start><End>6 6</End></Line>") +
                    "<CgPoints><CgPoint name=\"A\">1 2</CgPoint></CgPoints>"),
              (List{"point A 2,1,-", "line 2,1,- 1,0,-", "line 5,5,- 6,6,-"}));
}

TEST(LandXmlLinesTest, ASegmentToAnUnknownPointIsLeftOutAndTheOthersAreDrawn) {
    const std::string text = PlanFeatureText(
        "<Line><Start>0 0</Start><End>0 1</End></Line>"
        "<Line><Start>0 1</Start><End pntRef=\"nobody\"/></Line>");
    EXPECT_EQ(Drawn(text), List{"line 0,0,- 1,0,-"});
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(text));
    EXPECT_EQ(report.Get(DrawingFate::LeftOut), 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange
