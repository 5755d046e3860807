#pragma once

#include <cqsurvey/exchange/FieldText.h>

#include <string>

#include "cqjob/CommandLine.h"

namespace cqsurvey::cqjob {

/// Adds --separator, whose value goes into `word`. With `automatic`, "auto" is a choice, too.
void AddSeparator(CommandLine& command, std::string& word, bool automatic);

/// The separator that a value of this option means. Throws UsageError for any other word.
[[nodiscard]] exchange::Separator ReadSeparator(const std::string& word);

}  // namespace cqsurvey::cqjob
