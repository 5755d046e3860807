#include "cqsurvey/exchange/ImageHeader.h"

#include <gtest/gtest.h>

namespace cqsurvey::exchange {
namespace {

using namespace std::literals;

/// The format and the size, such as "PNG 640x480".
std::string Describe(std::string_view bytes) {
    const std::optional<ImageHeader> header = ImageHeader::Find(bytes);
    return !header ? "none"
                   : header->format + " "s + std::to_string(header->width) + "x" +
                         std::to_string(header->height);
}

TEST(ImageHeader, TellsTheFormatAndTheSize) {
    EXPECT_EQ(Describe("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\x02\x80\0\0\x01\xE0"sv), "PNG 640x480");
    EXPECT_EQ(Describe("GIF89a\x80\x02\xE0\x01"sv), "GIF 640x480");
    EXPECT_EQ(Describe("BM....\0\0\0\0....\x28\0\0\0\x80\x02\0\0\xE0\x01\0\0"sv), "BMP 640x480");
    EXPECT_EQ(Describe("BM....\0\0\0\0....\x28\0\0\0\x80\x02\0\0\x20\xFE\xFF\xFF"sv),
              "BMP 640x480");
    EXPECT_EQ(Describe("BM....\0\0\0\0....\x0C\0\0\0\x80\x02\xE0\x01"sv), "BMP 640x480");
    EXPECT_EQ(Describe("\xFF\xD8\xFF\xE0\0\x04JF\xFF\xC4\0\x02\xFF\xFF\xC2\0\x11\x08\x01\xE0"
                       "\x02\x80\x03"sv),
              "JPEG 640x480");
    EXPECT_EQ(Describe("II*\0\x08\0\0\0\x02\0\0\x01\x03\0\x01\0\0\0\x80\x02\0\0"
                       "\x01\x01\x04\0\x01\0\0\0\xE0\x01\0\0"sv),
              "TIFF 640x480");
    EXPECT_EQ(Describe("MM\0*\0\0\0\x08\0\x02\x01\0\0\x03\0\0\0\x01\x02\x80\0\0"
                       "\x01\x01\0\x04\0\0\0\x01\0\0\x01\xE0"sv),
              "TIFF 640x480");
    EXPECT_EQ(Describe("RIFF....WEBPVP8 "sv), "WebP 0x0");
}

TEST(ImageHeader, TextsAndOtherFilesAreNone) {
    EXPECT_EQ(Describe(""), "none");
    EXPECT_EQ(Describe("P1,1,2,3\n"), "none");
    EXPECT_EQ(Describe("BM1,1,2,3\n"), "none");
    EXPECT_EQ(Describe("  0\nSECTION\n  2\nHEADER\n"), "none");
    EXPECT_EQ(Describe("%PDF-1.4"), "none");
    EXPECT_EQ(Describe("RIFF....WAVE"), "none");
}

TEST(ImageHeader, AFileThatEndsTooEarlyHasNoSize) {
    EXPECT_EQ(Describe("\xFF\xD8\xFF\xE0"sv), "JPEG 0x0");
    EXPECT_EQ(Describe("\xFF\xD8\xFF\xE0\xFF\xFFxxxxxxxx"sv), "JPEG 0x0");
    EXPECT_EQ(Describe("\xFF\xD8\xFF\xE0\0\0xxxxxxxx"sv), "JPEG 0x0");
    EXPECT_EQ(Describe("II*\0\xFF\xFF\xFF\xFF"sv), "TIFF 0x0");
    EXPECT_EQ(Describe("\x89PNG\r\n\x1A\n"sv), "PNG 0x0");
}

}  // namespace
}  // namespace cqsurvey::exchange
