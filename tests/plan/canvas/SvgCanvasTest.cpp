#include "plan/canvas/SvgCanvas.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "plan/canvas/Cairo.h"
#include "plan/canvas/TextPainter.h"
#include "support/SvgPicture.h"

namespace cqsurvey::plan {
namespace {

class SvgCanvasTest : public testing::Test {
 protected:
    SvgPicture Finish() {
        canvas.Finish();
        return SvgPicture(bytes);
    }

    std::string bytes;
    SvgCanvas::Sink sink = [this](std::string_view more) { bytes += more; };
    CairoSurfacePtr surface{cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1)};
    CairoPtr context{cairo_create(surface.get())};
    SvgCanvas canvas{context.get(), {25.4, 50.8}, sink};
};

TEST_F(SvgCanvasTest, PathsHaveTheirColourWidthAndDashes) {
    cairo_set_source_rgb(context.get(), 1.0, 0.5, 0.0);
    cairo_set_line_width(context.get(), 1.5);
    const double dashes[] = {3.0, 1.0};
    cairo_set_dash(context.get(), dashes, 2, 0.0);
    cairo_move_to(context.get(), 1, 2);
    cairo_line_to(context.get(), 3, 4.5);
    canvas.Stroke();
    canvas.Stroke();
    const SvgPicture picture = Finish();
    EXPECT_NEAR(picture.width, 72.0, 1e-9);
    EXPECT_NEAR(picture.height, 144.0, 1e-9);
    ASSERT_EQ(picture.paths.size(), 1U) << "the path is gone when it has been drawn";
    EXPECT_EQ(picture.paths[0].stroke, "#ff8000");
    EXPECT_EQ(picture.paths[0].dashes, "3,1");
    EXPECT_EQ(picture.paths[0].width, 1.5);
    EXPECT_EQ(picture.paths[0].Box(), (std::vector<double>{1, 2, 3, 4.5}));
}

TEST_F(SvgCanvasTest, ATextIsATextWithItsSizeTurnAndHalo) {
    TextPainter text(canvas);
    text.SetFont(10.0);
    text.SetHalo(kWhite);
    cairo_translate(context.get(), 30, 40);
    cairo_rotate(context.get(), 0.5);
    text.Write("A & <B>", {0, 0});
    const double width = text.GetWidth("A & <B>");
    const SvgPicture picture = Finish();
    ASSERT_EQ(picture.texts.size(), 1U);
    EXPECT_EQ(picture.texts[0].text, "A &amp; &lt;B&gt;");
    EXPECT_NEAR(picture.texts[0].x, 30, 1e-3);
    EXPECT_NEAR(picture.texts[0].rotation, 28.648, 1e-3);
    EXPECT_NEAR(picture.texts[0].length, width, 1e-3);
    EXPECT_GT(picture.texts[0].size, 10.0) << "of the font, not of its capitals";
    EXPECT_TRUE(picture.texts[0].hasHalo);
}

TEST_F(SvgCanvasTest, GroupsHaveTheirNames) {
    canvas.BeginGroup("Road \"1\" & more");
    canvas.BeginClip({0, 0, 10, 10});
    canvas.EndClip();
    canvas.EndGroup();
    EXPECT_EQ(Finish().groups, std::vector<std::string>{"Road &quot;1&quot; &amp; more"});
}

TEST_F(SvgCanvasTest, WhatXmlCannotHoldIsReplaced) {
    TextPainter text(canvas);
    text.SetFont(10.0);
    text.Write(
        "a\xEF\xBF\xBF"
        "b",
        {0, 0});
    EXPECT_EQ(Finish().texts.at(0).text,
              "a\xEF\xBF\xBD"
              "b");
}

TEST_F(SvgCanvasTest, AnImageIsInTheFile) {
    const CairoSurfacePtr image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 4, 3));
    cairo_scale(context.get(), 0.001, 0.001);
    canvas.ShowImage(image.get());
    EXPECT_EQ(Finish().images, 1);
    EXPECT_NE(bytes.find("data:image/png;base64,iVBOR"), std::string::npos);
    EXPECT_NE(bytes.find("matrix(0.001 0 0 0.001 0 0)"), std::string::npos);
}

TEST_F(SvgCanvasTest, TheFileIsHandedOverInPieces) {
    for (int i = 0; i < 5000; ++i) {
        cairo_move_to(context.get(), i, 0);
        cairo_line_to(context.get(), 0, i);
        canvas.Stroke();
    }
    EXPECT_GT(bytes.size(), 100'000U);
    EXPECT_EQ(Finish().paths.size(), 5000U);
}

}  // namespace
}  // namespace cqsurvey::plan
