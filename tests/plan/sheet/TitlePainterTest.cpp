#include "plan/sheet/TitlePainter.h"

#include <gtest/gtest.h>

#include "plan/SvgPage.h"

namespace cqsurvey::plan {
namespace {

class TitlePainterTest : public testing::Test {
 protected:
    SvgPicture Draw(std::size_t lost = 0, const SheetNumber& number = {1, 1}) {
        SheetRequest request;
        request.fields = MakeTitleFields(plan, number).size();
        SvgPage page(request);
        TitlePainter(page.Get()).Draw(plan, part, "Mill Road", lost, number);
        title = page.Get().GetTitle();
        return page.Finish();
    }

    Plan plan;
    PlanPart part{{1000, 2000, 1100, 2050.5}, 3, 5};
    Box title;
};

TEST_F(TitlePainterTest, SaysWhatIsShown) {
    const SvgPicture picture = Draw();
    EXPECT_TRUE(picture.Says("Mill Road"));
    EXPECT_TRUE(picture.Says("E 1000.000 \xE2\x80\x93 1100.000"));
    EXPECT_TRUE(picture.Says("N 2000.000 \xE2\x80\x93 2050.500"));
    EXPECT_TRUE(picture.Says("3 points, 2 objects of the drawing"));
}

TEST_F(TitlePainterTest, SaysWhatIsMissing) {
    EXPECT_TRUE(Draw(2).Says("3 points, 2 objects of the drawing; no room for 2 labels"));
    part = {};
    EXPECT_TRUE(Draw().Says("Nothing is drawn"));
}

TEST_F(TitlePainterTest, TheScaleBarIsTrueAndHasTheUnit) {
    plan.unit = CqLengthUnit::Metre;
    const SvgPicture picture = Draw();
    EXPECT_TRUE(picture.Says("1 : 500  (A4)"));
    EXPECT_TRUE(picture.Says("0"));
    EXPECT_TRUE(picture.Says("20 m"));
    // Four parts of 5 m, so of 10 mm, two of them filled.
    int parts = 0;
    for (const SvgPicture::Path& path : picture.paths) {
        const std::vector<double> box = path.Box();
        parts += !path.stroke.empty() && std::abs(box[2] - box[0] - 10 * kMillimetre) < 0.01 &&
                         std::abs(box[3] - box[1] - 1.6 * kMillimetre) < 0.01
                     ? 1
                     : 0;
    }
    EXPECT_EQ(parts, 4);
}

TEST_F(TitlePainterTest, NorthIsThatOfTheGridWhereTheSystemIsKnown) {
    EXPECT_FALSE(Draw().Says("grid north"));
    plan.system = "EPSG:25832";
    const SvgPicture picture = Draw();
    EXPECT_TRUE(picture.Says("grid north"));
    EXPECT_TRUE(picture.Says("N"));
    EXPECT_TRUE(picture.Says("EPSG:25832"));
}

TEST_F(TitlePainterTest, FieldsHaveACaptionAndStandInTheBlock) {
    plan.title.client = "Town of Northwood & Co.";
    plan.title.drawingNumber = "17-3";
    const SvgPicture picture = Draw(0, {2, 3});
    for (const char* words : {"Client", "Town of Northwood &amp; Co.", "17-3", "2 of 3"}) {
        EXPECT_TRUE(picture.Says(words)) << words;
    }
    for (const SvgPicture::Text& text : picture.texts) {
        EXPECT_TRUE(title.Holds({text.x, text.y, text.x + text.length, text.y})) << text.text;
    }
}

TEST_F(TitlePainterTest, ALongTextIsWrittenSmallerSoThatItFits) {
    plan.title.client = std::string(200, 'W');
    for (const SvgPicture::Text& text : Draw().texts) {
        EXPECT_TRUE(title.Holds({text.x, text.y, text.x + text.length, text.y})) << text.text;
    }
}

}  // namespace
}  // namespace cqsurvey::plan
