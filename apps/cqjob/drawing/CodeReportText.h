#pragma once

#include <cqsurvey/exchange/CodeReport.h>

#include <cstddef>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// Writes the report of a drawing from codes: the sums and a table, with `all` of every code,
/// otherwise of those that need a look, at most `limit` of each fate.
void WriteReport(Console& console, const exchange::CodeReport& report, bool all, std::size_t limit);

/// Writes the same as members of a JSON object, with every code.
void WriteReport(JsonWriter& json, const exchange::CodeReport& report);

}  // namespace cqsurvey::cqjob
