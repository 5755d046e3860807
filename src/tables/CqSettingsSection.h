#pragma once

#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// One section of a settings file: the text between its brackets and its key lines in file order,
/// each with at least one "=".
struct CqSettingsSection {
    CString name;
    std::vector<CString> lines;

    bool operator==(const CqSettingsSection&) const = default;
};

}  // namespace cqsurvey
