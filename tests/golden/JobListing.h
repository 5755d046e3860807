#pragma once

#include <string>

#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

/// Everything that an open job holds, a line each, as the public interface gives it. Texts stand
/// between quotes, with every code unit that is not printable ASCII as \uXXXX, and their length
/// instead of the middle of a long one. Numbers have as many digits as it takes to read them back;
/// a not-a-number shows its bits.
[[nodiscard]] std::string ListJob(CqSurveyDB& db);

}  // namespace cqsurvey
