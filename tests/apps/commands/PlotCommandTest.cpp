#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>

#include "apps/commands/PlotFixture.h"
#include "support/PngPicture.h"

namespace cqsurvey::cqjob {
namespace {

class PlotCommand : public PlotFixture {};

/// How far the curve's middle is from the circle.
double Stray(const CVector& from, const std::vector<double>& c, const CVector& centre,
             double radius) {
    const CVector middle((from.GetX() + 3 * c[0] + 3 * c[2] + c[4]) / 8,
                         (from.GetY() + 3 * c[1] + 3 * c[3] + c[5]) / 8);
    return std::fabs((middle - centre).UNorm() - radius);
}

TEST_F(PlotCommand, DrawsLinesToScaleWithNorthUp) {
    db.SetCurrentColor(1);
    DrawLine(db, {{1000, 2000}, {1040, 2000}, {1040, 2030}});
    const SvgPicture picture = Svg({"--paper", "A4", "--portrait", "--scale", "500"});
    EXPECT_NEAR(picture.width, 210 * kMillimetre, 1e-3);
    EXPECT_NEAR(picture.height, 297 * kMillimetre, 1e-3);
    const auto red = picture.WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    ASSERT_EQ(red[0].steps.size(), 3U);
    EXPECT_EQ(red[0].dashes, "");
    const auto at = [&](std::size_t i, std::size_t k) { return red[0].steps[i].numbers[k]; };
    EXPECT_NEAR(at(1, 0) - at(0, 0), 80 * kMillimetre, 0.01);
    EXPECT_NEAR(at(1, 1) - at(0, 1), 0.0, 0.01);
    EXPECT_NEAR(at(2, 1) - at(1, 1), -60 * kMillimetre, 0.01);
    EXPECT_NEAR((at(0, 0) + at(1, 0)) / 2, 105 * kMillimetre, 0.01);
}

TEST_F(PlotCommand, DrawsArcsAsCurvesOnTheirCircle) {
    db.SetCurrentColor(1);
    // A half circle about (10, 0) below its chord, then a straight piece.
    DrawLine(db, {{0, 0, 1.0}, {20, 0}, {30, 0}});
    const auto red = Svg({"--scale", "500", "--portrait"}).WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    const auto& steps = red[0].steps;
    EXPECT_GE(red[0].Count('C'), 2U);
    EXPECT_EQ(steps.front().command, 'M');
    EXPECT_EQ(steps.back().command, 'L');
    const CVector start(steps[0].numbers[0], steps[0].numbers[1]);
    const double radius = 20 * kMillimetre;
    const CVector centre = start + CVector(radius, 0);
    CVector from = start;
    for (const auto& step : steps) {
        if (step.command == 'C') {
            EXPECT_LT(Stray(from, step.numbers, centre, radius), 0.02);
        }
        const std::size_t count = step.numbers.size();
        from = {step.numbers[count - 2], step.numbers[count - 1]};
    }
    EXPECT_NEAR(red[0].Box()[3] - start.GetY(), radius, 0.02);
    EXPECT_NEAR(from.GetX() - start.GetX(), 60 * kMillimetre, 0.02);
}

TEST_F(PlotCommand, DrawsAnArcClockwiseWhenTheBulgeIsNegative) {
    db.SetCurrentColor(1);
    DrawLine(db, {{0, 0, -1.0}, {20, 0}});
    const auto red = Svg({"--scale", "500"}).WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    const auto box = red[0].Box();
    EXPECT_NEAR(red[0].steps.front().numbers[1] - box[1], 20 * kMillimetre, 0.02);
    EXPECT_NEAR(box[3], red[0].steps.front().numbers[1], 0.02);
}

TEST_F(PlotCommand, DrawsCirclesInTheirColoursAndLineTypes) {
    db.AddLayer(u"Blue", 5, 1);
    db.SetCurrentLayer(u"Blue");
    DrawCircle(db, 0, 0, 10, 256);
    db.SetCurrentColor(1);
    DrawCircle(db, 30, 0, 5, 0);
    const SvgPicture picture = Svg({"--scale", "1000"});
    const auto blue = picture.WithStroke(kBlue);
    const auto red = picture.WithStroke(kRed);
    ASSERT_EQ(blue.size(), 1U);
    ASSERT_EQ(red.size(), 1U);
    EXPECT_NE(blue[0].dashes, "");
    EXPECT_EQ(red[0].dashes, "");
    EXPECT_GE(blue[0].Count('C'), 4U);
    EXPECT_EQ(blue[0].Count('L'), 0U);
    EXPECT_NEAR(blue[0].Box()[2] - blue[0].Box()[0], 20 * kMillimetre, 0.02);
    EXPECT_NEAR(red[0].Box()[3] - red[0].Box()[1], 10 * kMillimetre, 0.02);
}

TEST_F(PlotCommand, DrawsASymbolForEachPointInTheSizeOfTheSettings) {
    db.SetSiPointSize(9.0);
    db.SetCurrentColor(1);
    for (int i = 0; i < 300; ++i) {
        DrawPoint(db, u"", i % 20, i / 20);
    }
    const auto red = Svg({"--labels", "none"}).WithStroke(kRed);
    std::size_t arms = 0;
    for (const auto& path : red) {
        arms += path.Count('L');
        EXPECT_EQ(path.Count('L'), path.Count('M'));
        const auto& steps = path.steps;
        EXPECT_NEAR(steps[1].numbers[0] - steps[0].numbers[0], 9.0, 0.01);
    }
    EXPECT_EQ(arms, 600U);
}

TEST_F(PlotCommand, CountsWhatIsInThePart) {
    for (int i = 0; i < 10; ++i) {
        DrawPoint(db, u"P" + FromUtf8(std::to_string(i)), 10.0 * i, 5);
    }
    EXPECT_TRUE(Holds(Plot("a.svg").err, "10 objects at 1 : ")) << "all";
    EXPECT_TRUE(Holds(Plot("b.svg", {"--extent", "-5,0,25,10"}).err, "3 of 10 objects at 1 : "));
    const std::string err = Plot("c.svg", {"--scale", "0.01"}).err;
    EXPECT_TRUE(Holds(err, "nothing at 1 : 0.01 into")) << err;
    EXPECT_TRUE(Holds(err, "none of it is in the frame")) << err;
    EXPECT_TRUE(
        Holds(Plot("d.svg", {"--scale", "1e9"}).err, "all of it is smaller than a millimetre"));
}

TEST_F(PlotCommand, DrawsTextsAlignedAndTurned) {
    db.SetCurrentColor(1);
    DrawText(db, u"HHHH", 0, 0, 5.0);
    db.SetCurrentColor(5);
    DrawText(db, u"HHHH", 0, 0, 5.0, 90.0, 2, 0);
    DrawCircle(db, 0, 0, 1.0);
    const SvgPicture picture = Svg({"--scale", "500"});
    const auto circle = picture.WithStroke(kBlue).at(0).Box();
    const CVector at((circle[0] + circle[2]) / 2, (circle[1] + circle[3]) / 2);
    const auto red = picture.WithFill(kRed);
    ASSERT_EQ(red.size(), 1U);
    EXPECT_EQ(red[0].text, "HHHH");
    EXPECT_NEAR(red[0].x, at.GetX(), 0.1);
    EXPECT_NEAR(red[0].y, at.GetY(), 0.1);
    // Capitals of 10 mm are about as wide as they are high.
    EXPECT_NEAR(red[0].length, 40 * kMillimetre, 12 * kMillimetre);
    const auto blue = picture.WithFill(kBlue);
    ASSERT_EQ(blue.size(), 1U);
    EXPECT_NEAR(blue[0].x, at.GetX(), 0.1);
    EXPECT_NEAR(blue[0].y, at.GetY() + red[0].length, 0.1);
    EXPECT_NEAR(blue[0].rotation, -90.0, 1e-3);
}

TEST_F(PlotCommand, AlignsTextsByTheirWidthAndTheHeightOfTheirCapitals) {
    const double capital = 10 * kMillimetre;
    db.SetCurrentColor(1);
    for (int horizontal = 0; horizontal < 3; ++horizontal) {
        for (int vertical = 0; vertical < 4; ++vertical) {
            DrawText(db, u"HH", 10 * horizontal, 10 * vertical, 5.0, 0.0, horizontal, vertical);
        }
    }
    const std::vector<SvgPicture::Text> texts = Svg({"--scale", "500"}).WithFill(kRed);
    ASSERT_EQ(texts.size(), 12U);
    const double half = texts[0].length / 2;
    const SvgPicture::Text first = texts[0];
    const double step = 10 * 1000.0 / 500.0 * kMillimetre;
    for (std::size_t i = 0; i < 12; ++i) {
        const auto column = static_cast<double>(i / 4);
        const auto row = static_cast<double>(i % 4);
        const double drop = std::array<double, 4>{0.0, -0.3, 0.5, 1.0}.at(i % 4) * capital;
        EXPECT_NEAR(texts[i].x, first.x + column * (step - half), 0.01) << i;
        EXPECT_NEAR(texts[i].y, first.y - row * step + drop, 0.01) << i;
    }
}

TEST_F(PlotCommand, SaysHowManyCharactersNoFontHas) {
    DrawPoint(db, u"\u0395\u03BB", 0, 0);
    DrawText(db, u"caf\u00E9", 0, 5, 1.0);
    EXPECT_FALSE(Holds(Plot("a.svg").err, "boxes"));
    db.Open(FromUtf8(job));
    // Neither is a character, and a lone half of a pair is replaced by one that is.
    DrawText(db, u"x\u0378\u0379\xD800", 0, 10, 1.0);
    const CqjobRun run = Plot("b.svg");
    EXPECT_TRUE(Holds(run.err, "drawn as boxes: 2 characters that no installed font has"))
        << run.err;
}

TEST_F(PlotCommand, DrawsBitmapsAsFramesWithTheirNames) {
    db.SetCurrentColor(1);
    DrawBitmap(db, u"tree", 0, 0, 20.0);
    const SvgPicture picture = Svg({"--scale", "500"});
    const auto red = picture.WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    const auto box = red[0].Box();
    EXPECT_NEAR(box[2] - box[0], 40 * kMillimetre, 0.02);
    EXPECT_NEAR(box[3] - box[1], 40 * kMillimetre, 0.02);
    EXPECT_EQ(red[0].steps.front().numbers[1], box[3]);
    EXPECT_EQ(picture.WithFill(kRed).size(), 1U);
}

TEST_F(PlotCommand, DrawsWhatLayersShow) {
    db.AddLayer(u"A", 1, 0);
    db.AddLayer(u"B", 5, 0);
    db.SetCurrentLayer(u"A");
    DrawCircle(db, 0, 0, 5);
    db.SetCurrentLayer(u"B");
    DrawCircle(db, 0, 0, 5);
    EXPECT_EQ(Svg().WithStroke(kRed).size(), 1U);
    const SvgPicture onlyB = Svg({"--layers", "B"});
    EXPECT_TRUE(onlyB.WithStroke(kRed).empty());
    EXPECT_EQ(onlyB.WithStroke(kBlue).size(), 1U);
    EXPECT_EQ(RunCqjob({"layers", "hide", job, "B"}).status, 0);
    EXPECT_TRUE(Svg().WithStroke(kBlue).empty());
    EXPECT_TRUE(Holds(Plot("c.svg", {"--layers", "C"}, 1).err, "there is no layer \"C\""));
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("c.svg")));
}

TEST_F(PlotCommand, RespectsTheForcedColourAndTheBackgroundColour) {
    DrawCircle(db, 0, 0, 5);
    db.SetDrawingForceMonotone(3);
    db.SetBackgroundColor(0);
    const SvgPicture picture = Svg();
    EXPECT_EQ(picture.WithStroke("#00ff00").size(), 1U);
    ASSERT_FALSE(picture.paths.empty());
    // Frame and title are white where the paper is black.
    EXPECT_FALSE(picture.WithStroke("#ffffff").empty());
    EXPECT_TRUE(picture.WithStroke(kBlack).empty());
}

TEST_F(PlotCommand, DrawsThePartAskedFor) {
    db.SetCurrentColor(1);
    DrawCircle(db, 0, 0, 5);
    DrawCircle(db, 1000, 0, 5);
    EXPECT_EQ(Svg().WithStroke(kRed).size(), 2U);
    const auto red = Svg({"--extent", "-10,-10,10,10"}).WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    EXPECT_GT(red[0].Box()[2] - red[0].Box()[0], 50 * kMillimetre);
}

TEST_F(PlotCommand, KeepsMillimetresFarFromTheOrigin) {
    const double far = 7654321.0;
    db.SetCurrentColor(1);
    DrawLine(db, {{far, far}, {far + 0.013, far + 0.007}, {far + 0.02, far}});
    const auto red = Svg({"--scale", "1"}).WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    const auto& steps = red[0].steps;
    EXPECT_NEAR(steps[1].numbers[0] - steps[0].numbers[0], 13 * kMillimetre, 0.02);
    EXPECT_NEAR(steps[1].numbers[1] - steps[0].numbers[1], -7 * kMillimetre, 0.02);
}

TEST_F(PlotCommand, DrawsLinesAndArcsThatReachFarOutOfThePage) {
    db.SetCurrentColor(1);
    DrawLine(db, {{-1e9, 3}, {1e9, 3}});
    db.SetCurrentColor(5);
    DrawCircle(db, 0, -1e7, 1e7);
    const SvgPicture picture = Svg({"--extent", "-10,-10,10,10"});
    const auto red = picture.WithStroke(kRed);
    const auto blue = picture.WithStroke(kBlue);
    ASSERT_EQ(red.size(), 1U);
    ASSERT_FALSE(blue.empty());
    EXPECT_LT(red[0].Box()[0], 0.0);
    EXPECT_GT(red[0].Box()[2], picture.width);
    EXPECT_LT(red[0].Box()[2], 1e5);
    // The circle's top is 3 m below the line: what is seen of it is nearly straight.
    bool passes = false;
    for (const auto& path : blue) {
        passes = passes || (path.Box()[0] < 0.0 && path.Box()[2] > picture.width &&
                            path.Box()[1] > red[0].Box()[1]);
    }
    EXPECT_TRUE(passes);
}

TEST_F(PlotCommand, AnEmptyJobIsASheetThatSaysSo) {
    const CqjobRun run = Plot("a.svg");
    EXPECT_TRUE(Holds(run.err, "nothing to draw")) << run.err;
    const SvgPicture picture(Read("a.svg"));
    EXPECT_FALSE(picture.paths.empty());
    EXPECT_TRUE(picture.Says("Nothing is drawn"));
    EXPECT_TRUE(Holds(run.err, "nothing at 1 : ")) << run.err;
}

TEST_F(PlotCommand, ASinglePointIsInTheMiddle) {
    db.SetCurrentColor(1);
    DrawPoint(db, u"A", 5000000.25, -3.0, kNaN);
    const SvgPicture picture = Svg({"--portrait"});
    const auto red = picture.WithStroke(kRed);
    ASSERT_EQ(red.size(), 1U);
    EXPECT_NEAR((red[0].Box()[0] + red[0].Box()[2]) / 2, 105 * kMillimetre, 0.01);
}

TEST_F(PlotCommand, SaysWhatHasNoPlace) {
    DrawPoint(db, u"A", kNaN, kNaN);
    DrawPoint(db, u"B", 1, 1);
    EXPECT_TRUE(Holds(Plot("a.svg").err, "1 object without a finite position")) << "err";
}

TEST_F(PlotCommand, WritesAPdfOfOnePage) {
    DrawLine(db, {{0, 0, 0.5}, {40, 30}});
    DrawPoint(db, u"A", 3, 3);
    Plot("a.pdf", {"--paper", "A3", "--landscape", "--scale", "500"});
    const std::string pdf = Read("a.pdf");
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    EXPECT_TRUE(Holds(pdf, "/Count 1\n") || Holds(pdf, "/Count 1 ")) << pdf.size();
    // A3 lying is 420 x 297 mm.
    EXPECT_TRUE(Holds(pdf, "1190.5")) << "the page's width in points";
}

TEST_F(PlotCommand, WritesAPngOfTheSizeAskedFor) {
    db.SetCurrentColor(1);
    DrawLine(db, {{-30, 0}, {30, 0}});
    DrawLine(db, {{-30, -20}, {30, -20}, {30, 20}, {-30, 20}, {-30, -20}});
    Plot("a.png", {"--size", "301x200", "--no-grid"});
    const PngPicture picture(folder.Utf8("a.png"));
    ASSERT_TRUE(picture.IsRead());
    ASSERT_EQ(picture.GetWidth(), 301);
    ASSERT_EQ(picture.GetHeight(), 200);
    EXPECT_EQ(picture.GetPixel(0, 0), (PixelColor{255, 255, 255}));
    // The line in the middle is about a pixel wide and lies between two rows.
    const auto middle = picture.GetPixel(150, 100);
    const auto above = picture.GetPixel(150, 99);
    EXPECT_EQ(middle[0], 255);
    EXPECT_LT(std::min(middle[1], above[1]), 200);
    EXPECT_EQ(picture.GetPixel(150, 90), (PixelColor{255, 255, 255}));
}

TEST_F(PlotCommand, PngOnPaperHasTheDotsAskedFor) {
    Plot("a.png", {"--paper", "A5", "--portrait", "--dpi", "100"});
    const PngPicture picture(folder.Utf8("a.png"));
    EXPECT_EQ(picture.GetWidth(), 583);
    EXPECT_EQ(picture.GetHeight(), 827);
}

TEST_F(PlotCommand, DrawsTheBackgroundImageWhereItIsPlaced) {
    ASSERT_TRUE(PngPicture::WriteRow(folder.Utf8("in.png"), {{255, 0, 0}, {0, 0, 255}}));
    ASSERT_EQ(db.StoreBackgroundImageFile(folder.Path(u"in.png"), 1, {0, 0}, {40, 20}, 0.0), 1);
    Plot("a.png", {"--size", "300x300", "--no-grid", "--extent", "-20,-20,20,20"});
    const PngPicture picture(folder.Utf8("a.png"));
    EXPECT_EQ(picture.GetPixel(60, 150), (PixelColor{255, 0, 0}));
    EXPECT_EQ(picture.GetPixel(240, 150), (PixelColor{0, 0, 255}));
    EXPECT_EQ(picture.GetPixel(150, 40), (PixelColor{255, 255, 255}));
}

TEST_F(PlotCommand, DrawsTheFrameOfABackgroundImageItCannotDecode) {
    std::ofstream(folder.Utf8("in.gif"), std::ios::binary) << "GIF89a, say";
    ASSERT_EQ(db.StoreBackgroundImageFile(folder.Path(u"in.gif"), 1, {0, 0}, {40, 20}, 0.0), 1);
    const CqjobRun run = Plot("a.svg", {"--scale", "500", "--no-grid"});
    EXPECT_TRUE(Holds(run.err, "the background image is neither PNG nor JPEG nor BMP")) << run.err;
    const SvgPicture picture(Read("a.svg"));
    std::size_t frames = 0;
    for (const auto& path : picture.paths) {
        const auto box = path.Box();
        frames += !path.dashes.empty() && std::fabs(box[2] - box[0] - 80 * kMillimetre) < 0.05 &&
                          std::fabs(box[3] - box[1] - 40 * kMillimetre) < 0.05
                      ? 1U
                      : 0U;
    }
    EXPECT_EQ(frames, 1U);
    EXPECT_EQ(picture.images, 0);
}

TEST_F(PlotCommand, NeverOverwritesUnlessForced) {
    DrawPoint(db, u"A", 1, 1);
    std::ofstream(folder.Utf8("a.svg")) << "mine";
    EXPECT_TRUE(Holds(Plot("a.svg", {}, 1).err, "--force"));
    EXPECT_EQ(Read("a.svg"), "mine");
    Plot("a.svg", {"--force"});
    EXPECT_TRUE(Holds(Read("a.svg"), "<svg"));
}

TEST_F(PlotCommand, NeverDrawsOverTheJob) {
    db.Close();
    const CqjobRun run = RunCqjob({"plot", job, job, "--format", "svg", "--force"});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(Holds(run.err, "is the job itself"));
    db.Open(FromUtf8(job));
}

TEST_F(PlotCommand, WritesToStandardOutput) {
    DrawPoint(db, u"A", 1, 1);
    db.Close();
    const CqjobRun run = RunCqjob({"plot", job, "-", "--format", "svg"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(Holds(run.out, "</svg>"));
}

TEST_F(PlotCommand, SaysWhenThePictureCannotBeWritten) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "there is no /dev/full";
    }
    DrawLine(db, {{0, 0}, {40, 30}});
    db.Close();
    for (const char* format : {"svg", "pdf", "png"}) {
        const CqjobRun run = RunCqjob({"plot", job, "/dev/full", "--format", format, "--force"});
        EXPECT_EQ(run.status, 1) << format;
        EXPECT_TRUE(Holds(run.err, "/dev/full: No space left on device")) << run.err;
    }
}

TEST_F(PlotCommand, LeavesTheJobAsItIs) {
    DrawPoint(db, u"A", 1, 1);
    db.Close();
    const std::string before = Read("site.job");
    Plot("a.svg");
    EXPECT_EQ(Read("site.job"), before);
}

TEST_F(PlotCommand, RefusesWhatMakesNoSense) {
    DrawPoint(db, u"A", 1, 1);
    Plot("a.txt", {}, 2);
    Plot("a", {}, 2);
    Plot("a.svg", {"--paper", "A9"}, 2);
    Plot("a.svg", {"--size", "100"}, 2);
    Plot("a.svg", {"--size", "0x100"}, 2);
    Plot("a.svg", {"--size", "100x100", "--paper", "A4"}, 2);
    Plot("a.svg", {"--extent", "0,0,10"}, 2);
    Plot("a.svg", {"--extent", "10,0,0,10"}, 2);
    Plot("a.svg", {"--extent", "0,0,nan,10"}, 2);
    Plot("a.svg", {"--scale", "0"}, 2);
    Plot("a.svg", {"--scale", "nan"}, 2);
    Plot("a.svg", {"--scale", "jobs"}, 2);
    Plot("a.svg", {"--decimals", "7"}, 2);
    Plot("a.svg", {"--line-labels", "height"}, 2);
    Plot("a.svg", {"--labels", "name,none"}, 2);
    Plot("a.svg", {"--labels", "height,width"}, 2);
    Plot("a.svg", {"--portrait", "--landscape"}, 2);
    Plot("a.png", {"--paper", "A0", "--dpi", "2400"}, 2);
    Plot("no/such/folder.svg", {}, 1);
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("a.svg")));
}

}  // namespace
}  // namespace cqsurvey::cqjob
