#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Types.h"

namespace cqsurvey::exchange {

/// The longest beginning of `name` that has at most `length` code units and does not cut a
/// character of two units in half. It ends before the first zero, where a name ends in a job.
[[nodiscard]] CString CutName(const CString& name, std::size_t length = limits::kPointName);

/// Makes names that are not in use by adding a number: P1_2, P1_3 ...
class PointNames {
 public:
    /// `taken` tells whether a name is in use.
    explicit PointNames(std::function<bool(const CString&)> taken);

    /// A name that is not in use, like `name` and of at most limits::kPointName code units.
    [[nodiscard]] CString MakeUnique(const CString& name);

 private:
    std::function<bool(const CString&)> m_taken;
    std::map<CString, std::uint64_t> m_next;
};

}  // namespace cqsurvey::exchange
