#include "plan/labels/LabelPainter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "plan/labels/LabelTest.h"

namespace cqsurvey::plan {
namespace {

class LabelPainterTest : public LabelTest<LabelPainter> {
 protected:
    LabelPainterTest() { plan.layers = {{"Trees"}, {"Texts"}}; }

    void AddPoint(const std::string& name, double x, double y, double height = 12.345) {
        PlanPoint point;
        point.at = {x, y};
        point.name = name;
        point.height = height;
        point.code = 7;
        point.codeWord = "TR";
        point.label = "oak at {height}";
        point.color = 1;
        plan.items.emplace_back(point);
    }

    void AddText(const std::string& words, double x, double y) {
        PlanText text;
        text.at = {x, y};
        text.lines = {words};
        text.height = 1.0;
        text.color = 5;
        text.layer = 1;
        text.isLabel = true;
        plan.items.emplace_back(text);
    }
};

TEST_F(LabelPainterTest, NamesHeightsAndCodesDifferInSizeAndColour) {
    options.labelHeights = true;
    options.labelCodes = true;
    AddPoint("P1", 50, 50);
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 3U);
    EXPECT_EQ(picture.texts[0].text, "P1");
    EXPECT_EQ(picture.texts[1].text, "12.35");
    EXPECT_EQ(picture.texts[2].text, "7");
    EXPECT_GT(picture.texts[0].size, picture.texts[1].size);
    EXPECT_GT(picture.texts[1].size, picture.texts[2].size);
    EXPECT_LT(picture.texts[0].y, picture.texts[1].y);
    EXPECT_LT(picture.texts[1].y, picture.texts[2].y);
    EXPECT_EQ(picture.texts[0].fill, "#ff0000");
    EXPECT_NE(picture.texts[1].fill, picture.texts[0].fill);
    EXPECT_NE(picture.texts[2].fill, picture.texts[1].fill);
    EXPECT_TRUE(picture.texts[0].hasHalo);
}

TEST_F(LabelPainterTest, NumbersSideBySideDoNotTouch) {
    std::size_t beside = 0;
    for (int step = 0; step < 60; ++step) {
        SvgPage sheet;
        LabelRoom free;
        plan.items.clear();
        AddPoint("1234", 50, 50);
        AddPoint("1234", 52 + step * 0.05, 50);
        LabelPainter(sheet.Get(), free, plan, options).Draw();
        const SvgPicture picture = sheet.Finish();
        ASSERT_EQ(picture.texts.size(), 2U);
        if (std::abs(picture.texts[0].y - picture.texts[1].y) < 1.0) {
            ++beside;
            EXPECT_GT(std::abs(picture.texts[0].x - picture.texts[1].x) - picture.texts[0].length,
                      0.35 * kMillimetre);
        }
    }
    EXPECT_GT(beside, 10U);
}

TEST_F(LabelPainterTest, TheHeightIsPutIntoTheLabelOfACode) {
    options.labelNames = false;
    options.labelsOfCodes = true;
    options.heightDecimals = 1;
    AddPoint("P1", 50, 50);
    EXPECT_TRUE(Draw().Says("oak at 12.3"));
}

TEST_F(LabelPainterTest, WhatWasNotMeasuredAndWhatIsOutsideHasNoLabel) {
    options.labelNames = false;
    options.labelHeights = true;
    AddPoint("P1", 50, 50, std::numeric_limits<double>::quiet_NaN());
    AddPoint("P2", 5000, 50);
    EXPECT_TRUE(Draw().texts.empty());
    EXPECT_EQ(lost, 0U);
}

TEST_F(LabelPainterTest, ThePointOfASpotHeightIsItsDecimalMark) {
    options.labelNames = false;
    options.labelHeights = true;
    AddPoint("P1", 50, 50);
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 2U);
    EXPECT_EQ(picture.texts[0].text, "12");
    EXPECT_EQ(picture.texts[1].text, "35");
    const double at = page.Get().ToPage(CVector(50, 50)).GetX();
    EXPECT_LT(picture.texts[0].x + picture.texts[0].length, at);
    EXPECT_GT(picture.texts[1].x, at);
    EXPECT_EQ(picture.texts[0].y, picture.texts[1].y);
}

TEST_F(LabelPainterTest, ALineBesideASpotHeightPushesItAwayInOnePiece) {
    options.labelNames = false;
    options.labelHeights = true;
    AddPoint("P1", 50, 50);
    const CVector at = page.Get().ToPage(CVector(50, 50));
    room.MarkLine(at + CVector(-30, 0), at + CVector(30, 0));
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 1U);
    EXPECT_EQ(picture.texts[0].text, "12.35");
}

TEST_F(LabelPainterTest, NoLineRunsBetweenTheDigitsOfASpotHeight) {
    options.labelNames = false;
    options.labelHeights = true;
    AddPoint("P1", 50, 50);
    AddPoint("P2", 70, 50);
    const CVector up = page.Get().ToPage(CVector(50, 50));
    room.MarkLine(up, up + CVector(0, -30));
    const CVector down = page.Get().ToPage(CVector(70, 50));
    room.MarkLine(down, down + CVector(0, 30));
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 3U);
    EXPECT_EQ(picture.texts[0].text, "12.35");
    EXPECT_EQ(picture.texts[1].text, "12");
    EXPECT_EQ(picture.texts[2].text, "35");
}

TEST_F(LabelPainterTest, NoTwoLabelsMeetAndTheRestIsCounted) {
    for (int i = 0; i < 40; ++i) {
        AddPoint("Point " + std::to_string(i), 50 + 0.3 * (i % 8), 50 + 0.3 * (i / 8));
    }
    const SvgPicture picture = Draw();
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(picture.texts.size() + lost, 40U);
    const auto boxOf = [&](const SvgPicture::Text& text) {
        return Box{text.x, text.y - options.labelHeight * kMillimetre, text.x + text.length,
                   text.y};
    };
    for (std::size_t i = 0; i < picture.texts.size(); ++i) {
        for (std::size_t k = i + 1; k < picture.texts.size(); ++k) {
            EXPECT_FALSE(boxOf(picture.texts[i]).Meets(boxOf(picture.texts[k])))
                << picture.texts[i].text << ", " << picture.texts[k].text;
        }
    }
    // A leader for each label that is away from its point.
    EXPECT_FALSE(picture.paths.empty());
    EXPECT_LT(picture.paths.size(), picture.texts.size());
}

TEST_F(LabelPainterTest, AllLabelsAreDrawnIfAskedFor) {
    options.allLabels = true;
    for (int i = 0; i < 40; ++i) {
        AddPoint("Point " + std::to_string(i), 50, 50);
    }
    EXPECT_EQ(Draw().texts.size(), 40U);
    EXPECT_EQ(lost, 0U);
}

TEST_F(LabelPainterTest, ATextOfACodeIsWrittenAsALabelOfItsPoint) {
    AddPoint("P1", 50, 50);
    AddText("oak 0.4", 50.6, 50.6);
    const SvgPicture picture = Draw();
    const auto texts = picture.InGroup("Texts");
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].text, "oak 0.4");
    EXPECT_EQ(texts[0].fill, "#0000ff");
    // In the size of the labels, though it is 1 m, which is 2 mm here, and close to the point.
    const auto names = picture.WithFill("#ff0000");
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(texts[0].size, names[0].size);
    const CVector at = page.Get().ToPage(CVector(50, 50));
    EXPECT_LT(texts[0].x - at.GetX(), 3.0);
    EXPECT_GT(texts[0].x, at.GetX());
}

TEST_F(LabelPainterTest, ATextOfACodeWithoutAPointStandsAtItsPlace) {
    AddText("far", 70, 70);
    const SvgPicture picture = Draw();
    ASSERT_EQ(picture.texts.size(), 1U);
    const CVector at = page.Get().ToPage(CVector(70, 70));
    EXPECT_NEAR(picture.texts[0].x, at.GetX(), 2.0);
    EXPECT_NEAR(picture.texts[0].y, at.GetY(), 2.0);
}

}  // namespace
}  // namespace cqsurvey::plan
