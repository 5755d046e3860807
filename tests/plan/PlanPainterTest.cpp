#include "plan/PlanPainter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "plan/canvas/Cairo.h"
#include "plan/canvas/SvgCanvas.h"
#include "support/SvgPicture.h"

namespace cqsurvey::plan {
namespace {

/// Paints a plan on a sheet of A4 at 1 : 500, as SVG.
class PlanPainterTest : public testing::Test {
 protected:
    PlanPainterTest() {
        plan.layers = {{"Points"}, {"Lines"}};
        PlanPoint point;
        point.at = {50, 50};
        point.name = "P1";
        point.color = 1;
        plan.items.emplace_back(point);
        PlanLine line;
        line.vertices = {{{40, 40}}, {{60, 40}}};
        line.color = 5;
        line.layer = 1;
        plan.items.emplace_back(line);
        plan.points = 1;
    }

    SvgPicture Paint(const SheetRequest& request = {}) {
        std::string bytes;
        const SvgCanvas::Sink sink = [&](std::string_view more) { bytes += more; };
        const CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
        const CairoPtr context(cairo_create(surface.get()));
        const Sheet sheet(request, {10, 10, 90, 90}, 500.0);
        SvgCanvas canvas(context.get(), sheet.GetPaper(), sink);
        PlanPainter painter(canvas, plan, sheet, options);
        if (number.count > 1) {
            painter.SetSheet(number, sheets);
        }
        painter.Paint([&](std::size_t done) { progress.push_back(done); });
        lost = painter.GetLostLabels();
        part = painter.GetPart();
        notes = painter.GetNotes();
        canvas.Finish();
        return SvgPicture(bytes);
    }

    static bool Has(const SvgPicture& picture, const std::string& group) {
        return std::count(picture.groups.begin(), picture.groups.end(), group) == 1;
    }

    Plan plan;
    PlotOptions options;
    SheetNumber number;
    std::vector<Sheet> sheets;
    std::vector<std::size_t> progress;
    std::size_t lost = 0;
    PlanPart part;
    std::vector<std::string> notes;
};

TEST_F(PlanPainterTest, LayersWithLinesAreBelowThoseWithPointsAndLabelsAboveAll) {
    const SvgPicture picture = Paint();
    const std::vector<std::string> expected{"Grid",  "Lines",  "Points", "Labels",
                                            "Frame", "Legend", "Title"};
    EXPECT_EQ(picture.groups, expected);
}

TEST_F(PlanPainterTest, EachItemIsInTheGroupOfItsLayer) {
    const SvgPicture picture = Paint();
    ASSERT_EQ(picture.WithStroke("#ff0000").size(), 1U);
    EXPECT_EQ(picture.WithStroke("#ff0000")[0].group, "Points");
    const auto lines = picture.WithStroke("#0000ff");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0].group, "Lines");
    ASSERT_EQ(picture.InGroup("Labels").size(), 1U);
    EXPECT_EQ(picture.InGroup("Labels")[0].text, "P1");
}

TEST_F(PlanPainterTest, WhatIsNotAskedForHasNoGroup) {
    options.grid = false;
    options.legend = false;
    SheetRequest request;
    request.paper = {90.0, 70.0};
    const SvgPicture picture = Paint(request);
    for (const char* group : {"Grid", "Legend", "Title", "Fills", "Background image"}) {
        EXPECT_FALSE(Has(picture, group)) << group;
    }
    EXPECT_TRUE(Has(picture, "Frame"));
}

TEST_F(PlanPainterTest, FillsLieBelowTheDrawing) {
    options.fills = {"Lines"};
    PlanLine house;
    house.vertices = {{{20, 20}}, {{30, 20}}, {{30, 30}}, {{20, 20}}};
    house.layer = 1;
    plan.items.emplace_back(house);
    const SvgPicture picture = Paint();
    const auto at = [&](const char* group) {
        return std::find(picture.groups.begin(), picture.groups.end(), group);
    };
    ASSERT_NE(at("Fills"), picture.groups.end());
    EXPECT_LT(at("Fills"), at("Lines"));
}

TEST_F(PlanPainterTest, ProgressCountsEveryItem) {
    Paint();
    EXPECT_EQ(progress, (std::vector<std::size_t>{1, 2}));
}

TEST_F(PlanPainterTest, WhatIsFarOutsideIsNotDrawn) {
    auto& point = std::get<PlanPoint>(plan.items.front());
    point.at = {10'000, 50};
    const SvgPicture picture = Paint();
    EXPECT_TRUE(picture.WithStroke("#ff0000").empty());
    EXPECT_FALSE(picture.Says("P1"));
}

TEST_F(PlanPainterTest, ThePartIsWhatTheSheetShows) {
    Paint();
    EXPECT_EQ(part.objects, 2U);
    options.extent = Box{45, 45, 55, 55};
    Paint();
    EXPECT_EQ(part.objects, 1U);
    EXPECT_EQ(part.points, 1U);
}

TEST_F(PlanPainterTest, ATextThatIsLeftOutIsNotCountedAsDrawn) {
    PlanText text;
    text.at = {50, 60};
    text.lines = {"LARGE"};
    text.height = 1e6;
    plan.items.emplace_back(text);
    Paint();
    EXPECT_EQ(part.objects, 2U);
    EXPECT_EQ(notes.size(), 1U);
}

TEST_F(PlanPainterTest, LabelsWithoutRoomAreCounted) {
    for (int i = 0; i < 200; ++i) {
        PlanPoint point;
        point.at = {50.0 + i * 0.01, 50};
        point.name = "neighbour " + std::to_string(i);
        plan.items.emplace_back(point);
    }
    const SvgPicture picture = Paint();
    EXPECT_GT(lost, 0U);
    EXPECT_EQ(picture.InGroup("Labels").size() + lost, 201U);
}

TEST_F(PlanPainterTest, TheKeyPlanHasTheOutlinesOfTheSheetsInsteadOfLabels) {
    SheetRequest request;
    request.scale = 100.0;
    sheets = {Sheet(request, {10, 10, 20, 20}, 500.0), Sheet(request, {60, 60, 70, 70}, 500.0)};
    number = {0, 2};
    const SvgPicture picture = Paint();
    EXPECT_TRUE(Has(picture, "Sheets"));
    EXPECT_FALSE(Has(picture, "Labels"));
    const auto digits = picture.InGroup("Sheets");
    ASSERT_EQ(digits.size(), 2U);
    EXPECT_EQ(digits[0].text, "1");
    EXPECT_EQ(digits[1].text, "2");
}

TEST_F(PlanPainterTest, TheTitleOfTheOptionsGoesBeforeThatOfTheJob) {
    plan.title.title = "Of the job";
    EXPECT_TRUE(Paint().Says("Of the job"));
    options.title = "Of the options";
    const SvgPicture picture = Paint();
    EXPECT_TRUE(picture.Says("Of the options"));
    EXPECT_FALSE(picture.Says("Of the job"));
}

}  // namespace
}  // namespace cqsurvey::plan
