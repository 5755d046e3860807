#include "plan/LineStyles.h"

#include <gtest/gtest.h>

#include "plan/canvas/Cairo.h"

namespace cqsurvey::plan {
namespace {

/// A plan on A4 at 1 : 500, where 1 m is 2 mm.
class LineStylesTest : public testing::Test {
 protected:
    LineStylesTest() : sheet({}, {0, 0, 50, 50}, 500.0), page(canvas, sheet, kWhite) {
        plan.layers = {{"Contours"}, {"Buildings"}};
    }

    void Add(std::size_t layer, double y) {
        PlanLine line;
        line.vertices = {{{0, y}}, {{50, y}}};
        line.layer = layer;
        plan.items.emplace_back(line);
    }

    [[nodiscard]] double WidthOf(std::size_t layer, int code = 0) const {
        return LineStyles(plan, options, page).GetWidth(layer, code) / kMillimetre;
    }

    CairoSurfacePtr surface{cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1)};
    CairoPtr context{cairo_create(surface.get())};
    Canvas canvas{context.get()};
    Plan plan;
    PlotOptions options;
    Sheet sheet;
    Page page;
};

TEST_F(LineStylesTest, LinesAreAsWideAsUsual) {
    Add(0, 10);
    EXPECT_DOUBLE_EQ(WidthOf(0), 0.25);
    EXPECT_DOUBLE_EQ(WidthOf(1), 0.25);
}

TEST_F(LineStylesTest, DenseLinesOfALayerAreThinner) {
    // Every 0.4 mm on paper: of 0.25 mm, they would cover more than half of it.
    for (int i = 0; i < 200; ++i) {
        Add(0, 0.2 * i);
    }
    Add(1, 10);
    EXPECT_NEAR(WidthOf(0), 0.1, 0.03);
    EXPECT_DOUBLE_EQ(WidthOf(1), 0.25);
}

TEST_F(LineStylesTest, ACodeGoesBeforeALayerAndAnOptionBeforeASetting) {
    plan.weights = {{"Build*", 0.5}, {"7", 0.7}};
    EXPECT_DOUBLE_EQ(WidthOf(1), 0.5);
    EXPECT_DOUBLE_EQ(WidthOf(1, 7), 0.7);
    EXPECT_DOUBLE_EQ(WidthOf(0, 7), 0.7);
    options.lineWeights = {{"buildings", 0.35}};
    EXPECT_DOUBLE_EQ(WidthOf(1), 0.35);
    EXPECT_DOUBLE_EQ(WidthOf(1, 7), 0.35);
    EXPECT_DOUBLE_EQ(WidthOf(0, 7), 0.7);
}

TEST_F(LineStylesTest, LayersAndCodesAreFilledAsAsked) {
    options.fills = {"Buildings", "7"};
    LineStyles styles(plan, options, page);
    EXPECT_TRUE(styles.IsFilled(1, 0));
    EXPECT_TRUE(styles.IsFilled(0, 7));
    EXPECT_FALSE(styles.IsFilled(0, 0));
}

}  // namespace
}  // namespace cqsurvey::plan
