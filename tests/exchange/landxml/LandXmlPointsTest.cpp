#include "cqsurvey/exchange/LandXmlReader.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/landxml/DrawnLandXml.h"

namespace cqsurvey::exchange {
namespace {

TEST(LandXmlPointsTest, PointsAreReadWithTheNorthingFirst) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">200.5 100.25 7.125</CgPoint></CgPoints>"),
              List{"point A 100.25,200.5,7.125"});
}

TEST(LandXmlPointsTest, APointMayHaveElementsInsideAndKeepsItsText) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">1 2<Feature code=\"x\"><Property/></Feature> 3"
                    "</CgPoint></CgPoints>"),
              List{"point A 2,1,3"});
}

TEST(LandXmlPointsTest, APointOfTwoNumbersHasNoHeight) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"A\">\n 200\t100\n</CgPoint></CgPoints>"),
              List{"point A 100,200,-"});
}

TEST(LandXmlPointsTest, CodesDescriptionsAndCollectionsAreKept) {
    LandXmlJob job;
    static_cast<void>(job.Read(LandXmlText(
        "<CgPoints name=\"Road\"><CgPoint name=\"A\" code=\"12\" desc=\"a &lt;stone&gt;\">1 2"
        "</CgPoint><CgPoint name=\"B\" code=\"PCOR\" desc=\"found\">3 4</CgPoint></CgPoints>")));
    const List details = Details(job.db);
    EXPECT_NE(details.at(0).find(" c12 A"), std::string::npos);
    EXPECT_TRUE(details.at(0).ends_with("p1,0,Road,a <stone>")) << details.at(0);
    EXPECT_TRUE(details.at(1).ends_with("p1,0,Road,PCOR found")) << details.at(1);
}

TEST(LandXmlPointsTest, CollectionsInCollectionsAreGroupsOfTheirOwn) {
    LandXmlJob job;
    static_cast<void>(
        job.Read(LandXmlText("<CgPoints name=\"Outer\"><CgPoint name=\"A\">1 2</CgPoint>"
                             "<CgPoints name=\"Inner\"><CgPoint name=\"B\">3 4</CgPoint></CgPoints>"
                             "</CgPoints>")));
    const List details = Details(job.db);
    ASSERT_EQ(details.size(), 2U);
    EXPECT_TRUE(details.at(0).ends_with(",Inner,"));
    EXPECT_TRUE(details.at(1).ends_with(",Outer,"));
}

TEST(LandXmlPointsTest, APointStandsWhereAChainOfNamesLeads) {
    EXPECT_EQ(Drawn("<CgPoints><CgPoint name=\"C\" pntRef=\"B\"/><CgPoint name=\"A\">1 2 3"
                    "</CgPoint><CgPoint name=\"B\" pntRef=\"A\"/></CgPoints>"),
              (List{"point A 2,1,3", "point B 2,1,3", "point C 2,1,3"}));
}

TEST(LandXmlPointsTest, NamesThatLeadInACircleOrNowhereAreLeftOut) {
    const DrawingRow row =
        RowOf("CgPoint",
              "<CgPoints><CgPoint name=\"A\" pntRef=\"B\"/><CgPoint name=\"B\" "
              "pntRef=\"A\"/><CgPoint name=\"C\" pntRef=\"nobody\"/></CgPoints>");
    EXPECT_EQ(row.fate, DrawingFate::LeftOut);
    EXPECT_EQ(row.count, 3U);
    EXPECT_EQ(row.what, "it names a point that the file does not have, or itself");
}

TEST(LandXmlPointsTest, APointWithoutNumbersIsLeftOutWithItsLine) {
    const DrawingRow row =
        RowOf("CgPoint", "<CgPoints>\n<CgPoint name=\"A\">1 two 3</CgPoint></CgPoints>");
    EXPECT_EQ(row.fate, DrawingFate::LeftOut);
    EXPECT_EQ(row.what, "its text is not two or three numbers");
    EXPECT_EQ(row.place, 5U);
}

TEST(LandXmlPointsTest, AttributesThatAJobCannotHoldAreTold) {
    LandXmlJob job;
    EXPECT_TRUE(Notes(job.Read(LandXmlText("<CgPoints><CgPoint name=\"A\" state=\"proposed\" "
                                           "oID=\"7\">1 2</CgPoint></CgPoints>")),
                      "of CgPoint, these attributes were left out: oID, state"));
}

TEST(LandXmlPointsTest, ANameThatTheJobHasIsLeftOutOrGetsANumber) {
    const std::string text =
        "<CgPoints><CgPoint name=\"A\">1 2</CgPoint><CgPoint name=\"A\">3 4"
        "</CgPoint></CgPoints>";
    EXPECT_EQ(Drawn(text), List{"point A 2,1,-"});
    LandXmlReadOptions options;
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(Drawn(text, options), (List{"point A 2,1,-", "point A_2 4,3,-"}));
}

TEST(LandXmlPointsTest, ALongNameIsCutAndItsLinesFindItByTheWholeName) {
    LandXmlJob job;
    const DrawingReport report = job.Read(LandXmlText(
        "<CgPoints><CgPoint name=\"a name of more than nineteen\">1 2</CgPoint></CgPoints>" +
        PlanFeatureText("<Line><Start pntRef=\"a name of more than nineteen\"/><End>3 4</End>"
                        "</Line>")));
    EXPECT_EQ(job.List(), (List{"point a name of more than 2,1,-", "line 2,1,- 4,3,-"}));
    EXPECT_EQ(report.GetRows().front().what, "survey point, its name cut to what a job can keep");
}

}  // namespace
}  // namespace cqsurvey::exchange
