#pragma once

#include <cstdint>

#include "cqsurvey/Export.h"

/// The codes of failures. 0x3000xxxx come from the volume (the job's file), 0x3100xxxx from its
/// tables. ErrorText has a sentence for each.
namespace cqsurvey::error {

inline constexpr std::int32_t kNone = 0;
inline constexpr std::int32_t kGeneralFailure = 0x30000001;
inline constexpr std::int32_t kInvalidArgument = 0x30000002;
inline constexpr std::int32_t kOutOfMemory = 0x30000003;
inline constexpr std::int32_t kAccessDenied = 0x30000004;
inline constexpr std::int32_t kReadWriteFailed = 0x30000005;
inline constexpr std::int32_t kVolumeFull = 0x30000006;
inline constexpr std::int32_t kDamaged = 0x30000007;
inline constexpr std::int32_t kVolumeMounted = 0x30000008;
inline constexpr std::int32_t kNoVolume = 0x30000009;
inline constexpr std::int32_t kNewerVersion = 0x3000000A;
inline constexpr std::int32_t kMountNameInUse = 0x3000000D;
inline constexpr std::int32_t kNoMount = 0x3000000E;
inline constexpr std::int32_t kNoFile = 0x30000013;
inline constexpr std::int32_t kFileExists = 0x30000015;
inline constexpr std::int32_t kNoTable = 0x31000001;
inline constexpr std::int32_t kTableExists = 0x31000002;
inline constexpr std::int32_t kNoRecord = 0x31000003;
inline constexpr std::int32_t kDuplicatePointName = 0x31000004;
inline constexpr std::int32_t kBadTableDescription = 0x31000005;

/// A failure without a stated reason, and an entity record of unknown type.
inline constexpr std::int32_t kUnknown = -1;

}  // namespace cqsurvey::error

namespace cqsurvey {

/// One English sentence for a code of this list; for any other code, that it is unknown.
CQSURVEY_API const char* ErrorText(std::int32_t code) noexcept;

}  // namespace cqsurvey
