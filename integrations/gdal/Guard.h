#pragma once

#include <cpl_error.h>

#include <exception>
#include <utility>

namespace cqsurvey::gdal {

/// Returns what `work` returns. GDAL must not see an exception: one becomes a GDAL error with its
/// text, and `failed` is returned.
template <class Result, class Work>
Result Guard(Result failed, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::exception& failure) {
        CPLError(CE_Failure, CPLE_AppDefined, "%s", failure.what());
    }
    return failed;
}

}  // namespace cqsurvey::gdal
