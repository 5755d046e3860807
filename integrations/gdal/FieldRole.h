#pragma once

#include <ogr_core.h>

#include <cstddef>
#include <cstdint>

namespace cqsurvey::gdal {

/// What a field says of a feature, whatever it is called.
enum class FieldRole : std::uint8_t {
    Name,
    Code,
    CodeWord,
    Description,
    Group,
    Layer,
    Color,
    Line,
    Time,
    Height,
    Origin,
    Flags,
    Hidden,
    Closed,
    Polyline,
    Number,
    Bulge,
    Point,
    PointName,
    Text,
    TextHeight,
    Rotation,
    AlignAlong,
    AlignAcross,
    Style,
    OptionStyle,
    Interval,
    Thickness,
    Radius,
    Easting,
    Northing,
    Resource,
    Width,
    Section,
    Key,
    Value,
    Image,
    ImageType,
    ImageHeight,
};
inline constexpr std::size_t kFieldRoles = static_cast<std::size_t>(FieldRole::ImageHeight) + 1;

/// How the job's own layers call a role and what type they give it.
struct FieldForm {
    const char* name;
    OGRFieldType type;
    OGRFieldSubType subtype = OFSTNone;
    int width = 0;
    /// Other names under which files of others say the same, separated by commas.
    const char* aliases = "";
    /// The layer creation option that names the field; null when there is none.
    const char* option = nullptr;
};
[[nodiscard]] const FieldForm& FormOf(FieldRole role);

}  // namespace cqsurvey::gdal
