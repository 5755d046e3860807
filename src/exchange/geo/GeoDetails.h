#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/geo/GeoPlaces.h"

namespace cqsurvey::exchange {

/// One thing that the job knows of an entity.
struct GeoDetail {
    std::string_view key;
    std::string value;      ///< in UTF-8
    bool isNumber = false;  ///< the value is a number, and no text
};

/// What the job knows of an entity, as far as it is not the usual: its kind, name or text, code,
/// description, group, layer, colour, and what makes up a text or circle.
[[nodiscard]] std::vector<GeoDetail> DetailsOf(CqSurveyDB& db, const CqCadEntity& entity);

/// "point", "polyline", "circle", "text", "bitmap" or "vertex".
[[nodiscard]] const char* KindOf(const CqCadEntity& entity);

/// What a shape comes to in a file that has positions and lines of them.
[[nodiscard]] DrawingOutcome OutcomeOf(const GeoShape& shape, const CqCadEntity& entity);

}  // namespace cqsurvey::exchange
