#pragma once

#include <string>
#include <string_view>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The text as UTF-8. A surrogate without its partner becomes U+FFFD.
CQSURVEY_API std::string ToUtf8(const CString& text);

/// The UTF-8 text as UTF-16. Each ill-formed sequence becomes one U+FFFD.
CQSURVEY_API CString FromUtf8(std::string_view text);

/// Chooses the narrow code page of settings files and descriptions for the whole process:
/// 65001 (UTF-8, the default), 1252, 932 or any other page whose encoding keeps ASCII and that
/// the system's iconv knows under its number. Returns 1; 0 when the page is not known (the page
/// in force stays). Call it before a job is opened: texts already stored are not converted.
CQSURVEY_API int SetAnsiCodePage(int codePage);

/// The narrow code page in force.
CQSURVEY_API int GetAnsiCodePage();

}  // namespace cqsurvey
