#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/Export.h"
#include "cqsurvey/plan/Paper.h"

namespace cqsurvey::plan {

enum class PictureFormat { Svg, Pdf, Png };

/// The format that a word (svg, pdf or png) or the end of a file's name says, in any letter case.
/// Returns nothing for any other text.
[[nodiscard]] CQSURVEY_PLAN_API std::optional<PictureFormat> FindFormat(
    std::string_view nameOrWord);

/// Coordinates and lengths beyond this, above 0 or below, are not drawn.
inline constexpr double kFarthest = 1e12;

/// How a plan is drawn: the format, the paper, the scale, and what is written beside the drawing.
/// The defaults ask for a PDF page of A4 with a grid and the names of the points.
struct CQSURVEY_PLAN_API PlotOptions {
    PictureFormat format = PictureFormat::Pdf;

    /// The pixels of a PNG per inch, 10 to 2400. The picture has at most 30,000 pixels on a side
    /// and 400 million in all. The other formats have no pixels.
    double dotsPerInch = 150.0;

    /// Each side is 1 to 10,000 mm long.
    PaperSize paper{210.0, 297.0};

    /// Turn the paper by a quarter turn if the plan fits better that way.
    bool turnsPaper = true;

    /// The 500 of 1 : 500, from 0.001 to 1e9. Without a scale, that of the job's settings
    /// (Mapscale); if the plan does not fit on the paper at that, the next round scale at which it
    /// does.
    std::optional<double> scale;

    /// Without `scale`: take the largest round scale at which the plan fits on the paper, whatever
    /// the job's settings say. An `extent` is always drawn like this.
    bool fillsPaper = false;

    /// The part of the job to draw, in job coordinates; see IsDrawable. Without it, everything.
    std::optional<Box> extent;

    /// The heading of the title block, UTF-8.
    std::string title;

    /// What is written beside each point. A height that was not measured and a code of 0 are left
    /// out.
    bool labelNames = true;
    bool labelHeights = false;
    bool labelCodes = false;
    /// The word at the head of the description, which is a code, too (CodeWord.h).
    bool labelCodeWords = false;

    /// The height of the labels' capitals in millimetres, 0.2 to 50. Texts of the drawing that have
    /// no height of their own have this one.
    double labelHeight = 1.6;

    /// Draw every label, even over others. Otherwise a label that finds no room is left out.
    bool allLabels = false;

    /// Draw the crosses and the numbers of the grid.
    bool grid = true;

    /// Asks for a picture of so many pixels of 1/96 inch, which the plan fills. Sets `paper`,
    /// `turnsPaper`, `fillsPaper` and `dotsPerInch`.
    void SetPixels(int width, int height);
};

/// True when this part of a job can be drawn: the box has a width and a height, no side is beyond
/// kFarthest, and the longer of width and height is at least 1e-9 of the largest coordinate.
[[nodiscard]] CQSURVEY_PLAN_API bool IsDrawable(const Box& extent);

/// Why no plan can be drawn with these options, as a sentence without a full stop; empty when one
/// can.
[[nodiscard]] CQSURVEY_PLAN_API std::string FindFault(const PlotOptions& options);

}  // namespace cqsurvey::plan
