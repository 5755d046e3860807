#include "cqsurvey/exchange/DxfReader.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/dxf/read/DrawnDxf.h"

namespace cqsurvey::exchange {
namespace {

TEST(DxfPointsTest, EveryPointBecomesASurveyPointUnlessTheRulesSayOtherwise) {
    const std::string points = "0 POINT|8 A|10 1|20 2|30 3|0 POINT|8 B|10 4|20 5|30 6";
    EXPECT_EQ(Drawn(points), (List{"point  1,2,3", "point  4,5,6"}));
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Layer, "b", ""}};
    EXPECT_EQ(Drawn(points, options), List{"point  4,5,6"});
    options.points.emplace();
    EXPECT_TRUE(Drawn(points, options).empty());
}

TEST(DxfPointsTest, BlocksBecomeSurveyPointsNamedByAnAttribute) {
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Block, "spot", "nr"}};
    DrawnJob job;
    static_cast<void>(
        job.Draw("0 INSERT|8 0|66 1|2 SPOT|10 1|20 2|30 0|0 ATTRIB|2 NR|1 K7|"
                 "0 ATTRIB|2 HEIGHT|1 12.5|0 ATTRIB|2 CODE|1 9|0 ATTRIB|"
                 "2 DESCRIPTION|1 pipe|0 SEQEND",
                 options));
    EXPECT_EQ(job.List(), List{"point K7 1,2,12.5"});
    CqCoordRec record;
    ASSERT_NE(job.db.GetCoordRec(job.db.GetCoordRecHandleByPtName(u"K7"), record), 0);
    EXPECT_EQ(record.GetCode(), 9);
    CString description;
    job.db.GetCoordDescription(job.db.GetCoordRecHandleByPtName(u"K7"), description);
    EXPECT_EQ(description, u"pipe");
}

TEST(DxfPointsTest, ANameThatTheJobHasIsRefusedOrNumbered) {
    DxfReadOptions options;
    options.points = {{DxfPointRule::Kind::Block, "S", "N"}};
    const std::string insert = "0 INSERT|66 1|2 S|10 1|20 2|0 ATTRIB|2 N|1 P|0 SEQEND";
    const std::string two = insert + "|" + insert;
    EXPECT_EQ(Drawn(two, options), List{"point P 1,2,0"});
    options.duplicates = Duplicates::Rename;
    EXPECT_EQ(Drawn(two, options), (List{"point P 1,2,0", "point P_2 1,2,0"}));
}

TEST(DxfPointsTest, PointsAreNamedAfterTheNearestTextsEachTextOnce) {
    DxfReadOptions options;
    options.namesFromTexts = true;
    const std::string text = "|0 TEXT|8 Nr|40 1|10 ";
    EXPECT_EQ(Drawn("0 POINT|8 0|10 0|20 0|0 POINT|8 0|10 2|20 0|0 POINT|8 0|10 90|20 0" + text +
                        "0.4|20 0|1 near" + text + "3|20 0|1 next",
                    options),
              (List{"point near 0,0,0", "point next 2,0,0", "point  90,0,0",
                    "text near 0.4,0,0 h1 r0 a00", "text next 3,0,0 h1 r0 a00"}));
    options.nameLayer = "Other";
    EXPECT_EQ(Drawn("0 POINT|8 0|10 0|20 0" + text + "0.4|20 0|1 near", options).at(0),
              "point  0,0,0");
}

}  // namespace
}  // namespace cqsurvey::exchange
