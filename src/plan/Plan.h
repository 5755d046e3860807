#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cqsurvey/CVector.h"
#include "cqsurvey/CqAngleForm.h"
#include "cqsurvey/CqLengthUnit.h"
#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/PlotOptions.h"
#include "plan/canvas/Palette.h"
#include "plan/symbols/Symbol.h"

namespace cqsurvey::plan {

/// A survey point. Colours here and below are numbers of the palette, in which the colours of
/// layers and of the settings have been resolved; layers are places in the plan's list of them.
struct PlanPoint {
    CVector at;
    double height = 0.0;  ///< not-a-number when it was not measured
    std::string name;
    int code = 0;
    int color = 0;
    std::string codeWord;  ///< at the head of the description
    std::size_t layer = 0;
    Symbol symbol = Symbol::None;  ///< that its code asks for
    double symbolSize = 0.0;       ///< in millimetres; 0: as usual
    /// What its code writes beside it; "{height}" stands for its height.
    std::string label;

    /// True when it is drawn as a dot that marks the decimals of its height; `onlyHeights` says
    /// that points have no other labels.
    [[nodiscard]] bool IsSpot(bool onlyHeights) const {
        return symbol == Symbol::Spot ||
               (onlyHeights && symbol == Symbol::None && std::isfinite(height));
    }
};

struct PlanVertex {
    CVector at;
    double bulge = 0.0;  ///< of the segment to the next vertex
};

struct PlanLine {
    std::vector<PlanVertex> vertices;
    int color = 0;
    int line = 0;
    int code = 0;
    std::size_t layer = 0;

    /// True when it ends where it began.
    [[nodiscard]] bool IsClosed() const {
        return vertices.size() > 2 && (vertices.front().at - vertices.back().at).UNorm() == 0.0;
    }
};

struct PlanCircle {
    CVector at;
    double radius = 0.0;  ///< greater than 0
    int color = 0;
    int line = 0;
    int code = 0;
    std::size_t layer = 0;
};

enum class HorizontalAlign { Left, Centre, Right };
enum class VerticalAlign { Baseline, Bottom, Middle, Top };

struct PlanText {
    CVector at;
    std::vector<std::string> lines;  ///< UTF-8 without control characters
    double height = 0.0;    ///< of capitals, in the job's unit of length; 0: none was given
    double rotation = 0.0;  ///< degrees, counter-clockwise from east
    HorizontalAlign horizontal = HorizontalAlign::Left;
    VerticalAlign vertical = VerticalAlign::Baseline;
    int color = 0;
    std::size_t layer = 0;
    /// It was drawn from a field code that says nothing about its size. It is a label of its point,
    /// and written where there is room, in the size of labels.
    bool isLabel = false;
};

/// A bitmap: a square with its lower left corner at a position.
struct PlanFrame {
    CVector at;
    double width = 0.0;  ///< greater than 0
    std::string name;
    int color = 0;
    std::size_t layer = 0;
};

using PlanItem = std::variant<PlanPoint, PlanLine, PlanCircle, PlanText, PlanFrame>;

/// The background image, under the drawing.
struct PlanImage {
    std::vector<std::uint8_t> bytes;
    CVector centre;
    CVector size;
    double rotation = 0.0;  ///< degrees, counter-clockwise
    int brightness = 0;     ///< -255 to 255, added to each part of a colour
    int contrast = 100;     ///< percent
    bool grey = false;
};

/// What a picture shows of a plan: all of it, or what lies in a part of the job.
struct PlanPart {
    Box extents;              ///< of the part, in job coordinates; empty when there is nothing
    std::size_t points = 0;   ///< how many of the objects are points
    std::size_t objects = 0;  ///< at least partly in the part
};

/// A layer, as far as the plan needs it: what is on it is drawn and named together.
struct PlanLayer {
    std::string name;  ///< UTF-8
    int color = 7;
    int line = 0;
};

/// What the title block of a printed plan says about it; what is empty is left out. See CqJobTitle.
struct PlanTitle {
    std::string title;
    std::string client;
    std::string place;
    std::string surveyedBy;
    std::string drawnBy;
    std::string date;
    std::string drawingNumber;
    std::string heightSystem;
};

/// Everything to draw of a job, in job coordinates and in drawing order. Once it has been read, the
/// job is no longer needed.
struct Plan {
    std::vector<PlanItem> items;
    std::vector<PlanLayer> layers;  ///< at least one
    std::optional<PlanImage> image;
    PlanTitle title;
    /// The job's own, hidden layers included; of the objects when not every layer is read. Empty
    /// when there are none.
    Box jobExtents;
    Rgb background = kWhite;
    double mapScale = 500.0;          ///< of the job's settings, greater than 0
    bool ownScale = false;            ///< somebody has set it: it is not that of a new job
    std::vector<LineWeight> weights;  ///< of the job's settings
    bool monotone = false;            ///< everything has the same colour
    CqAngleForm angles = CqAngleForm::DegreesMinutesSeconds;  ///< how bearings are written
    std::optional<CqLengthUnit> unit;  ///< of the job's coordinates, if it states one
    std::string system;                ///< the coordinate reference system, UTF-8; may be empty
    double symbolSize = 5.0;           ///< of the job's settings, in points of 1/72 inch
    std::size_t points = 0;            ///< how many of the items are points
    std::size_t unplaced = 0;          ///< left out: position, radius or width not finite
    std::size_t hidden = 0;            ///< left out: hidden by their own colour or their layer's

    /// The box of all items. It leaves out what has a fixed size on paper, such as the points'
    /// symbols. Without items, the box of the image; empty when there is no image either.
    [[nodiscard]] Box FindExtents() const;

    /// All of the plan; the extents are those of the job.
    [[nodiscard]] PlanPart FindAll() const;

    /// What lies in `box`; the extents are those of the box.
    [[nodiscard]] PlanPart FindPart(const Box& box) const;
};

/// The layer that an item is on.
[[nodiscard]] std::size_t GetLayer(const PlanItem& item);

/// The box of one item.
[[nodiscard]] Box FindBox(const PlanItem& item);

/// The box of a placed image.
[[nodiscard]] Box FindBox(const PlanImage& image);

}  // namespace cqsurvey::plan
