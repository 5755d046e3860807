#include "plan/canvas/PdfCanvas.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "plan/canvas/Picture.h"
#include "plan/canvas/TextPainter.h"
#include "support/TempDir.h"

namespace cqsurvey::plan {
namespace {

/// A page of 20 x 10 mm as PDF, and what other programs make of it.
class PdfCanvasTest : public testing::Test {
 protected:
    void Finish() {
        picture.Finish();
        std::ofstream(folder.Utf8("a.pdf"), std::ios::binary) << bytes;
    }

    /// What pdftotext and pdftoppm of poppler-utils write.
    std::string Run(const std::string& program, const std::string& result) {
        const std::string command =
            program + " '" + folder.Utf8("a.pdf") + "' '" + folder.Utf8("a") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << "they are in poppler-utils";
        std::ostringstream text;
        text << std::ifstream(folder.Utf8(result.c_str()), std::ios::binary).rdbuf();
        return text.str();
    }

    /// True for each dark pixel of the page, ten pixels a point, row by row.
    std::vector<bool> Render(std::size_t& width) {
        std::istringstream image(Run("pdftoppm -gray -r 720 -singlefile", "a.pgm"));
        std::string magic;
        std::size_t height = 0;
        int most = 0;
        image >> magic >> width >> height >> most;
        image.get();
        std::vector<bool> dark;
        for (std::size_t i = 0; i < width * height; ++i) {
            dark.push_back(image.get() < 128);
        }
        return dark;
    }

    TempDir folder;
    std::string bytes;
    Picture::Sink sink = [this](std::string_view more) { bytes += more; };
    Picture picture{PictureFormat::Pdf, {20.0, 10.0}, 1.0, sink};
    Canvas& canvas = picture.GetCanvas();
};

TEST_F(PdfCanvasTest, ACrossIsDrawnWhereItIsAskedForInItsSizeAndWidth) {
    cairo_set_line_width(canvas.GetContext(), 1.0);
    canvas.DrawCrosses(std::vector<CVector>{{10.0, 9.0}, {30.0, 15.0}}, 6.0);
    Finish();
    std::size_t width = 0;
    const std::vector<bool> dark = Render(width);
    const auto isDark = [&](double x, double y) {
        return bool{
            dark[static_cast<std::size_t>(y * 10) * width + static_cast<std::size_t>(x * 10)]};
    };
    for (const CVector& place : {CVector(10.0, 9.0), CVector(30.0, 15.0)}) {
        const double x = place.GetX();
        const double y = place.GetY();
        EXPECT_TRUE(isDark(x, y));
        for (const double side : {-1.0, 1.0}) {
            EXPECT_TRUE(isDark(x + side * 2.7, y));
            EXPECT_TRUE(isDark(x, y + side * 2.7));
            EXPECT_FALSE(isDark(x + side * 3.3, y));
            EXPECT_FALSE(isDark(x, y + side * 3.3));
            EXPECT_TRUE(isDark(x + 2.0, y + side * 0.3));
            EXPECT_FALSE(isDark(x + 2.0, y + side * 0.8));
        }
    }
    EXPECT_FALSE(isDark(20.0, 12.0));
}

TEST_F(PdfCanvasTest, EachSizeAndWidthHasItsOwnCross) {
    cairo_set_line_width(canvas.GetContext(), 0.5);
    canvas.DrawCrosses(std::vector<CVector>{{10.0, 15.0}}, 4.0);
    cairo_set_line_width(canvas.GetContext(), 2.0);
    canvas.DrawCrosses(std::vector<CVector>{{30.0, 15.0}}, 8.0);
    Finish();
    std::size_t width = 0;
    const std::vector<bool> dark = Render(width);
    const auto isDark = [&](double x, double y) {
        return bool{
            dark[static_cast<std::size_t>(y * 10) * width + static_cast<std::size_t>(x * 10)]};
    };
    EXPECT_FALSE(isDark(12.5, 15.0));
    EXPECT_FALSE(isDark(11.0, 15.5));
    EXPECT_TRUE(isDark(33.5, 15.0));
    EXPECT_TRUE(isDark(33.0, 15.8));
}

TEST_F(PdfCanvasTest, CrossesDoNotDisturbASearchOfTheText) {
    canvas.DrawCrosses(std::vector<CVector>(300, CVector(10.0, 9.0)), 6.0);
    TextPainter text(canvas);
    text.SetFont(5.0);
    text.Write("MH 12", {5.0, 20.0});
    Finish();
    const std::string found = Run("pdftotext", "a");
    EXPECT_EQ(found.substr(0, found.find('\n')), "MH 12");
    EXPECT_EQ(found.find("\xEF\xBF\xBD"), std::string::npos);
}

TEST_F(PdfCanvasTest, ACrossTakesFewBytes) {
    constexpr int kCrosses = 20'000;
    std::vector<CVector> places;
    for (int i = 0; i < kCrosses; ++i) {
        places.emplace_back(1.0 + i * 7919 % 5000 * 0.01, 1.0 + i * 104729 % 2500 * 0.01);
    }
    for (std::size_t i = 0; i < places.size(); i += 200) {
        canvas.DrawCrosses(std::span(places).subspan(i, 200), 6.0);
    }
    Finish();
    EXPECT_LT(bytes.size(), kCrosses * 10U);
}

}  // namespace
}  // namespace cqsurvey::plan
