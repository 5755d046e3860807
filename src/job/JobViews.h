#pragma once

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// Adds views with readable names and columns to a new job, for people who open it with other
/// tools; the library never reads them. `root` is the mount name and ":/". Throws
/// CqSurveyException.
void CreateJobViews(const CString& root);

}  // namespace cqsurvey
