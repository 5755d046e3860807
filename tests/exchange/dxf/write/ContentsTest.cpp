#include "exchange/dxf/write/Contents.h"

#include <gtest/gtest.h>

#include <string>

#include "exchange/dxf/DxfText.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange::dxf {
namespace {

class ContentsTest : public testing::Test {
 protected:
    DrawnJob job;
    DxfWriteOptions options;
    DrawingReport report;
};

TEST_F(ContentsTest, AnEmptyJobHasLayerZeroAndNoExtents) {
    const Contents contents(job.db, options, report);
    ASSERT_EQ(contents.GetLayers().size(), 1U);
    EXPECT_EQ(contents.GetLayers().front().name, u"0");
    EXPECT_EQ(contents.GetLeast().x, 0.0);
    EXPECT_EQ(contents.GetLargest().y, 0.0);
    EXPECT_TRUE(contents.GetStyles().empty());
}

TEST_F(ContentsTest, ExtentsHoldEverythingThatIsDrawn) {
    DrawPoint(job.db, u"P", 100, 200, -5);
    DrawCircle(job.db, 50, 60, 10);
    DrawPath(job.db, {{120, 0, 7, 1}, {140, 0, 7, 0}});
    DrawPoint(job.db, u"far", HUGE_VAL, 0);
    const Contents contents(job.db, options, report);
    EXPECT_EQ(contents.GetLeast().x, 40.0);
    EXPECT_EQ(contents.GetLeast().z, -5.0);
    EXPECT_EQ(contents.GetLargest().x, 140.0);
    EXPECT_EQ(contents.GetLargest().y, 200.0);
    // The arc reaches below the line of its ends.
    EXPECT_NEAR(contents.GetLeast().y, -10.0, 1e-9);
}

TEST_F(ContentsTest, LayersLinesAndStylesThatAreUsedAreNamed) {
    job.db.AddLayer(u"Kerb", 3, 5);
    DrawPath(job.db, {{0, 0, 0, 0}, {1, 0, 0, 0}}, 9);
    const double at[3] = {0, 0, 0};
    job.db.AddText(at, u"x", 0, 0, u"Small", 1, 0, 0, 0, 0, 0);
    Contents contents(job.db, options, report);
    ASSERT_EQ(contents.GetLayers().size(), 2U);
    EXPECT_EQ(contents.GetLayers().back().color, 3);
    EXPECT_TRUE(contents.GetLines().contains(5));
    EXPECT_TRUE(contents.GetLines().contains(9));
    EXPECT_TRUE(contents.GetStyles().contains(u"Small"));
    EXPECT_EQ(contents.StyleName(u"Small"), u"Small");
}

TEST_F(ContentsTest, PointsOfACodeHaveALayerOfTheirOwnWhenAskedFor) {
    options.layersByCode = true;
    DrawPoint(job.db, u"P", 1, 2, 3, 4);
    const Contents contents(job.db, options, report);
    EXPECT_EQ(contents.PointLayer(u"0", 4), u"CODE_4");
    EXPECT_EQ(contents.PointLayer(u"0", 0), u"0");
    EXPECT_EQ(contents.GetLayers().back().name, u"CODE_4");
}

TEST_F(ContentsTest, AColourThatAFileCannotHaveBecomesThatOfInkAndIsSaidTo) {
    job.db.AddLayer(u"loud", 256, 0);
    job.db.AddLayer(u"dim", 0, 0);
    const Contents contents(job.db, options, report);
    for (std::size_t i = 1; i < contents.GetLayers().size(); ++i) {
        EXPECT_EQ(contents.GetLayers()[i].color, 7);
    }
    EXPECT_EQ(report.GetNotes().size(), contents.GetLayers().size() - 1);
}

TEST_F(ContentsTest, TheHeightOfNamesGoesByTheScaleOfTheMap) {
    ASSERT_EQ(job.db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 2000), 1);
    EXPECT_EQ(Contents(job.db, options, report).GetPointTextHeight(), 4.0);
}

TEST_F(ContentsTest, AStyleThatTheFileCallsOtherwiseIsTold) {
    const double at[3] = {0, 0, 0};
    job.db.AddText(at, u"x", 0, 0, u"a/b", 1, 0, 0, 0, 0, 0);
    job.db.AddText(at, u"x", 0, 0, u"a/b", 1, 0, 0, 0, 0, 0);
    job.db.AddText(at, u"x", 0, 0, u"Small", 1, 0, 0, 0, 0, 0);
    job.db.AddText(at, u"x", 0, 0, u"small", 1, 0, 0, 0, 0, 0);
    const Contents contents(job.db, options, report);
    EXPECT_EQ(
        report.GetNotes(),
        (std::vector<std::string>{"the text style \"a/b\" is called \"a_b\" in the file",
                                  "the text style \"small\" is called \"small_2\" in the file"}));
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
