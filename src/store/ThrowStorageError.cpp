#include "store/ThrowStorageError.h"

#include <string>

#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"

namespace cqsurvey {

void ThrowStorageError(std::int32_t code) {
    const char* detail = StoreErrorDetail();
    throw CqSurveyException(code == error::kNone ? error::kUnknown : code, detail);
}

void ThrowLastStorageError() {
    ThrowStorageError(QrfsGetLastError());
}

}  // namespace cqsurvey
