#include "cqjob/ImageDecoder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace cqsurvey::cqjob {
namespace {

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
    auto& bytes = *static_cast<std::vector<std::uint8_t>*>(closure);
    bytes.insert(bytes.end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
}

/// A PNG of one pixel.
PlanImage MakeImage(double red, double green, double blue) {
    const CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1));
    {
        const CairoPtr context(cairo_create(surface.get()));
        cairo_set_source_rgb(context.get(), red, green, blue);
        cairo_paint(context.get());
    }
    PlanImage image;
    cairo_surface_write_to_png_stream(surface.get(), &Append, &image.bytes);
    return image;
}

std::uint32_t PixelOf(const PlanImage& image) {
    std::string fault;
    const CairoSurfacePtr surface = DecodeImage(image, fault);
    EXPECT_NE(surface, nullptr) << fault;
    if (surface == nullptr) {
        return 0;
    }
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, cairo_image_surface_get_data(surface.get()), sizeof(pixel));
    return pixel;
}

TEST(ImageDecoder, DecodesAPng) {
    EXPECT_EQ(PixelOf(MakeImage(1.0, 0.0, 0.0)), 0xFFFF0000U);
}

TEST(ImageDecoder, AppliesBrightnessContrastAndGreyness) {
    PlanImage image = MakeImage(1.0, 0.0, 0.0);
    image.grey = true;
    EXPECT_EQ(PixelOf(image), 0xFF4C4C4CU);
    image.grey = false;
    image.brightness = 16;
    EXPECT_EQ(PixelOf(image), 0xFFFF1010U);
    image.brightness = 0;
    image.contrast = 0;
    EXPECT_EQ(PixelOf(image), 0xFF7F7F7FU);
    image.contrast = 65000;
    image.brightness = -255;
    EXPECT_EQ(PixelOf(image), 0xFFFF0000U);
}

TEST(ImageDecoder, SaysWhyItCannot) {
    std::string fault;
    PlanImage image;
    EXPECT_EQ(DecodeImage(image, fault), nullptr);
    EXPECT_EQ(fault, "the background image is no PNG; its frame is drawn");
    image = MakeImage(0.0, 1.0, 0.0);
    image.bytes.resize(image.bytes.size() / 2);
    EXPECT_EQ(DecodeImage(image, fault), nullptr);
    EXPECT_EQ(fault, "the background image is damaged; its frame is drawn");
    image = MakeImage(0.0, 1.0, 0.0);
    image.bytes[16] = 0x7F;
    EXPECT_EQ(DecodeImage(image, fault), nullptr);
    EXPECT_EQ(fault, "the background image has too many pixels; its frame is drawn");
}

}  // namespace
}  // namespace cqsurvey::cqjob
