#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "cqsurvey/ErrorCodes.h"

namespace cqsurvey {

/// A failure inside the store. It never leaves the Qrfs and Qrdb functions, which turn it into
/// their failure sign and the last error.
struct StoreFailure {
    explicit StoreFailure(std::int32_t code_, std::string detail_ = {})
        : code(code_), detail(std::move(detail_)) {}

    std::int32_t code;
    std::string detail;
};

}  // namespace cqsurvey
