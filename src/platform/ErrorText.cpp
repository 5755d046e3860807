#include "cqsurvey/ErrorCodes.h"

namespace cqsurvey {

const char* ErrorText(std::int32_t code) noexcept {
    switch (code) {
        case error::kNone:
            return "No error.";
        case error::kGeneralFailure:
            return "The volume store failed.";
        case error::kInvalidArgument:
            return "The request is not valid here.";
        case error::kOutOfMemory:
            return "There is not enough memory.";
        case error::kAccessDenied:
            return "Access is denied, or the job can only be read.";
        case error::kReadWriteFailed:
            return "Reading or writing the medium failed.";
        case error::kVolumeFull:
            return "There is no room left.";
        case error::kDamaged:
            return "The file is damaged or is not a job.";
        case error::kVolumeMounted:
            return "The job is already open, here or in another program.";
        case error::kNoVolume:
            return "There is no job at this path.";
        case error::kNewerVersion:
            return "The job was written by a newer version.";
        case error::kMountNameInUse:
            return "The mount name is already in use.";
        case error::kNoMount:
            return "No job is open under this name.";
        case error::kNoFile:
            return "There is no such file.";
        case error::kFileExists:
            return "The file already exists.";
        case error::kNoTable:
            return "There is no such table.";
        case error::kTableExists:
            return "The table already exists.";
        case error::kNoRecord:
            return "There is no such record.";
        case error::kDuplicatePointName:
            return "A point of this name already exists.";
        case error::kBadTableDescription:
            return "The table description is not valid.";
        case error::kUnknown:
            return "An operation failed without naming a reason.";
        default:
            return "The error code is unknown.";
    }
}

}  // namespace cqsurvey
