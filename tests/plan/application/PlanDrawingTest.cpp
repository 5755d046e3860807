// Draws plans as an application does: with the public headers and the two libraries alone.

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/plan/plan.h>
#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <string>

#include "support/Drawing.h"
#include "support/PngPicture.h"
#include "support/SvgPicture.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using plan::PictureFormat;
using plan::PlanDrawing;
using plan::PlotOptions;

constexpr double kMillimetre = 72.0 / 25.4;
const std::string kRed = "#ff0000";

class PlanDrawingTest : public testing::Test {
 protected:
    PlanDrawingTest() {
        db.CreateNew(folder.Path(u"site.job"));
        db.SetCurrentColor(1);
    }

    std::string Draw(const PlotOptions& options) {
        std::string bytes;
        report = PlanDrawing(db).Draw(options, [&](std::string_view more) { bytes += more; });
        return bytes;
    }

    /// Options for an SVG of the drawing alone.
    static PlotOptions Svg() {
        PlotOptions options;
        options.format = PictureFormat::Svg;
        options.grid = false;
        return options;
    }

    std::int32_t CodeOf(const PlotOptions& options) {
        try {
            Draw(options);
        } catch (const plan::PlanFailure& failure) {
            EXPECT_NE(failure.what(), std::string());
            return failure.GetCode();
        }
        return error::kNone;
    }

    TempDir folder;
    CqSurveyDB db;
    plan::PlotReport report;
};

TEST_F(PlanDrawingTest, DrawsTheSamePlanInEachFormat) {
    DrawPoint(db, u"P1", 1000, 2000);
    DrawLine(db, {{1000, 2000}, {1040, 2000, 0.5}, {1040, 2030}});
    PlotOptions options;
    EXPECT_EQ(Draw(options).substr(0, 5), "%PDF-");
    options.format = PictureFormat::Svg;
    EXPECT_NE(Draw(options).find("</svg>"), std::string::npos);
    options.format = PictureFormat::Png;
    EXPECT_EQ(Draw(options).substr(1, 3), "PNG");
}

TEST_F(PlanDrawingTest, APlanIsReadOnceAndDrawnManyTimes) {
    DrawLine(db, {{0, 0}, {40, 0}});
    const PlanDrawing drawing(db);
    db.Close();
    EXPECT_EQ(drawing.GetCount(), 1U);
    EXPECT_EQ(drawing.GetExtents().GetWidth(), 40.0);
    const auto widthAt = [&](double scale) {
        PlotOptions options = Svg();
        options.scale = scale;
        std::string bytes;
        const plan::PlotReport done =
            drawing.Draw(options, [&](std::string_view more) { bytes += more; });
        EXPECT_EQ(done.scale, scale);
        const auto box = SvgPicture(bytes).WithStroke(kRed).at(0).Box();
        return box[2] - box[0];
    };
    EXPECT_NEAR(widthAt(500.0), 80 * kMillimetre, 0.01);
    EXPECT_NEAR(widthAt(1000.0), 40 * kMillimetre, 0.01);
}

TEST_F(PlanDrawingTest, FillsAPngOfTheSizeAskedFor) {
    DrawLine(db, {{-30, 0}, {30, 0}});
    PlotOptions options;
    options.format = PictureFormat::Png;
    options.grid = false;
    options.SetPixels(301, 200);
    std::ofstream(folder.Utf8("a.png"), std::ios::binary) << Draw(options);
    const PngPicture picture(folder.Utf8("a.png"));
    ASSERT_TRUE(picture.IsRead());
    EXPECT_EQ(picture.GetWidth(), 301);
    EXPECT_EQ(picture.GetHeight(), 200);
    EXPECT_EQ(picture.GetPixel(0, 0), (PixelColor{255, 255, 255}));
    EXPECT_LT(std::min(picture.GetPixel(150, 99)[1], picture.GetPixel(150, 100)[1]), 200);
}

TEST_F(PlanDrawingTest, DrawsThePartAskedForAsLargeAsItCan) {
    DrawCircle(db, 0, 0, 5);
    DrawCircle(db, 1000, 0, 5);
    PlotOptions options = Svg();
    options.extent = plan::Box{-10, -10, 10, 10};
    const auto red = SvgPicture(Draw(options)).WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    EXPECT_GT(red[0].Box()[2] - red[0].Box()[0], 50 * kMillimetre);
    EXPECT_TRUE(report.holdsAll);
    options.scale = 10.0;
    Draw(options);
    EXPECT_FALSE(report.holdsAll);
}

TEST_F(PlanDrawingTest, ReadsTheLayersAskedFor) {
    db.AddLayer(u"A", 1, 0);
    db.SetCurrentLayer(u"A");
    DrawCircle(db, 0, 0, 5);
    db.SetCurrentLayer(u"0");
    DrawCircle(db, 0, 0, 5);
    DrawCircle(db, 9, 0, 5);
    EXPECT_EQ(PlanDrawing(db).GetCount(), 3U);
    EXPECT_EQ(PlanDrawing(db, CStringList{u"A"}).GetCount(), 1U);
    try {
        PlanDrawing(db, CStringList{u"B"});
        FAIL() << "there is no layer B";
    } catch (const CException& failure) {
        EXPECT_STREQ(failure.what(), "there is no layer \"B\"");
    }
}

TEST_F(PlanDrawingTest, CountsWhatIsLeftOut) {
    DrawCircle(db, 0, 0, 0);
    db.SetCurrentColor(-1);
    DrawCircle(db, 0, 0, 5);
    DrawCircle(db, 0, 0, 6);
    const PlanDrawing drawing(db);
    EXPECT_EQ(drawing.GetCount(), 0U);
    EXPECT_EQ(drawing.GetUnplaced(), 1U);
    EXPECT_EQ(drawing.GetHidden(), 2U);
    EXPECT_TRUE(drawing.GetExtents().IsEmpty());
}

TEST_F(PlanDrawingTest, LabelsPointsAndTellsWhichFoundNoRoom) {
    for (int i = 0; i < 30; ++i) {
        DrawPoint(db, u"P" + FromUtf8(std::to_string(100 + i)), 5, 5);
    }
    PlotOptions options = Svg();
    const auto count = [&] { return SvgPicture(Draw(options)).InGroup("Labels").size(); };
    const std::size_t some = count();
    EXPECT_EQ(some + report.lostLabels, 30U);
    EXPECT_GT(report.lostLabels, 0U);
    options.allLabels = true;
    EXPECT_EQ(count(), 30U);
    EXPECT_EQ(report.lostLabels, 0U);
    options.labelNames = false;
    EXPECT_EQ(count(), 0U);
}

TEST_F(PlanDrawingTest, NotesWhatCannotBeDrawn) {
    DrawText(db, u"huge", 0, 0, 1e9);
    PlotOptions options = Svg();
    options.scale = 500.0;
    Draw(options);
    ASSERT_EQ(report.notes.size(), 1U);
    EXPECT_EQ(report.notes[0], "the text \"huge\" is too large to be drawn at this scale");
}

TEST_F(PlanDrawingTest, RefusesOptionsThatMakeNoSenseBeforeItDraws) {
    PlotOptions options;
    options.scale = 0.0;
    EXPECT_EQ(CodeOf(options), error::kInvalidArgument);
    bool called = false;
    EXPECT_THROW(PlanDrawing(db).Draw(options, [&](std::string_view) { called = true; }),
                 plan::PlanFailure);
    EXPECT_FALSE(called);
    options.scale = 500.0;
    EXPECT_EQ(CodeOf(options), error::kNone);
}

TEST_F(PlanDrawingTest, WhatTheCallersFunctionsThrowComesThrough) {
    DrawCircle(db, 0, 0, 5);
    const auto full = [](std::string_view) { throw std::out_of_range("full"); };
    const auto stop = [](std::size_t) { throw std::domain_error("stop"); };
    EXPECT_THROW(PlanDrawing(db).Draw(Svg(), full), std::out_of_range);
    EXPECT_THROW(PlanDrawing(db).Draw(
                     Svg(), [](std::string_view) {}, stop),
                 std::domain_error);
    EXPECT_THROW(PlanDrawing(db, std::nullopt, stop), std::domain_error);
}

TEST_F(PlanDrawingTest, TellsHowFarItHasCome) {
    DrawCircle(db, 0, 0, 5);
    DrawLine(db, {{0, 0}, {1, 1}});
    std::vector<std::size_t> read;
    const PlanDrawing drawing(db, std::nullopt, [&](std::size_t done) { read.push_back(done); });
    EXPECT_EQ(read, (std::vector<std::size_t>{1, 2, 3, 4}));
    std::vector<std::size_t> drawn;
    drawing.Draw(
        Svg(), [](std::string_view) {}, [&](std::size_t done) { drawn.push_back(done); });
    EXPECT_EQ(drawn, (std::vector<std::size_t>{1, 2}));
}

}  // namespace
}  // namespace cqsurvey
