#pragma once

#include <cstdint>

namespace cqsurvey {

/// Throws CqSurveyException with `code`, or with -1 for a code of 0, and the store's last detail.
[[noreturn]] void ThrowStorageError(std::int32_t code);

/// ThrowStorageError with the store's last error.
[[noreturn]] void ThrowLastStorageError();

}  // namespace cqsurvey
