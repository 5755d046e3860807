#pragma once

#include <cqsurvey/exchange/exchange.h>

#include <string>

#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// Writes what an import came to below a headline: how the lines add up, what is worth knowing of
/// the points, where they are, and why lines were refused.
void WriteReport(Console& console, const exchange::ImportReport& report);

/// Writes each note, with the name of the file and its line, to where the messages go.
void WriteNotes(Console& console, const std::string& file, const exchange::ImportReport& report);

/// Writes the same as members of a JSON object.
void WriteReport(JsonWriter& json, const exchange::ImportReport& report);

}  // namespace cqsurvey::cqjob
