#include "cqsurvey/plan/Paper.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

TEST(Paper, IsFoundByNameInAnyLetterCase) {
    EXPECT_EQ(FindPaper("A4"), (PaperSize{210.0, 297.0}));
    EXPECT_EQ(FindPaper("a0"), (PaperSize{841.0, 1189.0}));
    EXPECT_EQ(FindPaper("LETTER"), (PaperSize{215.9, 279.4}));
    EXPECT_FALSE(FindPaper("A"));
    EXPECT_FALSE(FindPaper("A44"));
    EXPECT_FALSE(FindPaper(""));
    EXPECT_NE(PaperNames().find("A3"), std::string::npos);
}

}  // namespace
}  // namespace cqsurvey::plan
