#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "cqsurvey/ErrorCodes.h"

namespace cqsurvey {

/// A failure inside the store: a code and, where there is one, what or where. It is the only form
/// that a failure has below the Qrfs and Qrdb functions. They turn it into their failure sign and
/// the thread's last error, and the classes above turn that into an exception, once.
struct StoreFailure {
    explicit StoreFailure(std::int32_t code_, std::string detail_ = {})
        : code(code_), detail(std::move(detail_)) {}

    std::int32_t code;
    std::string detail;
};

/// What a failure means for the step in which it happens.
enum class FailureKind : std::uint8_t {
    Refusal,  ///< the store refused before it changed anything: the changes so far are kept
    Medium,   ///< the medium failed: the step is undone
    Denied,   ///< there is no memory, or the job can only be read: the step is undone
    Other,    ///< a change that ends so may be half done, and its step cannot be committed
};

/// The one table of what each code means for a step.
[[nodiscard]] constexpr FailureKind KindOf(std::int32_t code) noexcept {
    switch (code) {
        case error::kInvalidArgument:
        case error::kNoFile:
        case error::kFileExists:
        case error::kNoTable:
        case error::kTableExists:
        case error::kNoRecord:
        case error::kBadTableDescription:
            return FailureKind::Refusal;
        case error::kReadWriteFailed:
        case error::kVolumeFull:
        case error::kDamaged:
            return FailureKind::Medium;
        case error::kOutOfMemory:
        case error::kAccessDenied:
            return FailureKind::Denied;
        default:
            return FailureKind::Other;
    }
}

}  // namespace cqsurvey
