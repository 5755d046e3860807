#include "plan/Plan.h"

#include <gtest/gtest.h>

#include <cmath>

namespace cqsurvey::plan {
namespace {

PlanPoint PointAt(double x, double y) {
    PlanPoint point;
    point.at = {x, y};
    return point;
}

void ExpectBox(const Box& box, const Box& expected) {
    EXPECT_NEAR(box.minX, expected.minX, 1e-9);
    EXPECT_NEAR(box.minY, expected.minY, 1e-9);
    EXPECT_NEAR(box.maxX, expected.maxX, 1e-9);
    EXPECT_NEAR(box.maxY, expected.maxY, 1e-9);
}

TEST(Plan, TheBoxOfALineHoldsItsArcs) {
    PlanLine line;
    // A half circle over the chord, to the south of it, then a straight piece.
    line.vertices = {{{0, 0}, 1.0}, {{10, 0}}, {{10, 3}}};
    ExpectBox(FindBox(line), {0, -5, 10, 3});
}

TEST(Plan, TheBoxOfACircleHoldsItAll) {
    PlanCircle circle;
    circle.at = {5, 6};
    circle.radius = 2;
    ExpectBox(FindBox(circle), {3, 4, 7, 8});
}

TEST(Plan, TheBoxOfATextFollowsItsAlignmentAndItsRotation) {
    PlanText text;
    text.at = {100, 200};
    text.lines = {"four"};
    text.height = 2.0;
    ExpectBox(FindBox(text), {100, 200, 106, 202});
    text.horizontal = HorizontalAlign::Right;
    text.vertical = VerticalAlign::Top;
    ExpectBox(FindBox(text), {94, 198, 100, 200});
    text.horizontal = HorizontalAlign::Centre;
    text.vertical = VerticalAlign::Middle;
    ExpectBox(FindBox(text), {97, 199, 103, 201});
    text.rotation = 90.0;
    ExpectBox(FindBox(text), {99, 197, 101, 203});
}

TEST(Plan, TheBoxOfATextCountsLettersNotBytes) {
    PlanText text;
    text.lines = {"\xC3\xA4\xC3\xB6"};
    text.height = 4.0;
    EXPECT_NEAR(FindBox(text).GetWidth(), 6.0, 1e-9);
}

TEST(Plan, TheBoxOfALabelIsItsPlaceBecauseItIsWrittenWhereThereIsRoom) {
    PlanText text;
    text.at = {100, 200};
    text.lines = {"a long description of a tree"};
    text.height = 2.0;
    text.isLabel = true;
    ExpectBox(FindBox(text), {100, 200, 100, 200});
}

TEST(Plan, TheBoxOfABitmapBeginsAtItsCorner) {
    PlanFrame frame;
    frame.at = {1, 2};
    frame.width = 3;
    ExpectBox(FindBox(frame), {1, 2, 4, 5});
}

TEST(Plan, TheBoxOfAnImageTurnsAboutItsMiddle) {
    PlanImage image;
    image.centre = {10, 10};
    image.size = {8, 4};
    ExpectBox(FindBox(image), {6, 8, 14, 12});
    image.rotation = 90.0;
    ExpectBox(FindBox(image), {8, 6, 12, 14});
}

TEST(Plan, AnImageCountsForTheExtentsOnlyWhenThereIsNothingElse) {
    Plan plan;
    EXPECT_TRUE(plan.FindExtents().IsEmpty());
    plan.image = PlanImage{};
    plan.image->size = {100, 100};
    ExpectBox(plan.FindExtents(), {-50, -50, 50, 50});
    plan.items.emplace_back(PointAt(1, 2));
    plan.items.emplace_back(PointAt(3, 1));
    ExpectBox(plan.FindExtents(), {1, 1, 3, 2});
}

TEST(Plan, APartCountsWhatLiesInItAtLeastPartly) {
    Plan plan;
    plan.items.emplace_back(PointAt(5, 5));
    plan.items.emplace_back(PointAt(50, 5));
    PlanLine line;
    line.vertices = {{{9, 9}}, {{90, 90}}};
    plan.items.emplace_back(line);
    plan.points = 2;
    plan.jobExtents = {0, 0, 100, 100};
    const PlanPart part = plan.FindPart({0, 0, 10, 10});
    EXPECT_EQ(part.points, 1U);
    EXPECT_EQ(part.objects, 2U);
    ExpectBox(part.extents, {0, 0, 10, 10});
    const PlanPart all = plan.FindAll();
    EXPECT_EQ(all.points, 2U);
    EXPECT_EQ(all.objects, 3U);
    ExpectBox(all.extents, plan.jobExtents);
}

TEST(Plan, ALineIsClosedWhenItEndsWhereItBegan) {
    PlanLine line;
    line.vertices = {{{0, 0}}, {{5, 0}}, {{0, 0}}};
    EXPECT_TRUE(line.IsClosed());
    line.vertices.back().at = {0, 0.01};
    EXPECT_FALSE(line.IsClosed());
    line.vertices = {{{0, 0}}, {{0, 0}}};
    EXPECT_FALSE(line.IsClosed());
}

TEST(Plan, APointIsASpotByItsSymbolOrWhenOnlyHeightsAreWritten) {
    PlanPoint point = PointAt(0, 0);
    EXPECT_FALSE(point.IsSpot(false));
    EXPECT_TRUE(point.IsSpot(true));
    point.height = std::nan("");
    EXPECT_FALSE(point.IsSpot(true));
    point.symbol = Symbol::Spot;
    EXPECT_TRUE(point.IsSpot(false));
    point.symbol = Symbol::Manhole;
    point.height = 3.0;
    EXPECT_FALSE(point.IsSpot(true));
}

}  // namespace
}  // namespace cqsurvey::plan
