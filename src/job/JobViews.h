#pragma once

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// Adds the views under readable names that people see who open a job with other tools. `root` is
/// the mount name and ":/". Throws CqSurveyException.
void CreateJobViews(const CString& root);

}  // namespace cqsurvey
