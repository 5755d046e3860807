#include "cqjob/JobTable.h"

#include <cqsurvey/cqsurvey.h>

#include <fmt/chrono.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <utility>

#include "cqjob/Extents.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/TextTable.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr std::uint32_t kEverything = 0xFFFFFFFF;

struct Column {
    const char* heading;
    const char* key;  ///< in JSON; null for a count that JSON leaves to a list of names
    std::int32_t SVDB_INFORMATION::*field;
};

constexpr std::array kColumns = {
    Column{"Points", "points", &SVDB_INFORMATION::numPoints},
    Column{"Entities", "entities", &SVDB_INFORMATION::numEntities},
    Column{"Polylines", "polylines", &SVDB_INFORMATION::numPlines},
    Column{"Vertices", "vertices", &SVDB_INFORMATION::numVertices},
    Column{"Texts", "texts", &SVDB_INFORMATION::numTexts},
    Column{"Circles", "circles", &SVDB_INFORMATION::numCircles},
    Column{"Bitmaps", "bitmaps", &SVDB_INFORMATION::numBitmaps},
    Column{"Layers", "layer_count", &SVDB_INFORMATION::numLayers},
    Column{"Groups", nullptr, &SVDB_INFORMATION::numGroups},
    Column{"Division", "coordinate_division", &SVDB_INFORMATION::jCoordDivision},
};

struct Row {
    std::string job;
    SVDB_INFORMATION counts;
    CStringList groups;
    std::optional<Extents> extents;
    std::uint32_t firstTime = 0;  ///< when the first point was recorded; 0 without points
    std::uint32_t lastTime = 0;
    std::uintmax_t bytes = 0;
    std::string error;           ///< why the job cannot be read, empty when it can
    std::string settingsDamage;  ///< empty when there is none
};

std::string Date(std::uint32_t time) {
    return time == 0 ? std::string()
                     : fmt::format("{:%Y-%m-%d}", fmt::gmtime(static_cast<std::time_t>(time)));
}

/// Extents and dates, which only the opened job has.
void Look(Row& row, CqSurveyDB& db) {
    row.extents = FindExtents(db);
    for (const auto& [handle, record] : Points(db)) {
        const std::uint32_t time = record.GetRecTime();
        row.firstTime = row.firstTime == 0 ? time : std::min(row.firstTime, time);
        row.lastTime = std::max(row.lastTime, time);
    }
}

/// Why the job cannot be read; GetDBInformation does not say.
std::string FindReason(const CString& path) {
    try {
        CqSurveyDB db;
        db.Open(path);
        return "it could not be read";
    } catch (const CException& error) {
        return error.what();
    }
}

Row Ask(const std::string& job) {
    Row row;
    row.job = job;
    const CString path = ToJobPath(job);
    row.counts.groupNames = &row.groups;
    try {
        if (path.empty() ||
            CqSurveyDB::GetDBInformation(kEverything, path, row.counts, nullptr) == 0) {
            row.error = FindReason(path);
        } else {
            CqSurveyDB db;
            OpenToRead(db, job);
            Look(row, db);
            db.Close();
            if (CString damage; CqSurveyDB::GetSettingsDamage(path, damage, nullptr) != 0) {
                row.settingsDamage = ToUtf8(damage);
            }
        }
    } catch (const CException& error) {
        row.error = error.what();
    } catch (const Failure& error) {
        row.error = error.what();
    }
    std::error_code unknown;
    const std::uintmax_t bytes = std::filesystem::file_size(job, unknown);
    row.bytes = unknown ? 0 : bytes;
    row.counts.groupNames = nullptr;
    return row;
}

bool HasAny(const std::vector<Row>& rows, std::string Row::*text) {
    return std::any_of(rows.begin(), rows.end(),
                       [&](const Row& row) { return !(row.*text).empty(); });
}

void WriteText(Console& console, const std::vector<Row>& rows) {
    const bool anyError = HasAny(rows, &Row::error);
    const bool anyDamage = HasAny(rows, &Row::settingsDamage);
    std::vector<TextTable::Heading> headings = {{"Job"}};
    for (const Column& column : kColumns) {
        headings.push_back({column.heading, true});
    }
    for (const char* heading : {"Easting", "Northing", "First", "Last"}) {
        headings.push_back({heading});
    }
    headings.push_back({"Bytes", true});
    if (anyError) {
        headings.push_back({"Cannot be read"});
    }
    if (anyDamage) {
        headings.push_back({"Damaged"});
    }
    TextTable table(console, headings);
    for (const Row& row : rows) {
        std::vector<std::string> cells = {row.job};
        for (const Column& column : kColumns) {
            cells.push_back(row.error.empty() ? fmt::format("{}", row.counts.*column.field) : "-");
        }
        const auto range = [&](double from, double to) {
            return FormatNumber(from, 1) + ".." + FormatNumber(to, 1);
        };
        const auto date = [](std::uint32_t time) { return time == 0 ? "-" : Date(time); };
        if (const auto& box = row.extents) {
            cells.push_back(range(box->min.GetX(), box->max.GetX()));
            cells.push_back(range(box->min.GetY(), box->max.GetY()));
        } else {
            cells.insert(cells.end(), 2, "-");
        }
        cells.push_back(date(row.firstTime));
        cells.push_back(date(row.lastTime));
        cells.push_back(fmt::format("{}", row.bytes));
        if (anyError) {
            cells.push_back(row.error);
        }
        if (anyDamage) {
            cells.push_back(row.settingsDamage);
        }
        table.Add(std::move(cells));
    }
    table.Finish();
}

/// Writes the members of a row.
void WriteJson(JsonWriter& json, const Row& row) {
    json.Member("job", row.job);
    if (!row.error.empty()) {
        json.Member("error", row.error);
        return;
    }
    for (const Column& column : kColumns) {
        if (column.key != nullptr) {
            json.Member(column.key, row.counts.*column.field);
        }
    }
    if (!row.settingsDamage.empty()) {
        json.Member("settings_damage", row.settingsDamage);
    }
    json.Values("groups", row.groups);
    if (row.extents) {
        json.Object("extents", [&] { WriteMembers(json, *row.extents); });
    }
    if (row.firstTime != 0) {
        json.Member("first_date", Date(row.firstTime));
        json.Member("last_date", Date(row.lastTime));
    }
    json.Member("bytes", row.bytes);
}

}  // namespace

int WriteJobTable(Console& console, const std::vector<std::string>& jobs, bool asJson) {
    std::vector<Row> rows;
    std::size_t failed = 0;
    for (const std::string& job : jobs) {
        rows.push_back(Ask(job));
        failed += rows.back().error.empty() ? 0U : 1U;
    }
    if (asJson) {
        JsonWriter json(console);
        json.Object(
            [&] { json.Objects("jobs", rows, [&](const Row& row) { WriteJson(json, row); }); });
    } else {
        WriteText(console, rows);
    }
    if (failed > 0) {
        console.Say("cqjob: {} of {} cannot be read\n", failed, Count(jobs.size(), "job"));
    }
    return failed > 0 ? 1 : 0;
}

}  // namespace cqsurvey::cqjob
