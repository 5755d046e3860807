#include "plan/sheet/GridPainter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "plan/SvgPage.h"

namespace cqsurvey::plan {
namespace {

std::vector<SvgPicture::Text> Saying(const SvgPicture& picture, const std::string& words) {
    std::vector<SvgPicture::Text> found;
    std::copy_if(picture.texts.begin(), picture.texts.end(), std::back_inserter(found),
                 [&](const SvgPicture::Text& text) { return text.text == words; });
    return found;
}

TEST(GridPainter, EastingsStandAboveAndBelowTheMapAtTheirLine) {
    SvgPage page;
    GridPainter(page.Get()).Draw();
    const SvgPicture picture = page.Finish();
    // 60 mm are 30 m at 1 : 500, so there is a line every 20 m.
    const auto found = Saying(picture, "E 40");
    ASSERT_EQ(found.size(), 2U);
    const Box& map = page.Get().GetMap();
    EXPECT_GT(std::max(found[0].y, found[1].y), map.maxY);
    EXPECT_LT(std::min(found[0].y, found[1].y), map.minY);
    const double line = page.Get().ToPage(CVector(40, 50)).GetX();
    for (const SvgPicture::Text& text : found) {
        EXPECT_NEAR(text.x + text.length / 2, line, 0.01);
    }
    EXPECT_TRUE(Saying(picture, "E 30").empty());
}

TEST(GridPainter, NorthingsStandAtBothSidesAndAreReadFromTheRight) {
    SvgPage page;
    GridPainter(page.Get()).Draw();
    const auto found = Saying(page.Finish(), "N 60");
    ASSERT_EQ(found.size(), 2U);
    const Box& map = page.Get().GetMap();
    EXPECT_LT(std::min(found[0].x, found[1].x), map.minX);
    EXPECT_GT(std::max(found[0].x, found[1].x), map.maxX);
    const double line = page.Get().ToPage(CVector(50, 60)).GetY();
    for (const SvgPicture::Text& text : found) {
        EXPECT_EQ(text.rotation, -90.0);
        EXPECT_NEAR(text.y - text.length / 2, line, 0.01);
    }
}

TEST(GridPainter, APaleCrossIsWhereTwoLinesMeet) {
    SvgPage page;
    GridPainter(page.Get()).Draw();
    const SvgPicture picture = page.Finish();
    ASSERT_FALSE(picture.paths.empty());
    const SvgPicture::Path& crosses = picture.paths.front();
    EXPECT_NE(crosses.stroke, "#000000");
    const CVector at = page.Get().ToPage(CVector(40, 60));
    EXPECT_TRUE(std::any_of(crosses.steps.begin(), crosses.steps.end(), [&](const auto& step) {
        return step.command == 'M' && std::abs(step.numbers[1] - at.GetY()) < 0.01 &&
               std::abs(step.numbers[0] - at.GetX()) < 1.6 * kMillimetre;
    }));
    const Box& map = page.Get().GetMap();
    const std::vector<double> box = crosses.Box();
    EXPECT_TRUE(map.Holds({box[0], box[1], box[2], box[3]}));
}

TEST(GridPainter, SmallPaperHasTheCrossesAlone) {
    SheetRequest request;
    request.paper = {90, 70};
    SvgPage page(request);
    ASSERT_TRUE(page.Get().GetTitle().IsEmpty());
    GridPainter(page.Get()).Draw();
    const SvgPicture picture = page.Finish();
    EXPECT_TRUE(picture.texts.empty());
    EXPECT_EQ(picture.paths.size(), 1U);
}

TEST(GridPainter, NumbersHaveTheDecimalsOfTheirDistance) {
    SheetRequest request;
    request.scale = 2.0;
    SvgPage page(request);
    GridPainter(page.Get()).Draw();
    const SvgPicture picture = page.Finish();
    EXPECT_TRUE(picture.Says("E 50.0")) << "every 0.1 m";
    EXPECT_TRUE(picture.Says("N 50.1"));
}

}  // namespace
}  // namespace cqsurvey::plan
