#pragma once

#include <cqsurvey/CqCodeTable.h>

#include <string>

namespace cqsurvey::cqjob {

/// What the help of commands says about --words.
inline constexpr const char* kWordsHelp =
    "Words that control figures, in the preset words: B begin, C continue, E end, CLS or CLOSE\n"
    "close, BC begin and EC end of a curve, CIR circle, RECT rectangle, RT turn, JPT join, H and\n"
    "V parallel, X between two codes, ; before a comment. In the preset numbers: 30-1 begins,\n"
    "30-2 goes on, 30-3 is on a curve, 30-9 ends, + is between two codes. Others are named after\n"
    "the preset: --words words,begin=I,curve-point=C,begin+curve-point=IC\n";

/// The code table of a CSV file, with the words. Throws Failure with the file and every fault by
/// its line when the table makes no sense, and OptionError when the words do not.
[[nodiscard]] CqCodeTable LoadCodeTable(const std::string& path, const std::string& words);

}  // namespace cqsurvey::cqjob
