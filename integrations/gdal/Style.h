#pragma once

#include <string>

namespace cqsurvey::gdal {

// How entities look, as OGR style strings. `color` is a number of the job's palette.

/// A line of the job's line type.
[[nodiscard]] std::string PenStyle(int color, int line);

/// A point's symbol, its size in points of 1/72 inch.
[[nodiscard]] std::string SymbolStyle(int color, double size);

/// What a text looks like. The job's own meanings, see CqSurveyDB::AddText.
struct LabelLook {
    std::string text;  ///< in UTF-8
    std::string font;  ///< in UTF-8; empty: any
    double height = 0.0;
    double rotation = 0.0;
    int along = 0;
    int across = 0;
    int color = 0;
};
[[nodiscard]] std::string LabelStyle(const LabelLook& look);

}  // namespace cqsurvey::gdal
