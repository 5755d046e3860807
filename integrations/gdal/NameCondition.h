#pragma once

#include <ogr_feature.h>

#include <optional>
#include <string>
#include <vector>

namespace cqsurvey::gdal {

/// When an attribute filter can only hold for features with one of a few values in a field of
/// texts, those values in lower case: "name = 'P7' AND code > 3" gives "p7". Like OGR, this makes
/// no difference between the cases of ASCII letters. Nothing for any other filter.
[[nodiscard]] std::optional<std::vector<std::string>> ValuesAsked(OGRFeatureQuery& query,
                                                                  int field);

/// A text with its ASCII letters in lower case.
[[nodiscard]] std::string FoldAscii(std::string text);

}  // namespace cqsurvey::gdal
