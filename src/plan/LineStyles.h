#pragma once

#include <map>
#include <utility>
#include <vector>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Page.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// How the lines of a layer and a feature code are drawn: how wide, and whether they are closed and
/// filled.
///
/// A width comes from the options, else from the job's settings. Without one, it is the usual
/// width. But where the lines of a layer would then cover more than a fourth of the paper, as
/// contours on a slope do, all lines of that layer are so much thinner that they can be told apart.
class LineStyles {
 public:
    /// Measures the plan's lines on the page. All three must outlive the object.
    LineStyles(const Plan& plan, const PlotOptions& options, const Page& page);

    /// In points of 1/72 inch.
    [[nodiscard]] double GetWidth(std::size_t layer, int code);
    [[nodiscard]] bool IsFilled(std::size_t layer, int code);

 private:
    struct Style {
        double width;
        bool filled;
    };

    const Style& Find(std::size_t layer, int code);
    /// The width, in millimetres, of lines without one of their own.
    [[nodiscard]] std::vector<double> FindUsualWidths(const Page& page) const;

    const Plan& m_plan;
    const PlotOptions& m_options;
    std::vector<double> m_usual;  ///< of each layer
    std::map<std::pair<std::size_t, int>, Style> m_styles;
};

}  // namespace cqsurvey::plan
