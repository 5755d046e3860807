#pragma once

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// False for a text that the settings file would give back otherwise: not all of it on one line,
/// blanks at its ends, or brackets that make the line a section.
[[nodiscard]] bool FitsOnLine(const CString& text);

/// The value of a setting in a section beside the two fixed ones; empty when there is none.
[[nodiscard]] CString ReadOwnSetting(CqSurveyDB& db, const CString& section, const CString& key);

/// Writes such a setting, and adds its section when there is none. An empty value removes the
/// setting, and its section when nothing else is in it. Returns 1, or 0 with the settings unchanged
/// when they cannot be written.
int WriteOwnSetting(CqSurveyDB& db, const CString& section, const CString& key,
                    const CString& value);

}  // namespace cqsurvey
