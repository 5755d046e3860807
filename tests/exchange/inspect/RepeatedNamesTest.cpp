#include <gtest/gtest.h>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

std::string Search(const SurveyBuilder& builder) {
    Findings findings;
    FindRepeatedNames(builder.survey, SamePlaces(builder.survey, 0.001), findings);
    return SurveyBuilder::Texts(findings);
}

TEST(RepeatedNames, CaseBlanksZerosAndTheImportsSuffixMakeNoOtherName) {
    SurveyBuilder builder;
    builder.Add("P1", 0, 0, 0);
    builder.Add("p 1", 3, 4, 0);
    builder.Add("P001", 30, 40, 0);
    builder.Add("P1_2", 6, 8, 0);
    builder.Add("TBM", 0, 0, 0);
    builder.Add("TBM_3", 0, 1, 0);
    EXPECT_EQ(Search(builder),
              "P1 (#1), p 1 (#2), P001 (#3), P1_2 (#4) may be one name; they are up to 50.000 "
              "apart\n"
              "TBM (#5), TBM_3 (#6) may be one name; they are up to 1.000 apart\n");
}

TEST(RepeatedNames, NamesThatOnlyLookAlikeAreTwo) {
    SurveyBuilder builder;
    for (const char* name : {"P1", "P10", "P2", "A_2", "A_3", "B", "B_1", "C", "C_02", "1.1",
                             "1.01", "", "0", "00", "P"}) {
        builder.Add(name, static_cast<double>(builder.survey.points.size()), 0, 0);
    }
    EXPECT_EQ(Search(builder), "0 (#13), 00 (#14) may be one name; they are up to 1.000 apart\n");
}

TEST(RepeatedNames, OneNameInOnePlaceIsFine) {
    SurveyBuilder builder;
    builder.Add("P1", 5, 5, 0);
    builder.Add("P1_2", 5, 5, 0);
    EXPECT_EQ(Search(builder), "");
}

}  // namespace
}  // namespace cqsurvey::exchange
