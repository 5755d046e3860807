#pragma once

#include <cstdint>

namespace cqsurvey {

/// Throws CqSurveyException with `code` and the store's last detail. A code of 0, a failure without
/// a reason, becomes error::kUnknown.
[[noreturn]] void ThrowStorageError(std::int32_t code);

/// ThrowStorageError with the store's last error.
[[noreturn]] void ThrowLastStorageError();

}  // namespace cqsurvey
