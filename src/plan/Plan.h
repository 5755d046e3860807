#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cqsurvey/CVector.h"
#include "cqsurvey/CqLengthUnit.h"
#include "cqsurvey/plan/Box.h"
#include "plan/Palette.h"

namespace cqsurvey::plan {

/// A survey point. Colours here and below are numbers of the palette, in which the colours of
/// layers and of the settings have been resolved.
struct PlanPoint {
    CVector at;
    double height = 0.0;  ///< not-a-number when it was not measured
    std::string name;
    int code = 0;
    int color = 0;
    std::string codeWord;  ///< at the head of the description
};

struct PlanVertex {
    CVector at;
    double bulge = 0.0;  ///< of the segment to the next vertex
};

struct PlanLine {
    std::vector<PlanVertex> vertices;
    int color = 0;
    int line = 0;
};

struct PlanCircle {
    CVector at;
    double radius = 0.0;  ///< greater than 0
    int color = 0;
    int line = 0;
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
};

/// A bitmap: a square with its lower left corner at a position.
struct PlanFrame {
    CVector at;
    double width = 0.0;  ///< greater than 0
    std::string name;
    int color = 0;
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

/// Everything to draw of a job, in job coordinates and in drawing order. Once it has been read, the
/// job is no longer needed.
struct Plan {
    std::vector<PlanItem> items;
    std::optional<PlanImage> image;
    /// The job's own, hidden layers included; of the objects when not every layer is read. Empty
    /// when there are none.
    Box jobExtents;
    Rgb background = kWhite;
    double mapScale = 500.0;           ///< of the job's settings, greater than 0
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

/// The box of one item.
[[nodiscard]] Box FindBox(const PlanItem& item);

/// The box of a placed image.
[[nodiscard]] Box FindBox(const PlanImage& image);

}  // namespace cqsurvey::plan
