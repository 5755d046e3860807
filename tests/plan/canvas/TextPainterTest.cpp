#include "plan/canvas/TextPainter.h"

#include <cairo-svg.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>
#include <regex>

#include "plan/canvas/Cairo.h"

namespace cqsurvey::plan {
namespace {

using std::string_literals::operator""s;

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

/// A glyph of an SVG that cairo has written.
struct Glyph {
    std::string symbol;
    double x;
};

std::vector<Glyph> FindGlyphs(const std::string& svg) {
    static const std::regex kUse("<use xlink:href=\"([^\"]*)\" x=\"([^\"]*)\"");
    std::vector<Glyph> glyphs;
    for (std::sregex_iterator at(svg.begin(), svg.end(), kUse); at != std::sregex_iterator();
         ++at) {
        glyphs.push_back({(*at)[1], std::stod((*at)[2])});
    }
    return glyphs;
}

/// What is black on a sheet of 400 x 400 pixels, largest row and column past the ink.
struct Ink {
    int left = 400, top = 400, right = 0, bottom = 0;
};

class TextPainterTest : public testing::Test {
 protected:
    TextPainterTest()
        : surface(cairo_image_surface_create(CAIRO_FORMAT_A8, 400, 400)),
          context(cairo_create(surface.get())),
          canvas(context.get()),
          painter(canvas) {}

    ~TextPainterTest() override { EXPECT_EQ(cairo_status(context.get()), CAIRO_STATUS_SUCCESS); }

    Ink FindInk() const {
        cairo_surface_flush(surface.get());
        const unsigned char* data = cairo_image_surface_get_data(surface.get());
        Ink ink;
        for (int y = 0; y < 400; ++y) {
            for (int x = 0; x < 400; ++x) {
                if (data[y * cairo_image_surface_get_stride(surface.get()) + x] > 127) {
                    ink = {std::min(ink.left, x), std::min(ink.top, y), std::max(ink.right, x + 1),
                           std::max(ink.bottom, y + 1)};
                }
            }
        }
        return ink;
    }

    CairoSurfacePtr surface;
    CairoPtr context;
    Canvas canvas;
    TextPainter painter;
};

TEST_F(TextPainterTest, CapitalsAreAsHighAsAskedForAndStandOnTheBaseline) {
    painter.SetFont(100.0);
    painter.Write("HH", {50, 300});
    const Ink ink = FindInk();
    EXPECT_NEAR(ink.bottom, 300, 1);
    EXPECT_NEAR(ink.bottom - ink.top, 100, 1);
    EXPECT_NEAR(ink.left, 55, 10);
    EXPECT_NEAR(ink.right, 50 + painter.GetWidth("HH"), 15);
}

TEST_F(TextPainterTest, BoldIsBlacker) {
    painter.SetFont(50.0);
    const double normal = painter.GetWidth("HHH");
    painter.SetFont(50.0, true);
    EXPECT_GT(painter.GetWidth("HHH"), normal);
    painter.SetFont(50.0);
    EXPECT_EQ(painter.GetWidth("HHH"), normal);
}

TEST_F(TextPainterTest, AWidthIsInProportionToTheSize) {
    const std::string text = "Station 12, Tavern \xCE\xA9\xCE\xBB";
    painter.SetFont(1.0);
    const double width = painter.GetWidth(text);
    EXPECT_GT(width, 10.0);
    for (const double height : {0.01, 0.7, 3.3, 1000.0}) {
        painter.SetFont(height);
        EXPECT_NEAR(painter.GetWidth(text), width * height, 1e-9 * width * height);
    }
    painter.SetFont(1.0);
    EXPECT_NEAR(painter.GetWidth("HHHH"), 4 * painter.GetWidth("H"), 1e-9);
    EXPECT_EQ(painter.GetWidth(""), 0.0);
}

TEST_F(TextPainterTest, FollowsTheContext) {
    painter.SetFont(40.0);
    cairo_translate(context.get(), 200, 200);
    cairo_rotate(context.get(), std::numbers::pi / 2);
    painter.Write("HHH", {10, 20});
    const Ink ink = FindInk();
    EXPECT_NEAR(ink.left, 180, 1);
    EXPECT_NEAR(ink.right, 220, 1);
    EXPECT_GT(ink.top, 209);
    EXPECT_GT(ink.bottom - ink.top, 70);
    EXPECT_EQ(cairo_has_current_point(context.get()), 0);
}

TEST_F(TextPainterTest, NothingIsDrawnWithoutHeight) {
    for (const double height : {0.0, -5.0, std::nan("")}) {
        painter.SetFont(height);
        painter.Write("H", {100, 100});
    }
    EXPECT_EQ(FindInk().right, 0);
    painter.SetFont(10.0);
    painter.Write("H", {100, 100});
    EXPECT_GT(FindInk().right, 0);
}

TEST_F(TextPainterTest, KnowsWhatNoFontHas) {
    painter.Write("Latin, \xCE\x95\xCE\xBB\xCE\xBB\xCE\xB7\xCE\xBD\xCE\xB9\xCE\xBA\xCE\xAC",
                  {0, 9});
    EXPECT_EQ(painter.GetUnknown(), 0U);
    // U+0378 is no character.
    static_cast<void>(painter.GetWidth("\xCD\xB8"));
    EXPECT_EQ(painter.GetUnknown(), 0U);
    painter.Write("a\xCD\xB8z\xCD\xB8", {0, 9});
    painter.Write("\xCD\xB8", {0, 9});
    EXPECT_EQ(painter.GetUnknown(), 3U);
}

TEST_F(TextPainterTest, WhatIsReadFromTheRightIsWrittenFromTheRight) {
    std::string text;
    {
        const CairoSurfacePtr svg(cairo_svg_surface_create_for_stream(&Append, &text, 400, 400));
        const CairoPtr drawing(cairo_create(svg.get()));
        Canvas page(drawing.get());
        TextPainter writer(page);
        writer.SetFont(10.0);
        for (const char* line : {"\xD7\x90", "\xD7\x90\xD7\x91", "ab"}) {
            writer.Write(line, {50, 100});
        }
    }
    const std::vector<Glyph> glyphs = FindGlyphs(text);
    ASSERT_EQ(glyphs.size(), 5U);
    // Alef alone, then bet and alef from left to right.
    EXPECT_EQ(glyphs[0].x, 50.0);
    EXPECT_EQ(glyphs[1].x, 50.0);
    EXPECT_GT(glyphs[2].x, 52.0);
    EXPECT_EQ(glyphs[2].symbol, glyphs[0].symbol);
    EXPECT_NE(glyphs[1].symbol, glyphs[0].symbol);
    EXPECT_LT(glyphs[3].x, glyphs[4].x);
}

TEST_F(TextPainterTest, LettersThatJoinAreJoined) {
    // Beh: three in a row are of other shapes than three with blanks between them.
    const double beh = painter.GetWidth("\xD8\xA8");
    EXPECT_LT(painter.GetWidth("\xD8\xA8\xD8\xA8\xD8\xA8"), 2.7 * beh);
}

TEST_F(TextPainterTest, ControlCharactersAndEndsOfLinesAreBlanks) {
    const double blank = painter.GetWidth("a b");
    for (const std::string& text :
         {"a\nb"s, "a\rb"s, "a\tb"s, "a\0b"s, "a\x1B"s + "b", "a\x7F"s + "b", "a\xC2\x85"s + "b",
          "a\xE2\x80\xA8"s + "b", "a\xE2\x80\xA9"s + "b"}) {
        EXPECT_EQ(painter.GetWidth(text), blank) << testing::PrintToString(text);
    }
    EXPECT_EQ(painter.GetUnknown(), 0U);
}

TEST_F(TextPainterTest, WhatIsNotUtf8IsReplaced) {
    const auto replaced = [&](int count) {
        std::string text = "a";
        for (int i = 0; i < count; ++i) {
            text += "\xEF\xBF\xBD";
        }
        return painter.GetWidth(text);
    };
    EXPECT_EQ(painter.GetWidth("a\xFF"), replaced(1));
    EXPECT_EQ(painter.GetWidth("a\xE2\x80"), replaced(2));
    EXPECT_EQ(painter.GetWidth("a\xED\xA0\x80"), replaced(3));
    EXPECT_EQ(painter.GetWidth("a\xC0\x80"), replaced(2));
}

TEST_F(TextPainterTest, AVeryLongTextIsCut) {
    const double width = painter.GetWidth(std::string(10'000, 'H'));
    EXPECT_NEAR(width, 10'000 * painter.GetWidth("H"), 1e-6 * width);
    EXPECT_NEAR(painter.GetWidth(std::string(5'000'000, 'H')),
                width + painter.GetWidth("\xE2\x80\xA6"), 1e-6 * width);
    std::string text;
    // Accents without a letter, turns of the direction, the widest ligature, what is no character.
    for (const char* part : {"\xCC\x81", "\xE2\x80\xAB", "\xEF\xB7\xBD", "\xCD\xB8"}) {
        text.clear();
        for (int i = 0; i < 20'000; ++i) {
            text += part;
        }
        EXPECT_GE(painter.GetWidth(text), 0.0);
        painter.Write(text, {0, 100});
    }
}

TEST_F(TextPainterTest, TakesAnything) {
    constexpr unsigned kSeed = 20240611;
    std::mt19937 random(kSeed);
    for (int i = 0; i < 300; ++i) {
        std::string text(random() % 40, '\0');
        for (char& c : text) {
            c = static_cast<char>(random());
        }
        for (int k = 0; k < 20; ++k) {
            const auto c = static_cast<gunichar>(random() % 0x110000);
            std::array<char, 6> bytes{};
            const int length = g_unichar_to_utf8(random() % 2 == 0 ? c % 0x3000 : c, bytes.data());
            text.append(bytes.data(), static_cast<std::size_t>(length));
        }
        painter.SetFont(std::ldexp(1.0, static_cast<int>(random() % 12)), random() % 2 == 0);
        const double width = painter.GetWidth(text);
        ASSERT_TRUE(std::isfinite(width))
            << "seed " << kSeed << ", " << testing::PrintToString(text);
        painter.Write(text, {-width / 2, 100});
    }
}

}  // namespace
}  // namespace cqsurvey::plan
