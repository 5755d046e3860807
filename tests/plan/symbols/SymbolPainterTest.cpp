#include "plan/symbols/SymbolPainter.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "plan/canvas/Cairo.h"

namespace cqsurvey::plan {
namespace {

/// The pixels of one symbol of 80 pixels in the middle of 100 x 100.
std::string Paint(Symbol symbol) {
    constexpr int kSide = 100;
    const CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kSide, kSide));
    const CairoPtr context(cairo_create(surface.get()));
    Canvas canvas(context.get());
    const Sheet sheet({}, {0, 0, 50, 50}, 500.0);
    Page page(canvas, sheet, kWhite);
    page.SetColor(kWhite);
    canvas.Cover(kSide, kSide);
    SymbolPainter(page).Draw(symbol, {50, 50}, 80, {255, 0, 0});
    EXPECT_EQ(cairo_status(context.get()), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(cairo_has_current_point(context.get()), 0) << "no path is left";
    cairo_surface_flush(surface.get());
    std::string pixels;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const unsigned char* at = cairo_image_surface_get_data(surface.get()) +
                                      y * cairo_image_surface_get_stride(surface.get()) + x * 4;
            pixels += at[0] < 200 ? '#' : '.';
        }
    }
    return pixels;
}

TEST(SymbolPainter, EachSymbolCanBeToldFromTheOthers) {
    std::set<std::string> seen;
    for (std::size_t i = 1; i < kSymbols; ++i) {
        const std::string pixels = Paint(static_cast<Symbol>(i));
        EXPECT_NE(pixels.find('#'), std::string::npos) << i;
        EXPECT_TRUE(seen.insert(pixels).second) << i;
    }
}

TEST(SymbolPainter, ASymbolStaysInsideOfItsSize) {
    for (std::size_t i = 1; i < kSymbols; ++i) {
        const std::string pixels = Paint(static_cast<Symbol>(i));
        for (std::size_t at = pixels.find('#'); at != std::string::npos;
             at = pixels.find('#', at + 1)) {
            // Half of the line's width may lie outside.
            EXPECT_GE(at % 100, 8U) << i;
            EXPECT_LE(at % 100, 91U) << i;
            EXPECT_GE(at / 100, 8U) << i;
            EXPECT_LE(at / 100, 91U) << i;
        }
    }
}

}  // namespace
}  // namespace cqsurvey::plan
