#pragma once

#include <string>
#include <vector>

#include "cqsurvey/plan/Paper.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Which of the sheets a page is.
struct SheetNumber {
    int number = 1;  ///< 0: the key plan
    int count = 1;
};

/// A field of the title block: what it is, and its text.
struct TitleField {
    std::string caption;
    std::string text;
};

/// What the title block says below its heading, in order; what the job does not state is left out.
[[nodiscard]] std::vector<TitleField> MakeTitleFields(const Plan& plan, const SheetNumber& sheet);

/// The name of the paper, either way up, or its size: "A3", "300 x 200 mm".
[[nodiscard]] std::string DescribePaper(const PaperSize& paper);

}  // namespace cqsurvey::plan
