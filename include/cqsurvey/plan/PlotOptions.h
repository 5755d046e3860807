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

/// Coordinates and lengths are drawn up to this far from 0.
inline constexpr double kFarthest = 1e12;

/// How a plan is drawn: the format, the paper, the scale, and what is written beside the drawing.
/// The defaults ask for a PDF page of A4 with a grid and the names of the points.
struct CQSURVEY_PLAN_API PlotOptions {
    PictureFormat format = PictureFormat::Pdf;

    /// The pixels of a PNG, 10 to 2400 an inch; at most 30,000 a side and 400 million in all. The
    /// other formats have none.
    double dotsPerInch = 150.0;

    /// Each side 1 to 10,000 mm.
    PaperSize paper{210.0, 297.0};

    /// Turn the paper by a quarter if the plan fits better that way.
    bool turnsPaper = true;

    /// The 500 of 1 : 500, from 0.001 to 1e9. Without it the scale of the job's settings
    /// (Mapscale), or the next round one at which all of the plan fits on the paper.
    std::optional<double> scale;

    /// Without `scale`: draw as large as a round scale and the paper let, whatever the job's
    /// settings say. An `extent` is always drawn so.
    bool fillsPaper = false;

    /// The part of the job to draw, in job coordinates; see IsDrawable. Without it all is drawn.
    std::optional<Box> extent;

    /// The heading of the title block, UTF-8.
    std::string title;

    /// What is written beside each point. Heights that were not measured and codes of 0 are left
    /// out.
    bool labelNames = true;
    bool labelHeights = false;
    bool labelCodes = false;

    /// The height of the labels' capitals in millimetres, 0.2 to 50. It is also that of the
    /// drawing's texts without a height of their own.
    double labelHeight = 1.6;

    /// Draw every label, even over others. Otherwise a label that finds no room is left out.
    bool allLabels = false;

    /// Draw the crosses and the numbers of the grid.
    bool grid = true;

    /// Asks for a picture of so many pixels of 1/96 inch that the plan fills: sets `paper`,
    /// `turnsPaper`, `fillsPaper` and `dotsPerInch`.
    void SetPixels(int width, int height);
};

/// True when this part of a job can be drawn: the box has a width and a height, no side is beyond
/// kFarthest, and the longer of width and height is at least 1e-9 of the largest coordinate.
[[nodiscard]] CQSURVEY_PLAN_API bool IsDrawable(const Box& extent);

/// Why no plan can be drawn with the options, a sentence without a full stop; empty when one can.
[[nodiscard]] CQSURVEY_PLAN_API std::string FindFault(const PlotOptions& options);

}  // namespace cqsurvey::plan
