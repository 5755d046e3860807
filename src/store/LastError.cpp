#include "store/LastError.h"

#include <string>

#include "store/Qrfs.h"

namespace cqsurvey {

namespace {

struct ThreadError {
    std::int32_t code = error::kNone;
    std::string detail;
};

ThreadError& OfThisThread() {
    thread_local ThreadError last;
    return last;
}

}  // namespace

void SetLastError(std::int32_t code, const std::string& detail) noexcept {
    ThreadError& last = OfThisThread();
    last.code = code;
    try {
        last.detail = detail;
    } catch (...) {
        last.detail.clear();
    }
}

std::int32_t QrfsGetLastError() {
    return OfThisThread().code;
}

const char* QrfsGetLastErrorDetail() {
    return OfThisThread().detail.c_str();
}

}  // namespace cqsurvey
