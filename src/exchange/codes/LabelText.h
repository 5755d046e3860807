#pragma once

#include <cqsurvey/Types.h>

#include <string>
#include <string_view>

namespace cqsurvey::exchange {

/// What the names in braces of a label stand for, in UTF-8.
struct LabelValues {
    std::string_view name;
    std::string_view code;
    double height = 0.0;  ///< written with two decimals; not-a-number is nothing
    std::string_view text;
};

/// The label of a code's row with {name}, {code}, {height} and {text} filled in, without the blanks
/// around it and cut to what an annotation can hold.
[[nodiscard]] CString FillLabel(const CString& label, const LabelValues& values);

}  // namespace cqsurvey::exchange
