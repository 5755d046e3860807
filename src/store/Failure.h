#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "cqsurvey/ErrorCodes.h"

namespace cqsurvey {

/// A failure inside the store: a code and, where there is more to say, what failed or where.
///
/// Below the Qrfs and Qrdb functions every failure is thrown in this form. Those functions turn it
/// into their failure sign and the thread's last error, and the table and file classes above them
/// turn that into a public exception:
///
///     StoreFailure  ->  failure sign and last error  ->  CqSurveyException, CQrfsFileException
///     Volume etc.       Qrfs.h, Qrdb.h                   CqDbTable, CQrfsFile
struct StoreFailure {
    explicit StoreFailure(std::int32_t code_, std::string detail_ = {})
        : code(code_), detail(std::move(detail_)) {}

    std::int32_t code;
    std::string detail;
};

/// What a failure means for the step in which it happens.
enum class FailureKind : std::uint8_t {
    Refusal,  ///< the store refused before it changed anything: earlier changes are kept
    Medium,   ///< the medium failed: the step is undone
    Denied,   ///< memory ran out, or the job can only be read: the step is undone
    Other,    ///< the change may be half done: its step cannot be committed
};

/// What each code means for a step. The volume and the steps of a job both decide by this table,
/// so that a failure cannot be harmless to one of them and fatal to the other.
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
