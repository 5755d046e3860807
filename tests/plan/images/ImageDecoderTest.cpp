#include "plan/images/ImageDecoder.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <random>

namespace cqsurvey::plan {
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

/// The pixels from the left in each row from the top.
std::vector<std::uint32_t> PixelsOf(const PlanImage& image, int width, int height) {
    std::string fault;
    const CairoSurfacePtr surface = DecodeImage(image, fault);
    EXPECT_NE(surface, nullptr) << fault;
    std::vector<std::uint32_t> pixels;
    if (surface == nullptr) {
        return pixels;
    }
    EXPECT_EQ(cairo_image_surface_get_width(surface.get()), width);
    EXPECT_EQ(cairo_image_surface_get_height(surface.get()), height);
    for (int y = 0; y < height; ++y) {
        pixels.resize(pixels.size() + static_cast<std::size_t>(width));
        std::memcpy(pixels.data() + pixels.size() - width,
                    cairo_image_surface_get_data(surface.get()) +
                        y * cairo_image_surface_get_stride(surface.get()),
                    static_cast<std::size_t>(width) * sizeof(std::uint32_t));
    }
    return pixels;
}

std::string FaultOf(const PlanImage& image) {
    std::string fault;
    EXPECT_EQ(DecodeImage(image, fault), nullptr);
    return fault;
}

const std::string kDamaged = "the background image is damaged; its frame is drawn";
const std::string kTooLarge = "the background image has too many pixels; its frame is drawn";

/// A JPEG of a width of 32: the left half orange, the right one blue.
PlanImage MakeJpeg(int height, int flags = 0, int subsampling = TJSAMP_444) {
    constexpr int kWidth = 32;
    std::vector<unsigned char> pixels;
    for (int i = 0; i < kWidth * height; ++i) {
        const bool left = i % kWidth < kWidth / 2;
        for (const int part : {left ? 255 : 0, left ? 128 : 0, left ? 0 : 255}) {
            pixels.push_back(static_cast<unsigned char>(part));
        }
    }
    PlanImage image;
    tjhandle handle = tjInitCompress();
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    EXPECT_EQ(tjCompress2(handle, pixels.data(), kWidth, 0, height, TJPF_RGB, &bytes, &length,
                          subsampling, 95, flags),
              0);
    image.bytes.assign(bytes, bytes + length);
    tjFree(bytes);
    tjDestroy(handle);
    return image;
}

void ExpectNear(std::uint32_t pixel, std::uint32_t expected) {
    EXPECT_EQ(pixel >> 24U, expected >> 24U);
    for (const unsigned shift : {16U, 8U, 0U}) {
        EXPECT_NEAR((pixel >> shift) & 0xFFU, (expected >> shift) & 0xFFU, 4.0)
            << std::hex << pixel << " " << expected;
    }
}

struct Bmp {
    std::uint32_t header = 40;
    std::int32_t width = 2;
    std::int32_t height = 2;
    std::uint16_t bits = 24;
    std::uint32_t packing = 0;
    std::vector<std::uint8_t> behind;  ///< the header: masks or colours
    std::vector<std::uint8_t> pixels;

    operator PlanImage() const {
        PlanImage image;
        const auto put = [&](std::uint32_t number, int length) {
            for (; length > 0; --length, number >>= 8U) {
                image.bytes.push_back(static_cast<std::uint8_t>(number));
            }
        };
        const auto begin = static_cast<std::uint32_t>(14 + header + behind.size());
        image.bytes = {'B', 'M'};
        put(begin + static_cast<std::uint32_t>(pixels.size()), 4);
        put(0, 4);
        put(begin, 4);
        put(header, 4);
        const int side = header == 12 ? 2 : 4;
        put(static_cast<std::uint32_t>(width), side);
        put(static_cast<std::uint32_t>(height), side);
        put(1, 2);
        put(bits, 2);
        if (header >= 40) {
            put(packing, 4);
            image.bytes.resize(14 + header);
        }
        image.bytes.insert(image.bytes.end(), behind.begin(), behind.end());
        image.bytes.insert(image.bytes.end(), pixels.begin(), pixels.end());
        return image;
    }
};

constexpr std::uint32_t kRed = 0xFFFF0000U;
constexpr std::uint32_t kGreen = 0xFF00FF00U;
constexpr std::uint32_t kBlue = 0xFF0000FFU;
constexpr std::uint32_t kWhite = 0xFFFFFFFFU;
constexpr std::uint32_t kBlack = 0xFF000000U;
const std::vector<std::uint32_t> kFour{kRed, kGreen, kBlue, kWhite};
/// Red, green, blue and white, each with a byte that means nothing.
const std::vector<std::uint8_t> kColors{0, 0, 255, 0, 0, 255, 0, 9, 255, 0, 0, 0, 255, 255, 255, 0};

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

TEST(ImageDecoder, KeepsTheOpacityOfAPng) {
    const CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1));
    {
        const CairoPtr context(cairo_create(surface.get()));
        cairo_set_source_rgba(context.get(), 1.0, 0.0, 0.0, 0.2);
        cairo_paint(context.get());
    }
    PlanImage image;
    cairo_surface_write_to_png_stream(surface.get(), &Append, &image.bytes);
    EXPECT_EQ(PixelOf(image), 0x33330000U);
}

TEST(ImageDecoder, DecodesAJpeg) {
    for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
        for (const int subsampling : {TJSAMP_444, TJSAMP_420}) {
            const auto pixels = PixelsOf(MakeJpeg(5, flags, subsampling), 32, 5);
            ASSERT_EQ(pixels.size(), 160U);
            ExpectNear(pixels[0], 0xFFFF8000U);
            ExpectNear(pixels[31], kBlue);
            ExpectNear(pixels[128], 0xFFFF8000U);
            ExpectNear(pixels[159], kBlue);
        }
    }
    ExpectNear(PixelOf(MakeJpeg(1, 0, TJSAMP_GRAY)), 0xFF979797U);
    PlanImage image = MakeJpeg(1);
    image.grey = true;
    ExpectNear(PixelOf(image), 0xFF979797U);
    image.brightness = 20;
    ExpectNear(PixelOf(image), 0xFFABABABU);
}

TEST(ImageDecoder, DecodesAJpegForPrint) {
    // Inks as they are stored, inverted: no cyan, half of the magenta, all of the yellow, no black.
    const std::array<unsigned char, 4> inks{255, 128, 0, 255};
    tjhandle handle = tjInitCompress();
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    ASSERT_EQ(
        tjCompress2(handle, inks.data(), 1, 0, 1, TJPF_CMYK, &bytes, &length, TJSAMP_444, 100, 0),
        0);
    PlanImage image;
    image.bytes.assign(bytes, bytes + length);
    tjFree(bytes);
    tjDestroy(handle);
    ExpectNear(PixelOf(image), 0xFFFF8000U);
}

TEST(ImageDecoder, ACutJpegIsDamagedAndOneWithSomethingBeforeItsEndIsNot) {
    const PlanImage whole = MakeJpeg(64);
    ASSERT_GT(whole.bytes.size(), 600U);
    PlanImage image = whole;
    for (std::size_t length = 3; length < whole.bytes.size() - 1; length += 7) {
        image.bytes.assign(whole.bytes.begin(),
                           whole.bytes.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(FaultOf(image), kDamaged) << length;
    }
    image = whole;
    image.bytes.insert(image.bytes.end() - 2, {1, 2, 3, 4});
    ExpectNear(PixelOf(image), 0xFFFF8000U);
}

TEST(ImageDecoder, AJpegThatIsTooLargeIsNotDecoded) {
    PlanImage image = MakeJpeg(8);
    // Behind the marker of the frame: its length, the precision, height and width.
    constexpr std::array<std::uint8_t, 2> kFrame{0xFF, 0xC0};
    const auto frame =
        std::search(image.bytes.begin(), image.bytes.end(), kFrame.begin(), kFrame.end());
    ASSERT_LT(frame + 9, image.bytes.end());
    std::fill(frame + 5, frame + 9, std::uint8_t{0x7F});
    EXPECT_EQ(FaultOf(image), kTooLarge);
}

TEST(ImageDecoder, AJpegOfManyScansIsNotGoneOverAgainAndAgain) {
    // Many pixels, few bytes.
    const std::vector<std::uint8_t> grey(10'000'000, 255);
    tjhandle handle = tjInitCompress();
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    ASSERT_EQ(tjCompress2(handle, grey.data(), 10'000, 0, 1'000, TJPF_GRAY, &bytes, &length,
                          TJSAMP_GRAY, 90, TJFLAG_PROGRESSIVE),
              0);
    PlanImage image;
    image.bytes.assign(bytes, bytes + length);
    tjFree(bytes);
    tjDestroy(handle);
    EXPECT_EQ(PixelOf(image), kWhite);
    // Its last scan 200 times more.
    constexpr std::array<std::uint8_t, 2> kScan{0xFF, 0xDA};
    const auto scan =
        std::find_end(image.bytes.begin(), image.bytes.end() - 2, kScan.begin(), kScan.end());
    ASSERT_NE(scan, image.bytes.end() - 2);
    const std::vector<std::uint8_t> last(scan, image.bytes.end() - 2);
    for (int i = 0; i < 200; ++i) {
        image.bytes.insert(image.bytes.end() - 2, last.begin(), last.end());
    }
    EXPECT_EQ(FaultOf(image),
              "the background image is coded in too many passes; its frame is drawn");
}

TEST(ImageDecoder, DecodesABmpOfEachKind) {
    Bmp bmp;
    // Rows from the bottom, filled up to four bytes.
    bmp.pixels = {255, 0, 0, 255, 255, 255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "24 bits";
    bmp.header = 12;
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "the old header";
    bmp.header = 124;
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "the new header";
    bmp.header = 40;
    bmp.height = -2;
    EXPECT_EQ(PixelsOf(bmp, 2, 2), (std::vector<std::uint32_t>{kBlue, kWhite, kRed, kGreen}));
    bmp.height = 2;

    bmp.bits = 32;
    bmp.pixels = {255, 0, 0, 7, 255, 255, 255, 0, 0, 0, 255, 1, 0, 255, 0, 255};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "32 bits, the fourth byte means nothing";

    bmp.bits = 16;
    bmp.pixels = {0x1F, 0x00, 0xFF, 0x7F, 0x00, 0x7C, 0xE0, 0x03};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "15 bits";
    bmp.packing = 3;
    bmp.behind = {0x00, 0xF8, 0, 0, 0xE0, 0x07, 0, 0, 0x1F, 0x00, 0, 0};
    bmp.pixels = {0x1F, 0x00, 0xFF, 0xFF, 0x00, 0xF8, 0xE0, 0x07};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "16 bits with masks";
    bmp.packing = 0;

    bmp.behind = kColors;
    bmp.bits = 8;
    bmp.pixels = {2, 3, 0, 0, 0, 1, 0, 0};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "8 bits";
    bmp.bits = 4;
    bmp.pixels = {0x23, 0, 0, 0, 0x01, 0, 0, 0};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), kFour) << "4 bits";
    bmp.bits = 1;
    bmp.pixels = {0x40, 0, 0, 0, 0x80, 0, 0, 0};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), (std::vector<std::uint32_t>{kGreen, kRed, kRed, kGreen}));
    bmp.header = 12;
    bmp.behind = {0, 0, 255, 0, 255, 0};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), (std::vector<std::uint32_t>{kGreen, kRed, kRed, kGreen}));
}

TEST(ImageDecoder, DecodesABmpOfRuns) {
    Bmp bmp;
    bmp.width = 5;
    bmp.height = 3;
    bmp.bits = 8;
    bmp.packing = 1;
    bmp.behind = kColors;
    // Three and two; then a blue one after a move; then five one by one and the byte they are
    // filled up with.
    bmp.pixels = {3, 1, 2, 3, 0, 0, 0, 2, 3, 0, 1, 2, 0, 0, 0, 5, 0, 1, 2, 3, 0, 0, 0, 1};
    EXPECT_EQ(PixelsOf(bmp, 5, 3),
              (std::vector<std::uint32_t>{kRed, kGreen, kBlue, kWhite, kRed,  //
                                          kRed, kRed, kRed, kBlue, kRed,      //
                                          kGreen, kGreen, kGreen, kWhite, kWhite}));
    bmp.bits = 4;
    bmp.packing = 2;
    bmp.pixels = {6, 0x12, 0, 0, 0, 0, 0, 5, 0x01, 0x23, 0x10, 0, 0, 1};
    EXPECT_EQ(PixelsOf(bmp, 5, 3),
              (std::vector<std::uint32_t>{kRed, kGreen, kBlue, kWhite, kGreen,  //
                                          kRed, kRed, kRed, kRed, kRed,         //
                                          kGreen, kBlue, kGreen, kBlue, kGreen}));
    bmp.pixels.resize(bmp.pixels.size() - 1);
    EXPECT_EQ(FaultOf(bmp), kDamaged) << "no end";
    bmp.pixels = {0, 0, 0, 0, 0, 0, 1, 0x11, 0, 1};
    EXPECT_EQ(FaultOf(bmp), kDamaged) << "a fourth row";
}

TEST(ImageDecoder, AColourThatABmpDoesNotHaveIsBlack) {
    Bmp bmp;
    bmp.bits = 8;
    bmp.behind = {0, 0, 255, 0};
    bmp.pixels = {0, 1, 0, 0, 200, 255, 0, 0};
    EXPECT_EQ(PixelsOf(bmp, 2, 2), (std::vector<std::uint32_t>{kBlack, kBlack, kRed, kBlack}));
}

TEST(ImageDecoder, ABmpIsRefusedBeforeThereIsMemoryForIt) {
    Bmp bmp;
    bmp.pixels.resize(16);
    PlanImage image = bmp;
    for (std::size_t length = 2; length < image.bytes.size(); ++length) {
        PlanImage cut = image;
        cut.bytes.resize(length);
        EXPECT_EQ(FaultOf(cut), kDamaged) << length;
    }
    bmp.width = 10'000;
    bmp.height = 10'000;
    EXPECT_EQ(FaultOf(bmp), kDamaged) << "300 MB that are not there";
    bmp.height = 10'001;
    EXPECT_EQ(FaultOf(bmp), kTooLarge);
    bmp.height = -10'001;
    EXPECT_EQ(FaultOf(bmp), kTooLarge);
    bmp.height = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(FaultOf(bmp), kTooLarge);
    bmp.height = 0;
    EXPECT_EQ(FaultOf(bmp), kDamaged);
    bmp.height = 2;
    bmp.width = -2;
    EXPECT_EQ(FaultOf(bmp), kTooLarge);
    bmp.width = 2;
    bmp.packing = 4;
    EXPECT_EQ(FaultOf(bmp), "the background image is a BMP of an unknown kind; its frame is drawn");
    bmp.packing = 0;
    bmp.bits = 23;
    EXPECT_EQ(FaultOf(bmp), "the background image is a BMP of an unknown kind; its frame is drawn");
}

TEST(ImageDecoder, TakesAnyBytesBehindASignature) {
    constexpr unsigned kSeed = 20240612;
    std::mt19937 random(kSeed);
    Bmp runs;
    runs.width = 40;
    runs.height = 30;
    runs.bits = 8;
    runs.packing = 1;
    runs.behind = kColors;
    for (int i = 0; i < 400; ++i) {
        runs.pixels.push_back(static_cast<std::uint8_t>(random() % 6));
    }
    Bmp masks;
    masks.bits = 32;
    masks.packing = 3;
    masks.behind = {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0};
    masks.pixels.resize(16, 77);
    const std::vector<PlanImage> images{MakeImage(0.5, 0.5, 0.5), MakeJpeg(20),
                                        MakeJpeg(20, TJFLAG_PROGRESSIVE), runs, masks};
    std::string fault;
    for (const PlanImage& whole : images) {
        for (int i = 0; i < 400; ++i) {
            PlanImage image = whole;
            const std::size_t kept = i % 4 == 0 ? 2 + random() % 12 : image.bytes.size();
            for (std::size_t k = kept; k < image.bytes.size(); ++k) {
                image.bytes[k] = static_cast<std::uint8_t>(random());
            }
            for (unsigned k = 0; k < 1 + random() % 4; ++k) {
                image.bytes[8 + random() % (image.bytes.size() - 8)] =
                    static_cast<std::uint8_t>(random());
            }
            fault.clear();
            const CairoSurfacePtr surface = DecodeImage(image, fault);
            EXPECT_EQ(surface == nullptr, !fault.empty()) << kSeed << " " << i;
        }
    }
}

TEST(ImageDecoder, SaysWhyItCannot) {
    std::string fault;
    PlanImage image;
    EXPECT_EQ(DecodeImage(image, fault), nullptr);
    EXPECT_EQ(fault, "the background image is neither PNG nor JPEG nor BMP; its frame is drawn");
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
}  // namespace cqsurvey::plan
