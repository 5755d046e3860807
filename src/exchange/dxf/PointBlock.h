#pragma once

#include <string_view>

namespace cqsurvey::exchange::dxf {

/// The block by which DxfWriter writes survey points, and the tags of its attributes.
inline constexpr std::string_view kPointBlock = "CQPOINT";
inline constexpr std::string_view kNameTag = "NAME";
inline constexpr std::string_view kHeightTag = "HEIGHT";
inline constexpr std::string_view kCodeTag = "CODE";
inline constexpr std::string_view kDescriptionTag = "DESCRIPTION";

}  // namespace cqsurvey::exchange::dxf
