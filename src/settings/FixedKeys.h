#pragma once

#include <cstddef>
#include <cstdint>

namespace cqsurvey {

/// Places of the fixed keys in CqSurveyDB::m_SettingsKey.
enum SettingsKey : std::size_t { kSiPointSize, kJCoordDivision, kVersion, kMapscale };

/// Places of the fixed keys in CqSurveyDB::m_BGSettingsKey.
enum BackgroundKey : std::size_t {
    kEntityColor,
    kType,
    kCenterX,
    kCenterY,
    kSizeX,
    kSizeY,
    kRotation,
    kBrightness,
    kContrast,
    kMonotone,
    kBKColor
};

// The settings of a new job, which are also what a getter returns when the key is absent. All other
// keys begin with 0.
inline constexpr double kDefaultSiPointSize = 5.0;
inline constexpr std::int32_t kDefaultMapscale = 500;
inline constexpr std::int32_t kDefaultContrast = 100;
inline constexpr std::uint32_t kDefaultBKColor = 0xFFFFFF;

}  // namespace cqsurvey
