#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// Reads a job and reports on it, in JSON as one value. Returns the exit status.
using JobReport = std::function<int(const std::string& job, JsonWriter& json)>;

/// Reports on jobs one after the other, in JSON as {"jobs": [...]}. A job that cannot be read does
/// not keep the others from their reports; its reason is said, and in JSON stands in its place.
/// Returns the largest exit status, at least 1 when a job could not be read.
int ReportEach(Console& console, const std::vector<std::string>& jobs, bool asJson,
               const JobReport& report);

}  // namespace cqsurvey::cqjob
