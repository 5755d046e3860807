#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"

namespace cqsurvey {

/// What a job holds as lines of text, so that two jobs, or a job and its model, can be compared and
/// the first difference shown.
using JobLines = std::vector<std::string>;

inline void Append(std::ostringstream& out, const CString& text) {
    out << '"' << ToUtf8(text) << '"';
}
template <class Value>
void Append(std::ostringstream& out, const Value& value) {
    out << value;
}

/// The values with blanks between them; doubles keep every bit.
template <class... Values>
std::string MakeLine(std::string_view first, const Values&... values) {
    std::ostringstream out;
    out << std::hexfloat << first;
    (..., (out << ' ', Append(out, values)));
    return out.str();
}

/// Everything that can be seen of a job and does not depend on the time. What lives in memory only
/// is not among it.
[[nodiscard]] JobLines ReadJob(CqSurveyDB& db);

/// Where two jobs differ, as text; empty when they do not.
[[nodiscard]] std::string FindDifference(const JobLines& found, const JobLines& expected);

}  // namespace cqsurvey
