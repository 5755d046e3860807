#include "cqjob/drawing/PlaceArgument.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "cqjob/Arguments.h"
#include "cqjob/EntityKind.h"
#include "cqjob/Failure.h"
#include "cqjob/points/PointArgument.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

std::optional<std::array<double, 3>> ReadCoords(std::string_view text) {
    std::array<double, 3> coords{0.0, 0.0, std::numeric_limits<double>::quiet_NaN()};
    std::size_t count = 0;
    while (true) {
        const std::size_t comma = text.find(',');
        const ParsedNumber number = ParseNumber(text.substr(0, comma));
        if (count == coords.size() || number.fault != nullptr || !std::isfinite(number.value)) {
            return std::nullopt;
        }
        coords[count++] = number.value;
        if (comma == std::string_view::npos) {
            break;
        }
        text.remove_prefix(comma + 1);
    }
    return count >= 2 ? std::optional(coords) : std::nullopt;
}

}  // namespace

Place ReadPlace(const CqSurveyDB& db, const std::string& job, const std::string& text) {
    if (const auto coords = ReadCoords(text)) {
        return {*coords, 0};
    }
    const CqHandle handle = RequirePoint(db, job, text);
    CqCoordRec record;
    if (db.GetCoordRec(handle, record) == 0) {
        throw Failure(job, "the point {} cannot be read; cqjob check says more", Quoted(text));
    }
    Place place;
    record.GetPoint(place.coords.data());
    place.point = db.GetCadEntityHandleByCoordRecHandle(handle);
    return place;
}

CqHandle ReadEntityHandle(const std::string& text) {
    const bool marked = !text.empty() && text.front() == '#';
    const std::optional<CqHandle> handle = ReadRecordNumber(marked ? text : "#" + text);
    if (!handle) {
        throw UsageError(
            fmt::format("{} is no entity; cqjob entities lists their numbers", Quoted(text)));
    }
    return *handle;
}

CqCadEntityPtr RequireEntity(const CqSurveyDB& db, const std::string& job, CqHandle handle,
                             EntType type) {
    CqCadEntity* entity = nullptr;
    CqHandle next = handle;
    try {
        db.GetNextCadEntity(next, entity);
    } catch (const CqSurveyException& error) {
        if (error.m_code != error::kNoRecord) {
            throw;
        }
    }
    CqCadEntityPtr found(entity);
    if (!found) {
        throw Failure(job, "there is no entity #{}", handle);
    }
    if (found->GetType() != type) {
        throw Failure(job, "the entity #{} is a {}", handle, KindWord(found->GetType()));
    }
    return found;
}

}  // namespace cqsurvey::cqjob
