#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/drawing/CurveFitter.h"
#include "exchange/drawing/MemoryLimit.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/landxml/read/Places.h"

namespace cqsurvey::exchange::landxml {

/// A vertex of a segment's path, and the survey point that it is tied to.
struct TiedVertex {
    PathVertex vertex;
    CqHandle entity = 0;
};

/// One element of a CoordGeom as it is in the file: Line, Curve, Spiral, IrregularLine or Chain.
struct Segment {
    std::string kind;
    std::uint64_t line = 0;
    std::optional<Place> start;
    std::optional<Place> end;
    std::optional<Place> center;
    std::vector<TiedVertex> between;  ///< of an IrregularLine; of a Chain when its points are known
    std::string names;                ///< of a Chain: its points, between blanks
    std::optional<bool> counterClockwise;
    std::optional<double> radius;
    std::optional<double> radiusStart;  ///< of a Spiral; infinite where it is straight
    std::optional<double> radiusEnd;
    std::optional<double> length;
    std::string spiral;           ///< its kind
    std::string_view fault = {};  ///< why nothing can be made of it; empty when nothing is wrong
    std::size_t bytes = 0;        ///< what it takes in memory, about
};

/// Reads the list of places between the ends, which `name`, PntList2D or PntList3D, says how to
/// read. A text that is no list is the segment's fault.
void ReadList(Segment& segment, std::string_view name, std::string_view text, double scale,
              MemoryLimit& limit);

/// Makes the vertices of a segment whose places are resolved, from its start to its end. With a
/// LeftOut outcome there are none.
[[nodiscard]] DrawingOutcome MakePath(const Segment& segment, double tolerance,
                                      std::vector<TiedVertex>& out);

}  // namespace cqsurvey::exchange::landxml
