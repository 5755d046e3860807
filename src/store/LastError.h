#pragma once

#include <cstdint>
#include <new>
#include <utility>

#include "store/StoreFailure.h"

namespace cqsurvey {

/// Sets this thread's last error of the store.
void SetLastError(std::int32_t code, const std::string& detail = {}) noexcept;

/// Sets the last error and returns the failure sign.
template <class Result>
Result Fail(std::int32_t code, Result sign) noexcept {
    SetLastError(code);
    return sign;
}

/// Runs one operation of the store; a failure inside sets the last error and gives `sign`.
template <class Body, class Result>
Result Guarded(Result sign, Body&& body) noexcept {
    try {
        return static_cast<Result>(std::forward<Body>(body)());
    } catch (const StoreFailure& failure) {
        SetLastError(failure.code, failure.detail);
    } catch (const std::bad_alloc&) {
        SetLastError(error::kOutOfMemory);
    } catch (...) {
        SetLastError(error::kGeneralFailure);
    }
    return sign;
}

}  // namespace cqsurvey
