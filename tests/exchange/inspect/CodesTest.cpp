#include <gtest/gtest.h>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

std::string Search(const std::string& common, const std::string& rare) {
    SurveyBuilder builder;
    for (int i = 0; i < 5; ++i) {
        builder.Add("P", i, i, 0, common);
    }
    builder.Add("rare", 0, 0, 0, rare);
    Findings findings;
    FindCodes(builder.survey, findings);
    return SurveyBuilder::Texts(findings);
}

TEST(InspectedCodes, OneLetterOffACommonCodeIsFound) {
    EXPECT_EQ(Search("TREE", "TRE"),
              "rare (#6) has the code \"TRE\", which no other point has; 5 points have \"TREE\"\n");
    for (const char* typo : {"TREEE", "TEE", "TERE", "TRED", "ATREE", "tree", "Trees"}) {
        EXPECT_NE(Search("TREE", typo), "") << typo;
    }
    EXPECT_NE(Search("EP", "ep"), "");
    EXPECT_NE(Search("BÄUM", "BAUM"), "");
    EXPECT_NE(Search("BLDG", "BLG"), "");
    EXPECT_NE(Search("TOP", "TPO"), "");
}

TEST(InspectedCodes, OtherCodesAreNot) {
    for (const char* other : {"TR", "TREASE", "ROAD", "ETRE", "EERT"}) {
        EXPECT_EQ(Search("TREE", other), "") << other;
    }
    EXPECT_EQ(Search("EP", "EC"), "") << "short codes differ by one letter on purpose";
    EXPECT_EQ(Search("TOP", "TOE"), "");
    EXPECT_EQ(Search("TOP", "TP"), "");
    EXPECT_EQ(Search("WALL1", "WALL2"), "") << "numbers count things";
    EXPECT_EQ(Search("WALL1", "WALL"), "");
    EXPECT_EQ(Search("WALL", "WALL7"), "");
}

TEST(InspectedCodes, ACodeUsedTwiceIsNoSlip) {
    SurveyBuilder builder;
    for (int i = 0; i < 5; ++i) {
        builder.Add("P", i, i, 0, "TREE");
    }
    builder.Add("a", 0, 0, 0, "TRE");
    builder.Add("b", 0, 0, 0, "TRE");
    Findings findings;
    FindCodes(builder.survey, findings);
    EXPECT_TRUE(findings.empty());
}

}  // namespace
}  // namespace cqsurvey::exchange
