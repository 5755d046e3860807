#include "cqjob/Extents.h"

namespace cqsurvey::cqjob {

std::optional<Extents> FindExtents(CqSurveyDB& db) {
    Extents extents;
    if (db.GetEntityBound(extents.min, extents.max) == 0 ||
        !(extents.min.GetX() <= extents.max.GetX())) {
        return std::nullopt;
    }
    return extents;
}

void WriteMembers(JsonWriter& json, const Extents& extents) {
    json.Member("min_easting", extents.min.GetX());
    json.Member("min_northing", extents.min.GetY());
    json.Member("max_easting", extents.max.GetX());
    json.Member("max_northing", extents.max.GetY());
}

}  // namespace cqsurvey::cqjob
