#pragma once

#include "cqsurvey/Types.h"
#include "tables/CqSettingsFile.h"

namespace cqsurvey {

// The two sections and their keys that every job has: what they are in a new job, and whether a
// model has them.

/// Replaces a model by the settings of a new job.
void PutDefaultSettings(CqSettingsFile& settings);

/// Gives a model every fixed section and key that it lacks, with the value of a new job.
void FillInDefaultSettings(CqSettingsFile& settings);

/// The fixed sections that a model lacks.
[[nodiscard]] CStringList FindMissingSections(const CqSettingsFile& settings);

/// The fixed keys that a model lacks.
[[nodiscard]] CStringList FindMissingKeys(const CqSettingsFile& settings);

/// The fixed keys of a model whose values are outside their ranges.
[[nodiscard]] CStringList FindKeysOutOfRange(const CqSettingsFile& settings);

}  // namespace cqsurvey
