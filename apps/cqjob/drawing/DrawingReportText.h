#pragma once

#include <cqsurvey/exchange/DrawingReport.h>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// Writes the account of an import or export of a drawing for people. `isImport` says whether the
/// entities are those of a file, whose places are lines.
void WriteReport(Console& console, const exchange::DrawingReport& report, bool isImport);

/// Writes the same as members of a JSON object.
void WriteReport(JsonWriter& json, const exchange::DrawingReport& report, bool isImport);

}  // namespace cqsurvey::cqjob
