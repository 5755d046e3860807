#include <cqsurvey/cqsurvey.h>
#include <fmt/chrono.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <limits>

#include "cqjob/Command.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/NumberText.h"
#include "cqjob/PointList.h"
#include "cqjob/Printable.h"
#include "cqjob/TextTable.h"

namespace cqsurvey::cqjob {

namespace {

struct Point {
    CqHandle handle = 0;
    CqCoordRec record;
    std::array<double, 3> coords{};
    std::string group;
    std::string description;
};

class PointsCommand : public Command {
 public:
    CLI::App* AddTo(CLI::App& app) override {
        CLI::App* command = app.add_subcommand("points", "List a job's points");
        AddJob(*command, "The job; it is not changed");
        AddJson(*command);
        command
            ->add_option("--sort", m_sort,
                         "Sort by name in natural order (P2, P10), by code or not: record")
            ->type_name("KEY")
            ->check(CLI::IsMember({"name", "code", "record"}))
            ->capture_default_str();
        command->add_flag("--descending", m_descending, "The other way round");
        command->add_option("--limit", m_limit, "List at most so many points, on each page")
            ->type_name("N")
            ->check(CLI::Range(1, std::numeric_limits<int>::max()));
        command->add_option("--page", m_page, "Which page to list, from 1; of 50 points or --limit")
            ->type_name("K")
            ->check(CLI::Range(1, std::numeric_limits<int>::max()));
        command
            ->add_option("--decimals", m_decimals,
                         "Decimal places of the coordinates in the table; JSON has them all")
            ->type_name("N")
            ->check(CLI::Range(0, 17))
            ->capture_default_str();
        command->footer(
            "Example:\n"
            "  cqjob points site.job --limit 10\n"
            "  cqjob points site.job --page 3 --json");
        return command;
    }

    int Run(Console& console) override {
        constexpr std::size_t kPage = 50;
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const PointList points(db,
                               m_sort == "name"   ? PointOrder::Name
                               : m_sort == "code" ? PointOrder::Code
                                                  : PointOrder::Record,
                               m_descending);
        const std::size_t count = points.GetCount();
        const std::size_t length = m_limit != 0  ? static_cast<std::size_t>(m_limit)
                                   : m_page != 0 ? kPage
                                                 : count;
        const std::size_t page = m_page == 0 ? 0 : static_cast<std::size_t>(m_page) - 1;
        const std::size_t first = std::min(count, page * length);
        const std::size_t end = std::min(count, first + length);
        if (m_json) {
            WriteJson(console, db, points, first, end);
        } else {
            WriteTable(console, db, points, first, end);
        }
        db.Close();
        return 0;
    }

 private:
    static Point Read(CqSurveyDB& db, const PointList& points, std::size_t index) {
        Point point;
        point.handle = points.Read(index, point.record);
        point.record.GetPoint(point.coords.data());
        if (point.record.GetGroup() != 0) {
            try {
                point.group = ToUtf8(db.GetGroupName(point.record.GetGroup()));
            } catch (const CqSurveyException&) {
                // A point may carry the number of a group that never was.
                point.group = fmt::format("#{}", point.record.GetGroup());
            }
        }
        CString description;
        db.GetCoordDescription(point.handle, description);
        point.description = ToUtf8(description);
        return point;
    }

    void WriteTable(Console& console, CqSurveyDB& db, const PointList& points, std::size_t first,
                    std::size_t end) const {
        TextTable table(console, {{"Name"},
                                  {"Easting", true},
                                  {"Northing", true},
                                  {"Height", true},
                                  {"Code", true},
                                  {"Group"},
                                  {"Description"}});
        for (std::size_t i = first; i < end; ++i) {
            const Point point = Read(db, points, i);
            table.Add({ToUtf8(point.record.GetPtName()), FormatNumber(point.coords[0], m_decimals),
                       FormatNumber(point.coords[1], m_decimals),
                       FormatNumber(point.coords[2], m_decimals),
                       fmt::format("{}", point.record.GetCode()), point.group, point.description});
        }
        table.Finish();
        if (end - first == points.GetCount()) {
            console.Say("{}\n", Count(points.GetCount(), "point"));
        } else if (first == end) {
            console.Say("none of {}\n", Count(points.GetCount(), "point"));
        } else {
            console.Say("{} to {} of {}\n", first + 1, end, Count(points.GetCount(), "point"));
        }
    }

    void WriteJson(Console& console, CqSurveyDB& db, const PointList& points, std::size_t first,
                   std::size_t end) const {
        JsonWriter json(console);
        json.BeginObject();
        json.Member("job", m_job);
        json.Member("total", points.GetCount());
        json.Member("first", first + 1);
        json.Member("count", end - first);
        json.Key("points");
        json.BeginArray();
        for (std::size_t i = first; i < end; ++i) {
            const Point point = Read(db, points, i);
            json.BeginObject();
            json.Member("handle", point.handle);
            json.Member("name", ToUtf8(point.record.GetPtName()));
            json.Member("easting", point.coords[0]);
            json.Member("northing", point.coords[1]);
            json.Member("height", point.coords[2]);
            json.Member("code", point.record.GetCode());
            json.Member("group", point.group);
            json.Member("description", point.description);
            json.Member("origin", static_cast<int>(point.record.GetType()));
            json.Member("flags", point.record.GetFlags());
            json.Member(
                "time",
                fmt::format("{:%Y-%m-%dT%H:%M:%SZ}",
                            fmt::gmtime(static_cast<std::time_t>(point.record.GetRecTime()))));
            json.EndObject();
        }
        json.EndArray();
        json.EndObject();
    }

    std::string m_sort = "name";
    bool m_descending = false;
    int m_limit = 0;
    int m_page = 0;
    int m_decimals = 3;
};

}  // namespace

std::unique_ptr<Command> MakePointsCommand() {
    return std::make_unique<PointsCommand>();
}

}  // namespace cqsurvey::cqjob
