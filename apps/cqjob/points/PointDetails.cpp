#include "cqjob/points/PointDetails.h"

#include <fmt/chrono.h>

#include <ctime>
#include <utility>

namespace cqsurvey::cqjob {

PointDetails::PointDetails(CqSurveyDB& db, CqHandle pointHandle, CqCoordRec pointRecord)
    : handle(pointHandle), record(std::move(pointRecord)) {
    record.GetPoint(coords.data());
    if (record.GetGroup() != 0) {
        try {
            group = ToUtf8(db.GetGroupName(record.GetGroup()));
        } catch (const CqSurveyException&) {
            // A point may have the number of a group that does not exist.
            group = fmt::format("#{}", record.GetGroup());
        }
    }
    CString text;
    db.GetCoordDescription(handle, text);
    description = ToUtf8(text);
}

std::string PointDetails::Time() const {
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                       fmt::gmtime(static_cast<std::time_t>(record.GetRecTime())));
}

void PointDetails::WriteJson(JsonWriter& json) const {
    json.Object([&] {
        json.Member("handle", handle);
        json.Member("name", record.GetPtName());
        json.Member("easting", coords[0]);
        json.Member("northing", coords[1]);
        json.Member("height", coords[2]);
        json.Member("code", record.GetCode());
        json.Member("group", group);
        json.Member("description", description);
        json.Member("origin", static_cast<int>(record.GetType()));
        json.Member("flags", record.GetFlags());
        json.Member("time", Time());
    });
}

}  // namespace cqsurvey::cqjob
