#pragma once

#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// One section of a settings file: the name between its brackets, and its lines in the order of the
/// file. Each line is a key, "=" and a value; the first "=" is the one that counts.
struct CqSettingsSection {
    CString name;
    std::vector<CString> lines;

    bool operator==(const CqSettingsSection&) const = default;
};

}  // namespace cqsurvey
