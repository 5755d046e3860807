#include "plan/sheet/Legend.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

const Box kAll{-100, -100, 100, 100};

PlanPoint Point(Symbol symbol, double x = 0.0) {
    PlanPoint point;
    point.at = {x, 0.0};
    point.symbol = symbol;
    return point;
}

TEST(Legend, HasAnEntryForEachSymbolAndEachLayerWithLines) {
    Plan plan;
    plan.layers = {{"0"}, {"Road"}};
    plan.items = {Point(Symbol::Manhole), Point(Symbol::Manhole), Point(Symbol::Gate)};
    EXPECT_EQ(Legend(plan, kAll, false).GetCount(), 2U);
    PlanLine line;
    line.vertices = {{{0, 0}}, {{1, 1}}};
    plan.items.emplace_back(line);
    EXPECT_EQ(Legend(plan, kAll, false).GetCount(), 2U) << "layer 0 says nothing";
    line.layer = 1;
    plan.items.emplace_back(line);
    plan.items.emplace_back(line);
    EXPECT_EQ(Legend(plan, kAll, false).GetCount(), 3U);
}

TEST(Legend, ExplainsOnlyWhatIsInThePart) {
    Plan plan;
    plan.layers = {{"0"}};
    plan.items = {Point(Symbol::Manhole), Point(Symbol::Gate, 500.0)};
    EXPECT_EQ(Legend(plan, kAll, false).GetCount(), 1U);
}

TEST(Legend, CrossesAloneNeedNone) {
    Plan plan;
    plan.layers = {{"0"}};
    plan.items = {Point(Symbol::None)};
    EXPECT_EQ(Legend(plan, kAll, false).GetCount(), 0U);
    EXPECT_EQ(Legend(plan, kAll, true).GetCount(), 1U) << "but spot heights do";
}

}  // namespace
}  // namespace cqsurvey::plan
