#include "exchange/dxf/read/LineTable.h"

#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/Limits.h"
#include "exchange/dxf/LineTypes.h"

namespace cqsurvey::exchange::dxf {
namespace {

class LineTableTest : public testing::Test {
 protected:
    void Define(const std::string& name, const std::vector<std::string>& pattern) {
        constexpr std::size_t kMost = 10'000;
        Record record;
        record.Begin(origin, {0, "LTYPE", 1});
        record.Add({2, name, 2}, kMost);
        for (const std::string& part : pattern) {
            record.Add({49, part, 3}, kMost);
        }
        table.Define(record);
    }

    Origin origin{"plan.dxf", false};
    DrawingReport report;
    LineTable table{report};
};

TEST_F(LineTableTest, WordsAndKnownNamesNeedNoTableAndNoNote) {
    EXPECT_EQ(table.Find("ByLayer"), limits::kByLayer);
    EXPECT_EQ(table.Find(""), limits::kByLayer);
    EXPECT_EQ(table.Find("BYBLOCK"), LineTable::kOfBlock);
    EXPECT_EQ(table.Find("dashed"), 1);
    EXPECT_EQ(table.Find("LINE_12"), 12);
    EXPECT_TRUE(report.GetNotes().empty());
}

TEST_F(LineTableTest, AnotherNameBecomesALineByItsPatternAndThatIsTold) {
    Define("Fence", {"0.5", "-0.25", "0", "-0.25"});
    EXPECT_EQ(table.Find("FENCE"), 3);
    ASSERT_EQ(report.GetNotes().size(), 1U);
    EXPECT_EQ(report.GetNotes()[0], "the line type \"FENCE\" became line 3, after its pattern");
    EXPECT_EQ(table.Find("FENCE"), 3);
    EXPECT_EQ(report.GetNotes().size(), 1U);
}

TEST_F(LineTableTest, ANameThatNoTableHasIsASolidLineAndThatIsTold) {
    EXPECT_EQ(table.Find("Gone"), kSolidLine);
    EXPECT_EQ(report.GetNotes().size(), 1U);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
