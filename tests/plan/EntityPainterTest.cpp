#include "plan/EntityPainter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "plan/SvgPage.h"

namespace cqsurvey::plan {
namespace {

/// Draws items on a page whose map shows 0 to 100 and more of the job.
class EntityPainterTest : public testing::Test {
 protected:
    EntityPainterTest() { plan.layers = {{"Site"}, {"Filled"}}; }

    static PlanPoint PointAt(double x, double y, int color = 1) {
        PlanPoint point;
        point.at = {x, y};
        point.height = 3.0;
        point.color = color;
        return point;
    }

    static PlanText TextAt(double x, double y, const std::string& words) {
        PlanText text;
        text.at = {x, y};
        text.lines = {words};
        text.height = 2.0;
        text.color = 5;
        return text;
    }

    EntityPainter& Painter() {
        if (!painter) {
            options.fills = {"Filled"};
            styles = std::make_unique<LineStyles>(plan, options, page.Get());
            painter =
                std::make_unique<EntityPainter>(page.Get(), room, *styles, kCross, kTextHeight);
        }
        return *painter;
    }

    void Draw(const PlanItem& item) { Painter().Draw(item); }

    SvgPicture Finish() {
        Painter().Flush();
        return page.Finish();
    }

    /// A box of that many points of 1/72 inch around a place of the job.
    Box Around(double x, double y, double half) {
        Box box;
        box.Add(page.Get().ToPage(CVector(x, y)));
        return box.Grow(half);
    }

    static constexpr double kCross = 6.0;
    static constexpr double kTextHeight = 2.0;
    Plan plan;
    PlotOptions options;
    LabelRoom room;
    SvgPage page;
    std::unique_ptr<LineStyles> styles;
    std::unique_ptr<EntityPainter> painter;
};

TEST_F(EntityPainterTest, APointWithoutASymbolIsACrossOfTheSizeOfTheSettings) {
    Draw(PointAt(50, 50));
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 1U);
    EXPECT_EQ(picture.paths[0].stroke, "#ff0000");
    EXPECT_NEAR(picture.paths[0].width, kThinWidth, 0.01);
    const Box expected = Around(50, 50, kCross / 2);
    const std::vector<double> box = picture.paths[0].Box();
    EXPECT_NEAR(box[0], expected.minX, 0.01);
    EXPECT_NEAR(box[1], expected.minY, 0.01);
    EXPECT_NEAR(box[2], expected.maxX, 0.01);
    EXPECT_NEAR(box[3], expected.maxY, 0.01);
}

TEST_F(EntityPainterTest, NeighboursOfOneColourAreDrawnTogether) {
    Draw(PointAt(50, 50));
    Draw(PointAt(51, 50));
    Draw(PointAt(52, 50, 5));
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 2U);
    EXPECT_EQ(picture.paths[0].Count('M'), 4U);
    EXPECT_EQ(picture.paths[1].stroke, "#0000ff");
    EXPECT_EQ(picture.paths[1].Count('M'), 2U);
}

TEST_F(EntityPainterTest, PointsAreDrawnBeforeTheLineThatFollowsThem) {
    PlanLine line;
    line.vertices = {{{10, 10}}, {{20, 10}}};
    line.color = 5;
    Draw(PointAt(50, 50));
    Draw(line);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 2U);
    EXPECT_EQ(picture.paths[0].stroke, "#ff0000");
    EXPECT_EQ(picture.paths[1].stroke, "#0000ff");
}

TEST_F(EntityPainterTest, ASymbolOutsideTheFrameIsLeftOutAndTakesNoRoom) {
    PlanPoint inside = PointAt(50, 50);
    inside.symbol = Symbol::Manhole;
    PlanPoint outside = PointAt(500, 50);
    outside.symbol = Symbol::Manhole;
    Draw(outside);
    EXPECT_TRUE(room.IsFree(Around(500, 50, 1.0)));
    Draw(inside);
    EXPECT_FALSE(room.IsFree(Around(50, 50, 1.0)));
    for (const SvgPicture::Path& path : Finish().paths) {
        EXPECT_LT(path.Box()[2], page.Get().GetMap().maxX);
    }
}

TEST_F(EntityPainterTest, WhereOnlyHeightsAreWrittenAPointIsADot) {
    Painter().SetSpots(true);
    Draw(PointAt(50, 50));
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 1U);
    EXPECT_EQ(picture.paths[0].fill, "#ff0000");
    EXPECT_EQ(picture.paths[0].stroke, "");
}

TEST_F(EntityPainterTest, WhatWasDrawnIsTakenFromTheLabels) {
    Draw(PointAt(50, 50));
    EXPECT_FALSE(room.IsFree(Around(50, 50, 0.5)));
    PlanLine line;
    line.vertices = {{{10, 10}}, {{20, 10}}};
    Draw(line);
    EXPECT_FALSE(room.IsOffLines(Around(15, 10, 0.5)));
    Draw(TextAt(70, 70, "HOUSE"));
    EXPECT_FALSE(room.IsFree(Around(72, 71, 0.5)));
    EXPECT_TRUE(room.HasRoom(Around(30, 30, 0.5)));
}

TEST_F(EntityPainterTest, AnArcIsDrawnOnTheSideOfItsBulge) {
    PlanLine line;
    // A half circle to the south of its chord.
    line.vertices = {{{40, 50}, 1.0}, {{60, 50}}};
    Draw(line);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 1U);
    const std::vector<double> box = picture.paths[0].Box();
    EXPECT_NEAR(box[3], page.Get().ToPage(CVector(50, 40)).GetY(), 0.1);
    EXPECT_NEAR(box[1], page.Get().ToPage(CVector(50, 50)).GetY(), 0.1);
}

TEST_F(EntityPainterTest, ALineThatIsFilledIsClosedAndLightInItsColour) {
    PlanLine line;
    line.vertices = {{{40, 40}}, {{60, 40}}, {{60, 60}}};
    line.color = 1;
    Painter().Fill(line);
    line.layer = 1;
    Painter().Fill(line);
    Draw(line);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 2U);
    EXPECT_EQ(picture.paths[0].stroke, "");
    EXPECT_NE(picture.paths[0].fill, "#ff0000");
    EXPECT_EQ(picture.paths[1].Count('L'), 3U);
}

TEST_F(EntityPainterTest, ATextIsTurnedAboutItsPlaceAndHasAHalo) {
    PlanText text = TextAt(50, 50, "ROAD");
    text.rotation = 30.0;
    Draw(text);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.texts.size(), 1U);
    EXPECT_EQ(picture.texts[0].text, "ROAD");
    EXPECT_NEAR(std::abs(picture.texts[0].rotation), 30.0, 1e-3);
    EXPECT_TRUE(picture.texts[0].hasHalo);
    EXPECT_EQ(Painter().GetLostTexts(), 0U);
}

TEST_F(EntityPainterTest, TheRowsOfATextStandBelowOneAnotherByItsAlignment) {
    PlanText text = TextAt(50, 50, "ONE");
    text.lines.emplace_back("TWO");
    text.vertical = VerticalAlign::Top;
    text.horizontal = HorizontalAlign::Right;
    Draw(text);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.texts.size(), 2U);
    const double height = page.Get().ToPage(2.0);
    const CVector at = page.Get().ToPage(CVector(50, 50));
    EXPECT_NEAR(picture.texts[0].y, at.GetY() + height, 0.05);
    EXPECT_NEAR(picture.texts[1].y - picture.texts[0].y, height * kLeading, 0.05);
    for (const SvgPicture::Text& row : picture.texts) {
        EXPECT_NEAR(row.x + row.length, at.GetX(), 0.05);
    }
}

TEST_F(EntityPainterTest, ATextThatTheFrameWouldCutIsMovedInside) {
    const Box& map = page.Get().GetMap();
    PlanText text = TextAt(0, 50, "HOUSE");
    text.at = {page.Get().GetSheet().GetWindow().maxX - 1.0, 50.0};
    Draw(text);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.texts.size(), 1U);
    EXPECT_LE(picture.texts[0].x + picture.texts[0].length, map.maxX + 0.01);
    EXPECT_EQ(Painter().GetLostTexts(), 0U);
}

TEST_F(EntityPainterTest, ATextThatReachesInFromOutsideIsLeftOutWithANote) {
    PlanText text = TextAt(0, 50, "HOUSE");
    text.at = {page.Get().GetSheet().GetWindow().minX - 1.0, 50.0};
    Draw(text);
    Painter().AddNotes();
    EXPECT_TRUE(Finish().texts.empty());
    EXPECT_EQ(Painter().GetLostTexts(), 1U);
    ASSERT_EQ(page.Get().GetNotes().size(), 1U);
    EXPECT_EQ(page.Get().GetNotes()[0], "left out because the frame would cut it: 1 text");
}

TEST_F(EntityPainterTest, ATextOfNoSensibleSizeIsLeftOutWithANote) {
    PlanText large = TextAt(50, 50, "LARGE");
    large.height = 1e6;
    PlanText small = TextAt(50, 50, "SMALL");
    small.height = 1e-6;
    Draw(large);
    Draw(small);
    Painter().AddNotes();
    EXPECT_TRUE(Finish().texts.empty());
    EXPECT_EQ(Painter().GetLostTexts(), 2U);
    EXPECT_EQ(page.Get().GetNotes().size(), 2U);
}

TEST_F(EntityPainterTest, ATextWithoutAHeightHasTheUsualOneAndALabelIsNotDrawnHere) {
    PlanText usual = TextAt(50, 50, "USUAL");
    usual.height = 0.0;
    PlanText same = TextAt(50, 60, "SAME");
    same.height = 1.0;  // 2 mm at 1 : 500
    PlanText label = TextAt(50, 70, "LABEL");
    label.isLabel = true;
    Draw(usual);
    Draw(same);
    Draw(label);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.texts.size(), 2U);
    EXPECT_NEAR(picture.texts[0].size, picture.texts[1].size, 0.01);
}

TEST_F(EntityPainterTest, ABitmapIsItsFrameWithItsName) {
    PlanFrame frame;
    frame.at = {40, 40};
    frame.width = 20.0;
    frame.name = "photo.jpg";
    frame.color = 1;
    Draw(frame);
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.paths.size(), 1U);
    const CVector corner = page.Get().ToPage(CVector(40, 40));
    const CVector opposite = page.Get().ToPage(CVector(60, 60));
    const std::vector<double> box = picture.paths[0].Box();
    EXPECT_NEAR(box[0], corner.GetX(), 0.01);
    EXPECT_NEAR(box[1], opposite.GetY(), 0.01);
    EXPECT_NEAR(box[2], opposite.GetX(), 0.01);
    EXPECT_NEAR(box[3], corner.GetY(), 0.01);
    EXPECT_TRUE(picture.Says("photo.jpg"));
}

TEST_F(EntityPainterTest, TheSizeOfAPointIsThatOfItsSymbolInMillimetres) {
    PlanPoint point = PointAt(0, 0);
    EXPECT_EQ(EntityPainter::GetSize(point, 6.0), 6.0);
    point.symbol = Symbol::Manhole;
    EXPECT_EQ(EntityPainter::GetSize(point, 6.0), GetUsualSize(Symbol::Manhole) * kMillimetre);
    point.symbolSize = 7.0;
    EXPECT_EQ(EntityPainter::GetSize(point, 6.0), 7.0 * kMillimetre);
}

}  // namespace
}  // namespace cqsurvey::plan
