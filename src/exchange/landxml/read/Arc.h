#pragma once

#include "exchange/landxml/read/Segment.h"

namespace cqsurvey::exchange::landxml {

/// The arc of a Curve by what is known of it besides its ends: any two of radius, centre and
/// rotation.
struct Arc {
    double bulge = 0.0;
    bool whole = false;  ///< it begins where it ends; `opposite` is half way
    Vec3 opposite;
    double deviation = 0.0;       ///< how far what the file says is from what it is taken as
    std::string_view fault = {};  ///< why no arc can be made; empty when there is one
};

[[nodiscard]] Arc MakeArc(const Segment& curve);

}  // namespace cqsurvey::exchange::landxml
