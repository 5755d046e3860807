#include "plan/labels/LineLabelPainter.h"

#include <gtest/gtest.h>

#include "plan/labels/LabelTest.h"

namespace cqsurvey::plan {
namespace {

class LineLabelPainterTest : public LabelTest<LineLabelPainter> {
 protected:
    void AddLine(std::initializer_list<PlanVertex> vertices) {
        PlanLine line;
        line.vertices = vertices;
        line.color = 5;
        plan.items.emplace_back(line);
    }
};

TEST_F(LineLabelPainterTest, WithoutBeingAskedNothingIsWritten) {
    AddLine({{{40, 50}}, {{60, 50}}});
    EXPECT_TRUE(Draw().texts.empty());
}

TEST_F(LineLabelPainterTest, TheLengthStandsAlongTheMiddleOfASegment) {
    options.lineLabels.lengths = true;
    AddLine({{{40, 50}}, {{60, 50}}, {{60, 70}}});
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 2U);
    EXPECT_EQ(picture.texts[0].text, "20.00");
    EXPECT_EQ(picture.texts[0].rotation, 0.0);
    const CVector middle = page.Get().ToPage(CVector(50, 50));
    EXPECT_NEAR(picture.texts[0].x + picture.texts[0].length / 2, middle.GetX(), 1e-2);
    EXPECT_LT(picture.texts[0].y, middle.GetY()) << "above the line";
    EXPECT_EQ(picture.texts[1].rotation, -90.0) << "read from the right";
    EXPECT_EQ(picture.texts[0].fill, "#0000ff");
    EXPECT_EQ(lost, 0U);
}

TEST_F(LineLabelPainterTest, ABearingStandsBeforeTheLengthButNotAtAnArc) {
    options.lineLabels.lengths = true;
    options.lineLabels.bearings = true;
    options.lineDecimals = 1;
    plan.angles = CqAngleForm::Gon;
    AddLine({{{30, 50}}, {{70, 50}, 1.0}, {{70, 90}}});
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 2U);
    EXPECT_EQ(picture.texts[0].text, "100.0000 gon  40.0");
    EXPECT_EQ(picture.texts[1].text, "62.8") << "half of the circle";
}

TEST_F(LineLabelPainterTest, TheAreaStandsInsideOfAClosedLineWithItsUnit) {
    options.lineLabels.areas = true;
    options.lineDecimals = 0;
    plan.unit = CqLengthUnit::Metre;
    AddLine({{{40, 40}}, {{60, 40}}, {{60, 60}}, {{40, 60}}, {{40, 40}}});
    AddLine({{{0, 0}}, {{10, 0}}, {{10, 10}}});
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 1U);
    EXPECT_EQ(picture.texts[0].text, "400 m\xC2\xB2");
    const CVector low = page.Get().ToPage(CVector(40, 40));
    const CVector high = page.Get().ToPage(CVector(60, 60));
    EXPECT_GT(picture.texts[0].x, low.GetX());
    EXPECT_LT(picture.texts[0].x + picture.texts[0].length, high.GetX());
}

TEST_F(LineLabelPainterTest, ASegmentShorterThanItsNumberHasNone) {
    options.lineLabels.lengths = true;
    AddLine({{{50, 50}}, {{50.5, 50}}});
    EXPECT_TRUE(Draw().texts.empty());
    EXPECT_EQ(lost, 1U);
}

TEST_F(LineLabelPainterTest, ANumberGoesToTheOtherSideOfItsLineWhereSomethingStands) {
    options.lineLabels.lengths = true;
    AddLine({{{40, 50}}, {{60, 50}}});
    const CVector middle = page.Get().ToPage(CVector(50, 50));
    room.Take(Box{middle.GetX() - 60, middle.GetY() - 20, middle.GetX() + 60, middle.GetY() - 1});
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 1U);
    EXPECT_GT(picture.texts[0].y, middle.GetY());
}

TEST_F(LineLabelPainterTest, WhatFindsNoRoomIsCounted) {
    options.lineLabels.lengths = true;
    options.lineLabels.areas = true;
    AddLine({{{40, 40}}, {{60, 40}}, {{60, 60}}, {{40, 60}}, {{40, 40}}});
    room.Take(page.Get().GetMap());
    EXPECT_TRUE(Draw().texts.empty());
    EXPECT_EQ(lost, 5U);
}

}  // namespace
}  // namespace cqsurvey::plan
