#pragma once

#include <cqsurvey/cqsurvey.h>

namespace cqsurvey::cqjob {

/// Ends a change of the open job, and closes it. A job that has no identity (CqJobIdentity) gets
/// one: older jobs have none, and the first change of this program is when they do. Call it only
/// when the job was changed.
void CloseChanged(CqSurveyDB& db);

}  // namespace cqsurvey::cqjob
