#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/JobInspection.h"

namespace cqsurvey::exchange {

struct SurveyedPoint {
    CqHandle handle = 0;
    double easting = 0.0;
    double northing = 0.0;
    double height = 0.0;
    std::string name;         // UTF-8
    std::uint32_t code = 0;   // an index into Survey::codes
    std::uint32_t group = 0;  // an index into Survey::groups
};

/// The points of a job in record order, as the inspection looks at them. Numbers that stand for no
/// number are not-a-numbers once SentinelSearch has found them.
struct Survey {
    std::vector<SurveyedPoint> points;
    std::vector<std::string> codes;   // the words at the head of the descriptions; 0 is no word
    std::vector<std::string> groups;  // 0 is no group

    /// True when the point has a finite place within 1e12 of the origin.
    [[nodiscard]] static bool HasPlace(const SurveyedPoint& point);

    /// "P1 (#17)", or "#17" for a point without a name.
    [[nodiscard]] static std::string Name(const SurveyedPoint& point);

    /// The first of the points, and how many more there are.
    [[nodiscard]] std::string List(const std::vector<std::uint32_t>& indices) const;

    /// A finding about the points of these indices. `text` follows their names.
    [[nodiscard]] InspectionFinding Find(Oddity kind, std::string text,
                                         const std::vector<std::uint32_t>& indices) const;
};

}  // namespace cqsurvey::exchange
