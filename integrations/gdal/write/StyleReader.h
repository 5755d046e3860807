#pragma once

#include <optional>
#include <string>

#include <ogr_feature.h>

namespace cqsurvey::gdal {

/// What the style of a feature says that a job can hold.
struct LabelParts {
    std::string text;  ///< in UTF-8
    std::string font;  ///< in UTF-8
    std::optional<double> height;
    double rotation = 0.0;
    int along = 0;
    int across = 0;
    std::optional<int> color;
};

/// The first label. Heights on paper become heights on the ground by `scale`, the denominator of
/// the map's scale.
[[nodiscard]] std::optional<LabelParts> ReadLabel(const OGRFeature& feature, double scale);

/// The number of the palette nearest to the colour of the pen, symbol or brush.
[[nodiscard]] std::optional<int> ReadColor(const OGRFeature& feature);

}  // namespace cqsurvey::gdal
