#include "plan/sheet/Division.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cqsurvey/plan/PlanFailure.h"

namespace cqsurvey::plan {
namespace {

Sheet MakeSheet(const Box& extents, double scale) {
    SheetRequest request;
    request.scale = scale;
    request.turns = false;
    return {request, extents, 500.0};
}

void AddPoint(Plan& plan, double x, double y) {
    PlanPoint point;
    point.at = {x, y};
    plan.items.emplace_back(point);
}

TEST(Division, EachPlaceIsOnASheet) {
    Plan plan;
    for (int i = 0; i <= 50; ++i) {
        for (int k = 0; k <= 50; ++k) {
            AddPoint(plan, 10.0 * i, 10.0 * k);
        }
    }
    const Box extents = plan.FindExtents();
    const Division division(plan, extents, MakeSheet(extents, 500.0));
    EXPECT_GT(division.GetSheets().size(), 4U);
    for (const PlanItem& item : plan.items) {
        const Box box = FindBox(item);
        EXPECT_TRUE(std::any_of(division.GetSheets().begin(), division.GetSheets().end(),
                                [&](const Sheet& sheet) { return sheet.GetWindow().Holds(box); }));
    }
}

TEST(Division, SheetsWithoutAnythingAreLeftOut) {
    Plan plan;
    AddPoint(plan, 0, 0);
    AddPoint(plan, 1000, 1000);
    const Box extents = plan.FindExtents();
    EXPECT_EQ(Division(plan, extents, MakeSheet(extents, 500.0)).GetSheets().size(), 2U);
    // A line around them all passes the sheets at the edge, not those in the middle.
    PlanLine line;
    line.vertices = {{{0, 0}}, {{1000, 0}}, {{1000, 1000}}, {{0, 1000}}, {{0, 0}}};
    plan.items.emplace_back(line);
    const Division ring(plan, extents, MakeSheet(extents, 500.0));
    Box middle;
    middle.Add(CVector(500, 500));
    for (const Sheet& sheet : ring.GetSheets()) {
        EXPECT_FALSE(sheet.GetWindow().Holds(middle));
    }
}

TEST(Division, TheFirstSheetIsInTheNorthWest) {
    Plan plan;
    AddPoint(plan, 0, 0);
    AddPoint(plan, 0, 1000);
    AddPoint(plan, 1000, 1000);
    const Box extents = plan.FindExtents();
    const Division division(plan, extents, MakeSheet(extents, 500.0));
    ASSERT_EQ(division.GetSheets().size(), 3U);
    Box first;
    first.Add(CVector(0, 1000));
    EXPECT_TRUE(division.GetSheets()[0].GetWindow().Holds(first));
}

TEST(Division, RefusesMoreSheetsThanAnyoneCanPrint) {
    Plan plan;
    AddPoint(plan, 0, 0);
    AddPoint(plan, 1e9, 1e9);
    const Box extents = plan.FindExtents();
    EXPECT_THROW(Division(plan, extents, MakeSheet(extents, 1.0)), PlanFailure);
}

}  // namespace
}  // namespace cqsurvey::plan
