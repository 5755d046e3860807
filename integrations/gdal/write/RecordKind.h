#pragma once

#include <cstdint>

namespace cqsurvey::gdal {

/// The kinds of records that a job's own layers show, one each.
enum class RecordKind : std::uint8_t {
    Points,
    Polylines,
    Vertices,
    Texts,
    Circles,
    Bitmaps,
    Layers,
    Groups,
    Settings,
    Background,
};

}  // namespace cqsurvey::gdal
