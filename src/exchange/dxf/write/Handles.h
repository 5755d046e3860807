#pragma once

#include <cstdint>
#include <string_view>

namespace cqsurvey::exchange::dxf {

/// The handles by which the parts of a file name each other.
namespace handles {
inline constexpr std::uint64_t kRoot = 0x1;
inline constexpr std::uint64_t kGroups = 0x2;
inline constexpr std::uint64_t kLayouts = 0x3;
inline constexpr std::uint64_t kModelLayout = 0x4;
inline constexpr std::uint64_t kPaperLayout = 0x5;
inline constexpr std::uint64_t kImages = 0x6;
inline constexpr std::uint64_t kImageVariables = 0x7;
inline constexpr std::uint64_t kImage = 0x8;
inline constexpr std::uint64_t kImageFile = 0x9;
inline constexpr std::uint64_t kImageReactor = 0xA;
inline constexpr std::uint64_t kModel = 0x10;
inline constexpr std::uint64_t kPaper = 0x11;
inline constexpr std::uint64_t kPointRecord = 0x12;
}  // namespace handles

/// The group in which a record names its owner.
inline constexpr int kOwner = 330;

/// The blocks that every later version has.
inline constexpr std::string_view kModelName = "*Model_Space";
inline constexpr std::string_view kPaperName = "*Paper_Space";

}  // namespace cqsurvey::exchange::dxf
