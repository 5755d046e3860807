#pragma once

#include <vector>

#include "tables/CqSettingsText.h"

namespace cqsurvey {

/// One section of a settings file: the name between its brackets, and its lines in the order of the
/// file. Each line is a key, "=" and a value; the first "=" is the one that counts.
struct CqSettingsSection {
    CqSettingsText name;
    std::vector<CqSettingsText> lines;

    bool operator==(const CqSettingsSection&) const = default;
};

}  // namespace cqsurvey
