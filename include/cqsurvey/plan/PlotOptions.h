#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/Export.h"
#include "cqsurvey/plan/Paper.h"

namespace cqsurvey::plan {

enum class PictureFormat { Svg, Pdf, Png };

/// The format that the end of a file's name says, or a word: svg, pdf, png in any letter case.
/// Nothing for any other text.
[[nodiscard]] CQSURVEY_PLAN_API std::optional<PictureFormat> FindFormat(
    std::string_view nameOrWord);

/// The largest coordinate, positive or negative, that is drawn.
inline constexpr double kFarthest = 1e12;

/// How a plan is drawn: the format, the paper, the scale, and what is written beside the drawing.
/// As they are made, the options ask for an A4 page with the names of the points.
struct CQSURVEY_PLAN_API PlotOptions {
    PictureFormat format = PictureFormat::Pdf;

    /// Of a PNG, 10 to 2400. At most 30,000 pixels a side and 400 million in all are drawn. The
    /// other formats have no pixels.
    double dotsPerInch = 150.0;

    /// Each side 1 to 10,000 mm.
    PaperSize paper{210.0, 297.0};

    /// Turn the paper by a quarter where the plan is larger then; else it stays as it is.
    bool turnsPaper = true;

    /// The 500 of 1 : 500, from 0.001 to 1e9. Without it the scale of the job's settings
    /// (Mapscale), or the next round one at which all of the plan fits on the paper.
    std::optional<double> scale;

    /// Without `scale`: take the largest picture at a round scale, whatever the job's settings say.
    /// With `extent` that is done in any case.
    bool fillsPaper = false;

    /// The part of the job to draw, in job coordinates; see IsDrawable. Without it all is drawn.
    std::optional<Box> extent;

    /// The heading of the title block, UTF-8.
    std::string title;

    /// What stands beside each point. A height that was not measured and a code of 0 do not.
    bool labelNames = true;
    bool labelHeights = false;
    bool labelCodes = false;

    /// The height of the labels' capitals in millimetres, 0.2 to 50. Texts of the drawing that have
    /// no height of their own are drawn in it, too.
    double labelHeight = 1.6;

    /// Also draw the labels that cover others; else they are left out.
    bool allLabels = false;

    /// Draw the crosses and the numbers of the grid.
    bool grid = true;

    /// Asks for a picture of so many pixels of 1/96 inch, filled by the plan: sets `paper`,
    /// `turnsPaper`, `fillsPaper` and `dotsPerInch`.
    void SetPixels(int width, int height);
};

/// True when a plan can be drawn of this part of a job alone: its first sides are less than the
/// last, none is beyond kFarthest, and the longer of width and height is at least 1e-9 of the
/// largest coordinate.
[[nodiscard]] CQSURVEY_PLAN_API bool IsDrawable(const Box& extent);

/// Why no plan can be drawn with the options: a sentence without a full stop. Empty when one can.
[[nodiscard]] CQSURVEY_PLAN_API std::string FindFault(const PlotOptions& options);

}  // namespace cqsurvey::plan
