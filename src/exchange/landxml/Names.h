#pragma once

#include <string_view>

namespace cqsurvey::exchange::landxml {

// The layers of what has no name that could be one.
inline constexpr std::string_view kPlanFeatures = "PlanFeatures";
inline constexpr std::string_view kAlignments = "Alignments";
inline constexpr std::string_view kSurfaces = "Surfaces";

// What LandXmlWriter keeps in properties, in addition to the keys that all formats share.
inline constexpr std::string_view kKindKey = "KIND";
inline constexpr std::string_view kCircleKind = "CIRCLE";
inline constexpr std::string_view kTextKind = "TEXT";
inline constexpr std::string_view kLayerKey = "LAYER";
inline constexpr std::string_view kRadiusKey = "RADIUS";
inline constexpr std::string_view kTextKey = "TEXT";
inline constexpr std::string_view kStyleKey = "STYLE";
inline constexpr std::string_view kTextHeightKey = "TEXTHEIGHT";
inline constexpr std::string_view kRotationKey = "ROTATION";

}  // namespace cqsurvey::exchange::landxml
