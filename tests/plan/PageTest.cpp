#include "plan/Page.h"

#include <gtest/gtest.h>

#include "plan/SvgPage.h"

namespace cqsurvey::plan {
namespace {

TEST(Page, NorthIsUpAndTheScaleIsTrue) {
    SvgPage page;
    const CVector origin = page.Get().ToPage(CVector(50, 50));
    const CVector east = page.Get().ToPage(CVector(60, 50));
    const CVector north = page.Get().ToPage(CVector(50, 60));
    // 10 m at 1 : 500 are 20 mm.
    EXPECT_NEAR(east.GetX() - origin.GetX(), 20.0 * kMillimetre, 1e-9);
    EXPECT_NEAR(east.GetY(), origin.GetY(), 1e-9);
    EXPECT_NEAR(north.GetX(), origin.GetX(), 1e-9);
    EXPECT_NEAR(origin.GetY() - north.GetY(), 20.0 * kMillimetre, 1e-9);
    EXPECT_NEAR(page.Get().ToPage(10.0), 20.0 * kMillimetre, 1e-9);
}

TEST(Page, TheMiddleOfTheExtentsIsTheMiddleOfTheMap) {
    SvgPage page;
    const Box& map = page.Get().GetMap();
    const CVector middle = page.Get().ToPage(CVector(50, 50));
    EXPECT_NEAR(middle.GetX(), (map.minX + map.maxX) / 2, 1e-9);
    EXPECT_NEAR(middle.GetY(), (map.minY + map.maxY) / 2, 1e-9);
}

TEST(Page, SmallPaperHasNoTitleBlock) {
    SheetRequest request;
    request.paper = {90.0, 70.0};
    SvgPage small(request);
    EXPECT_TRUE(small.Get().GetTitle().IsEmpty());
    SvgPage usual;
    EXPECT_FALSE(usual.Get().GetTitle().IsEmpty());
    EXPECT_GE(usual.Get().GetTitle().minY, usual.Get().GetMap().maxY);
}

TEST(Page, LinesHaveTheirColourWidthAndDashesInMillimetres) {
    SvgPage page;
    page.Get().SetColor(1);
    page.Get().SetLine(1, 0.5 * kMillimetre);
    page.Get().AddRectangle({100, 200, 130, 240});
    page.Get().Stroke();
    page.Get().SetLine(0, kThinWidth);
    page.Get().AddRectangle({100, 200, 130, 240});
    page.Get().Stroke();
    const SvgPicture picture = page.Finish();
    ASSERT_EQ(picture.paths.size(), 2U);
    EXPECT_EQ(picture.paths[0].stroke, "#ff0000");
    EXPECT_NEAR(picture.paths[0].width, 0.5 * kMillimetre, 0.01);
    EXPECT_NE(picture.paths[0].dashes, "");
    EXPECT_EQ(picture.paths[0].Box(), (std::vector<double>{100, 200, 130, 240}));
    EXPECT_EQ(picture.paths[1].dashes, "");
}

TEST(Page, ItsInkIsWhatCanBeSeenOnTheBackground) {
    SvgPage light;
    EXPECT_EQ(light.Get().GetInk(), kBlack);
    SvgPage dark({}, kBlack);
    EXPECT_EQ(dark.Get().GetInk(), kWhite);
}

TEST(Page, ATextIsMadeAsSmallAsItsRoomButNotLarger) {
    SvgPage page;
    page.Get().WriteFitting("short", {10, 20}, 4.0, 200.0);
    page.Get().WriteFitting("much longer than its room", {10, 40}, 4.0, 30.0);
    const SvgPicture picture = page.Finish();
    ASSERT_EQ(picture.texts.size(), 2U);
    EXPECT_LT(picture.texts[0].length, 200.0);
    EXPECT_NEAR(picture.texts[1].length, 30.0, 0.05);
    EXPECT_LT(picture.texts[1].size, picture.texts[0].size);
    EXPECT_EQ(picture.texts[1].x, 10.0);
    EXPECT_EQ(picture.texts[1].y, 40.0);
}

TEST(Page, NotesAreKeptInOrder) {
    SvgPage page;
    page.Get().AddNote("first");
    page.Get().AddNote("second");
    EXPECT_EQ(page.Get().GetNotes(), (std::vector<std::string>{"first", "second"}));
}

}  // namespace
}  // namespace cqsurvey::plan
