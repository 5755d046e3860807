#pragma once

#include <cstdint>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The filter of the sorted view: a point is admitted when it meets every condition.
struct COORDFILTER {
    /// Without a "*": the lowest name admitted, in natural order. With a "*": only names that start
    /// with the text before it are admitted. Empty: no lower bound.
    CString nameFrom;
    /// The highest name admitted. Empty: no upper bound. Not used when nameFrom holds a "*".
    CString nameTo;
    /// The feature codes admitted; empty: every code.
    CList<std::int32_t, std::int32_t> codes;
    /// A point is admitted when this AND its data origin is not 0.
    std::uint16_t originMask = 31;
    /// The group ID admitted; 0: every group.
    std::uint16_t group = 0;
    /// Not 0: points of no group are admitted as well as those of `group`.
    std::int32_t withUngrouped = 0;
};

/// What a job holds. Each field is filled when its bit of the mask is set.
struct SVDB_INFORMATION {
    std::int32_t numEntities = 0;       ///< 0x1
    std::int32_t numLayers = 0;         ///< 0x1 of a closed job, 0x2 of an open one
    std::int32_t numPoints = 0;         ///< 0x4
    std::int32_t numPlines = 0;         ///< 0x8
    std::int32_t numVertices = 0;       ///< 0x10
    std::int32_t numBitmaps = 0;        ///< 0x20
    std::int32_t numCircles = 0;        ///< 0x40
    std::int32_t numTexts = 0;          ///< 0x80
    std::int32_t numGroups = 0;         ///< 0x100
    std::int32_t jCoordDivision = 0;    ///< 0x1000
    CStringList* groupNames = nullptr;  ///< 0x2000: the caller's list to fill, or null
};

}  // namespace cqsurvey
