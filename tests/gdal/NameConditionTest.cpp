#include "gdal/NameCondition.h"

#include <cpl_error.h>

#include "gdal/RoleFeature.h"

namespace cqsurvey::gdal {
namespace {

using Values = std::optional<std::vector<std::string>>;

class NameConditionTest : public testing::Test {
 protected:
    /// The names that a filter asks for.
    [[nodiscard]] Values Asked(const char* filter) const {
        OGRFeatureQuery query;
        EXPECT_EQ(query.Compile(&layer.Definition(), filter), OGRERR_NONE) << filter;
        return ValuesAsked(query, 0);
    }

    RoleLayer layer{{FieldRole::Name, FieldRole::Code, FieldRole::Layer}};
};

TEST_F(NameConditionTest, ANameThatIsAskedForIsFoundInLowerCase) {
    EXPECT_EQ(Asked("name = 'P7'"), Values({"p7"}));
    EXPECT_EQ(Asked("name IN ('A', 'b')"), Values({"a", "b"}));
    EXPECT_EQ(Asked("name = ''"), Values({""}));
}

TEST_F(NameConditionTest, OneSideOfAnAndIsEnough) {
    EXPECT_EQ(Asked("name = 'P7' AND code > 3"), Values({"p7"}));
    EXPECT_EQ(Asked("code > 3 AND (layer = 'x' AND name = 'P7')"), Values({"p7"}));
}

TEST_F(NameConditionTest, WhatAlsoHoldsForOtherNamesIsLeftToTheFilter) {
    for (const char* filter : {"name = 'P7' OR code > 3", "NOT name = 'P7'", "name <> 'P7'",
                               "name LIKE 'P7'", "name > 'P7'", "name IS NULL", "layer = 'P7'",
                               "code = 7", "name = layer", "'P7' = 'P7'", "code IN (1, 2)"}) {
        EXPECT_EQ(Asked(filter), std::nullopt) << filter;
    }
}

TEST_F(NameConditionTest, AQueryWithoutAFilterAsksForNothing) {
    OGRFeatureQuery query;
    EXPECT_EQ(ValuesAsked(query, 0), std::nullopt);
}

TEST_F(NameConditionTest, OnlyLettersOfAsciiAreFolded) {
    EXPECT_EQ(FoldAscii("AZaz09_Ä[`{@"), "azaz09_Ä[`{@");
}

}  // namespace
}  // namespace cqsurvey::gdal
