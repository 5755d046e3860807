#pragma once

#include <cqsurvey/exchange/FieldText.h>

#include <string>

#include "cqjob/CommandLine.h"

namespace cqsurvey::cqjob {

/// Adds --separator, whose word goes into `word`; "auto" is a choice only where it may be guessed.
void AddSeparator(CommandLine& command, std::string& word, bool automatic);

/// The separator that a word of that option means. Throws UsageError for any other word.
[[nodiscard]] exchange::Separator ReadSeparator(const std::string& word);

}  // namespace cqsurvey::cqjob
