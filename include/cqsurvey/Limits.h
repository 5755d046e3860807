#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

/// How long the texts of a job may be, and how large its numbers. Lengths of texts are in UTF-16
/// code units.
namespace cqsurvey::limits {

// Longer names are cut when they are stored.
inline constexpr std::size_t kPointName = 19;
inline constexpr std::size_t kGroupName = 19;
inline constexpr std::size_t kLayerName = 51;
inline constexpr std::size_t kTextStyle = 23;

/// The highest number of a layer: an entity names its layer in 16 bits.
inline constexpr std::uint32_t kHighestLayer = 0xFFFF;

/// How much of an annotation's text or a bitmap's resource name can be read. The job keeps all of
/// it.
inline constexpr std::size_t kReadableText = 255;

/// The highest number of a group of points; 0 is no group.
inline constexpr std::uint16_t kHighestGroup = 0xFFFF;

/// The highest data origin of a point. As a mask it has the bits of every origin.
inline constexpr std::uint16_t kHighestOrigin = 0xFFFF;

/// The colour or line type of an entity that has those of its layer.
inline constexpr std::int32_t kByLayer = 256;

/// The colour of an entity. One of a negative colour is hidden.
inline constexpr std::int32_t kLowestColor = -kByLayer;
inline constexpr std::int32_t kHighestColor = kByLayer;

/// The highest colour of the palette; the lowest is 1. The colour of a layer is negative while the
/// layer is hidden.
inline constexpr std::int32_t kHighestPaletteColor = 255;

/// The highest line type of a layer. A code table has no higher one for entities, either.
inline constexpr std::int32_t kHighestLine = 0xFFFF;

/// The division of a plane coordinate system. A settings file may also hold 0, for none.
inline constexpr std::int32_t kLowestDivision = 1;
inline constexpr std::int32_t kHighestDivision = 19;
inline constexpr std::int32_t kNoDivision = 0;

/// The colour in which everything is drawn: 0 to 255, or none.
inline constexpr std::int32_t kNoForcedColor = -1;
inline constexpr std::int32_t kHighestForcedColor = 255;

// The background image.
inline constexpr std::int32_t kLowestBrightness = -255;
inline constexpr std::int32_t kHighestBrightness = 255;
inline constexpr std::int32_t kLowestContrast = 0;
inline constexpr std::int32_t kHighestContrast = 65000;

/// The most bytes of a settings file that is read, from the host or when a job is opened.
inline constexpr std::uint32_t kSettingsBytes = 1U << 22;
/// The most code units of all settings of a job. In any code page they fit into kSettingsBytes.
inline constexpr std::uint32_t kSettingsText = 1U << 20;

/// The most bytes of a file inside a job: the settings, the descriptions, the background image.
inline constexpr std::uint32_t kFileBytes = std::numeric_limits<std::int32_t>::max();

}  // namespace cqsurvey::limits
