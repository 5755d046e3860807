#include "plan/sheet/Sheet.h"

#include <gtest/gtest.h>

#include <cmath>

namespace cqsurvey::plan {
namespace {

TEST(Scale, IsRoundedUp) {
    EXPECT_EQ(RoundScale(500.0), 500.0);
    EXPECT_EQ(RoundScale(500.1), 750.0);
    EXPECT_EQ(RoundScale(751.0), 1000.0);
    EXPECT_EQ(RoundScale(1217.0), 1250.0);
    EXPECT_EQ(RoundScale(2000.0000000000005), 2000.0);
    EXPECT_EQ(RoundScale(0.9), 1.0);
    EXPECT_DOUBLE_EQ(RoundScale(0.03), 0.04);
    for (double scale = 1e-6; scale < 1e12; scale *= 1.07) {
        const double round = RoundScale(scale);
        EXPECT_GE(round, scale * (1 - 1e-11));
        EXPECT_LE(round, scale * 1.6 + 1e-9);
        EXPECT_DOUBLE_EQ(RoundScale(round), round);
    }
}

TEST(Distance, IsRoundedDown) {
    EXPECT_EQ(RoundDistance(30.0), 20.0);
    EXPECT_EQ(RoundDistance(50.0), 50.0);
    EXPECT_EQ(RoundDistance(1000.0), 1000.0);
    EXPECT_DOUBLE_EQ(RoundDistance(0.7), 0.5);
    EXPECT_DOUBLE_EQ(RoundDistance(0.001), 0.001);
}

TEST(Sheet, TakesTheJobsScaleWhenThePlanFits) {
    const Sheet sheet({}, {0, 0, 50, 50}, 500.0);
    EXPECT_EQ(sheet.GetScale(), 500.0);
    EXPECT_TRUE(sheet.HoldsAll());
}

TEST(Sheet, TakesTheNextRoundScaleAtWhichThePlanFits) {
    const Sheet sheet({}, {0, 0, 221, 184}, 500.0);
    EXPECT_EQ(sheet.GetScale(), 1250.0);
    EXPECT_TRUE(sheet.HoldsAll());
}

TEST(Sheet, FillsThePaperWhenAskedTo) {
    SheetRequest request;
    request.fits = true;
    EXPECT_EQ(Sheet(request, {0, 0, 5, 5}, 500.0).GetScale(), 40.0);
}

TEST(Sheet, TakesTheScaleAskedForAlsoWhenThePlanDoesNotFit) {
    SheetRequest request;
    request.scale = 100.0;
    const Sheet sheet(request, {0, 0, 221, 184}, 500.0);
    EXPECT_EQ(sheet.GetScale(), 100.0);
    EXPECT_FALSE(sheet.HoldsAll());
}

TEST(Sheet, AScaleIsTrueInTheJobsUnit) {
    SheetRequest request;
    request.scale = 500.0;
    request.unit = 0.3048;
    const Sheet sheet(request, {0, 0, 100, 50}, 1000.0);
    EXPECT_DOUBLE_EQ(sheet.ToPaper(100.0), 60.96);
    EXPECT_DOUBLE_EQ(sheet.ToJob(60.96), 100.0);
    EXPECT_NEAR(sheet.GetWindow().GetWidth(), sheet.ToJob(sheet.GetMap().GetWidth()), 1e-9);
    request.scale.reset();
    request.fits = true;
    EXPECT_EQ(Sheet(request, {0, 0, 5 / 0.3048, 5 / 0.3048}, 500.0).GetScale(), 40.0);
}

TEST(Sheet, TurnsThePaperAsThePlanLies) {
    EXPECT_EQ(Sheet({}, {0, 0, 300, 100}, 500.0).GetPaper(), (PaperSize{297.0, 210.0}));
    EXPECT_EQ(Sheet({}, {0, 0, 100, 300}, 500.0).GetPaper(), (PaperSize{210.0, 297.0}));
    SheetRequest upright;
    upright.turns = false;
    EXPECT_EQ(Sheet(upright, {0, 0, 300, 100}, 500.0).GetPaper(), (PaperSize{210.0, 297.0}));
}

TEST(Sheet, PutsTheMiddleOfThePlanInTheMiddleOfTheMapAndNorthUp) {
    const Sheet sheet({}, {100, 200, 120, 240}, 500.0);
    const Box& map = sheet.GetMap();
    const CVector middle = sheet.ToPaper(CVector(110, 220));
    EXPECT_DOUBLE_EQ(middle.GetX(), (map.minX + map.maxX) / 2);
    EXPECT_DOUBLE_EQ(middle.GetY(), (map.minY + map.maxY) / 2);
    const CVector northEast = sheet.ToPaper(CVector(115, 225));
    EXPECT_NEAR(northEast.GetX() - middle.GetX(), 10.0, 1e-9);
    EXPECT_NEAR(northEast.GetY() - middle.GetY(), -10.0, 1e-9);
    EXPECT_EQ(sheet.ToPaper(25.0), 50.0);
    const Box window = sheet.GetWindow();
    EXPECT_NEAR(sheet.ToPaper(CVector(window.minX, window.maxY)).GetX(), map.minX, 1e-9);
    EXPECT_NEAR(sheet.ToPaper(CVector(window.minX, window.maxY)).GetY(), map.minY, 1e-9);
}

TEST(Sheet, KeepsMillimetresAMillionKilometresAway) {
    const double far = 1e9;
    const Sheet sheet({}, {far, far, far + 10, far + 10}, 500.0);
    const CVector a = sheet.ToPaper(CVector(far + 1, far + 2));
    const CVector b = sheet.ToPaper(CVector(far + 1.5, far + 2));
    EXPECT_NEAR(b.GetX() - a.GetX(), 1.0, 1e-6);
}

TEST(Sheet, OfAnEmptyPlanOrASinglePointHasTheJobsScale) {
    EXPECT_EQ(Sheet({}, Box(), 250.0).GetScale(), 250.0);
    EXPECT_TRUE(Sheet({}, Box(), 250.0).HoldsAll());
    Box point;
    point.Add(CVector(7, 8));
    SheetRequest request;
    request.fits = true;
    const Sheet sheet(request, point, 250.0);
    EXPECT_EQ(sheet.GetScale(), 250.0);
    EXPECT_TRUE(sheet.HoldsAll());
}

TEST(Sheet, HasATitleBlockBelowTheMapUnlessItIsTooSmall) {
    const Sheet sheet({}, Box(), 500.0);
    EXPECT_GT(sheet.GetTitle().minY, sheet.GetMap().maxY);
    EXPECT_LT(sheet.GetTitle().maxY, sheet.GetPaper().height);
    SheetRequest small;
    small.paper = {10.0, 5.0};
    const Sheet stamp(small, {0, 0, 5, 5}, 500.0);
    EXPECT_TRUE(stamp.GetTitle().IsEmpty());
    EXPECT_GT(stamp.GetMap().GetHeight(), 3.0);
    EXPECT_TRUE(stamp.HoldsAll());
}

}  // namespace
}  // namespace cqsurvey::plan
