#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/Export.h"
#include "cqsurvey/plan/Paper.h"

namespace cqsurvey::plan {

/// How wide lines are drawn: those on a layer of that name, or with the feature code of that
/// number, which goes before the layer. In a name, each "*" stands for any characters.
struct LineWeight {
    std::string name;    ///< UTF-8
    double width = 0.0;  ///< in millimetres, 0.01 to 5
};

/// The numbers that may be written beside lines, in the job's unit of length.
struct LineLabels {
    bool lengths = false;   ///< of each segment
    bool bearings = false;  ///< of each straight segment, in the job's form (CqJobSystem)
    bool areas = false;     ///< inside of each closed line
};

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

    /// The 500 of 1 : 500, from 0.001 to 1e9. Without a scale, the largest round one at which the
    /// plan fits on the paper. If somebody has set the job's scale (Mapscale is not the 500 of a
    /// new job), that one goes before it, as long as the plan fits on the paper.
    std::optional<double> scale;

    /// Without `scale`: take that of the job's settings, even if it is that of a new job and even
    /// if the plan does not fit.
    bool usesJobScale = false;

    /// Without `scale`: take the largest round scale at which the plan fits on the paper, whatever
    /// the job's settings say. An `extent` is always drawn like this.
    bool fillsPaper = false;

    /// Divide what does not fit on one sheet at the scale. The first page of a PDF is then the key
    /// plan, with the outlines of the sheets, which follow it. Sheets on which there would be
    /// nothing are left out.
    bool divides = false;

    /// With `divides`: draw only the sheet of that number, or, for 0, the key plan. The formats
    /// with one page need it when there is more than one sheet.
    std::optional<int> sheet;

    /// The part of the job to draw, in job coordinates; see IsDrawable. Without it, everything.
    std::optional<Box> extent;

    /// The heading of the title block, UTF-8. Without one, the title that the job states
    /// (CqJobTitle).
    std::string title;

    /// What is written beside each point. A height that was not measured and a code of 0 are left
    /// out.
    bool labelNames = true;
    bool labelHeights = false;
    bool labelCodes = false;
    /// The word at the head of the description, which is a code, too (CodeWord.h).
    bool labelCodeWords = false;
    /// What the job's code table writes beside the points of a code (CqCode::label). A drawing that
    /// was made from the codes has these as texts already, which are drawn as labels, too.
    bool labelsOfCodes = false;

    /// The height of the labels' capitals in millimetres, 0.2 to 50. Texts of the drawing that have
    /// no height of their own have this one.
    double labelHeight = 1.6;

    /// The decimals of heights, 0 to 6.
    int heightDecimals = 2;

    /// Draw every label, even over others. Otherwise a label that finds no room, not even away from
    /// its point at the end of a leader that crosses nothing, is left out.
    bool allLabels = false;

    /// The numbers beside lines. They stand along their line, in three quarters of the labels'
    /// height.
    LineLabels lineLabels;
    /// The decimals of lengths and areas, 0 to 6.
    int lineDecimals = 2;

    /// Widths of lines. They go before those of the job's settings, which keep them in a section
    /// LINEWEIGHTS (name=millimetres). Other lines are 0.25 mm wide, or less where that would be
    /// more than a fourth of the paper.
    std::vector<LineWeight> lineWeights;

    /// Names of layers and numbers of feature codes, as in LineWeight. Their lines are closed, and
    /// lightly filled with their colour.
    std::vector<std::string> fills;

    /// Explain the symbols in use, and the lines of each layer, above the title block.
    bool legend = true;

    /// Draw the crosses and the numbers of the grid.
    bool grid = true;

    /// Asks for a picture of so many pixels of 1/96 inch, which the plan fills. Sets `paper`,
    /// `turnsPaper`, `fillsPaper` and `dotsPerInch`.
    void SetPixels(int width, int height);
};

/// True for a width that lines may have, in millimetres.
[[nodiscard]] CQSURVEY_PLAN_API bool IsLineWidth(double width);

/// True when this part of a job can be drawn: the box has a width and a height, no side is beyond
/// kFarthest, and the longer of width and height is at least 1e-9 of the largest coordinate.
[[nodiscard]] CQSURVEY_PLAN_API bool IsDrawable(const Box& extent);

/// Why no plan can be drawn with these options, as a sentence without a full stop; empty when one
/// can.
[[nodiscard]] CQSURVEY_PLAN_API std::string FindFault(const PlotOptions& options);

}  // namespace cqsurvey::plan
