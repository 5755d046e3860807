#include "plan/ImagePainter.h"

#include <gtest/gtest.h>

#include "plan/SvgPage.h"

namespace cqsurvey::plan {
namespace {

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length) {
    auto& bytes = *static_cast<std::vector<std::uint8_t>*>(closure);
    bytes.insert(bytes.end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
}

/// A PNG of 4 x 2 pixels, 40 m wide, in the middle of the page.
PlanImage MakeImage() {
    PlanImage image;
    const CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 4, 2));
    cairo_surface_write_to_png_stream(surface.get(), &Append, &image.bytes);
    image.centre = {50, 50};
    image.size = {40, 20};
    return image;
}

class ImagePainterTest : public testing::Test {
 protected:
    SvgPicture Draw(const PlanImage& image) {
        ImagePainter(page.Get(), room).Draw(image);
        return page.Finish();
    }

    LabelRoom room;
    SvgPage page;
};

TEST_F(ImagePainterTest, AnImageIsDrawnWithoutANote) {
    const SvgPicture picture = Draw(MakeImage());
    EXPECT_EQ(picture.images, 1);
    EXPECT_TRUE(picture.paths.empty());
    EXPECT_TRUE(page.Get().GetNotes().empty());
}

TEST_F(ImagePainterTest, AnImageOutsideOfTheMapIsNotDrawn) {
    PlanImage image = MakeImage();
    image.centre = {5000, 50};
    image.bytes = {1, 2, 3};
    EXPECT_EQ(Draw(image).images, 0);
    EXPECT_TRUE(page.Get().GetNotes().empty()) << "nor looked into";
}

TEST_F(ImagePainterTest, ADamagedImageIsADashedFrameAndANote) {
    PlanImage image = MakeImage();
    image.bytes.resize(40);
    const SvgPicture picture = Draw(image);
    EXPECT_EQ(picture.images, 0);
    ASSERT_EQ(picture.paths.size(), 1U);
    EXPECT_FALSE(picture.paths[0].dashes.empty());
    const std::vector<double> box = picture.paths[0].Box();
    EXPECT_NEAR(box[2] - box[0], 80 * kMillimetre, 0.01);
    EXPECT_NEAR(box[3] - box[1], 40 * kMillimetre, 0.01);
    ASSERT_EQ(page.Get().GetNotes().size(), 1U);
    EXPECT_EQ(page.Get().GetNotes()[0], "the background image is damaged; its frame is drawn");
}

TEST_F(ImagePainterTest, TheFrameIsTurnedAsTheImageIs) {
    PlanImage image = MakeImage();
    image.bytes.clear();
    image.rotation = 90.0;
    const std::vector<double> box = Draw(image).paths.at(0).Box();
    EXPECT_NEAR(box[2] - box[0], 40 * kMillimetre, 0.01);
    EXPECT_NEAR(box[3] - box[1], 80 * kMillimetre, 0.01);
}

TEST_F(ImagePainterTest, AnImageTooLargeForTheScaleIsAFrameAndANote) {
    PlanImage image = MakeImage();
    image.size = {1e9, 5e8};
    EXPECT_EQ(Draw(image).images, 0);
    ASSERT_EQ(page.Get().GetNotes().size(), 1U);
    EXPECT_EQ(page.Get().GetNotes()[0],
              "the background image is too large at this scale; its frame is drawn");
}

}  // namespace
}  // namespace cqsurvey::plan
