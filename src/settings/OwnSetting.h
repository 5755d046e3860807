#pragma once

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The value of a setting in a section beside the two fixed ones; empty when there is none.
[[nodiscard]] CString ReadOwnSetting(CqSurveyDB& db, const CString& section, const CString& key);

/// Writes such a setting, and adds its section when there is none. An empty value removes the
/// setting, and its section when nothing else is in it. Returns 1, or 0 with the settings unchanged
/// when they cannot be written.
int WriteOwnSetting(CqSurveyDB& db, const CString& section, const CString& key,
                    const CString& value);

}  // namespace cqsurvey
