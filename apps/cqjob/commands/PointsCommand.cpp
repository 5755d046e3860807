#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "cqjob/Command.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/TextTable.h"
#include "cqjob/ViewOptions.h"
#include "cqjob/points/PointColumn.h"
#include "cqjob/points/PointDetails.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class PointsCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("points", "List a job's points");
        AddJob(command, "The job; it is not changed");
        AddJson(command);
        AddWide(command);
        m_view.AddTo(command);
        command
            .Add("--columns", m_columns,
                 "The columns of the table, in this order: " + PointColumn::Words())
            .Placeholder("WORD,...")
            .SplitAt(',')
            .OneOf(PointColumn::WordList());
        command.Add("--limit", m_limit, "List at most this many points, on each page")
            .Placeholder("N")
            .InRange(1, std::numeric_limits<int>::max());
        command.Add("--page", m_page, "Which page to list, from 1; of 50 points or --limit")
            .Placeholder("K")
            .InRange(1, std::numeric_limits<int>::max());
        command
            .Add("--decimals", m_decimals,
                 "Decimal places of the coordinates in the table; JSON has them all")
            .Placeholder("N")
            .InRange(0, 17)
            .ShowDefault();
        command.SetFooter(std::string(ViewOptions::kHelp) +
                          "\n"
                          "Example:\n"
                          "  cqjob points site.job --limit 10\n"
                          "  cqjob points site.job --name P100..P199 --code 5 --code 7\n"
                          "  cqjob points site.job --code \"TREE*\" --columns name,height,desc\n"
                          "  cqjob points site.job --group Road --sort code --page 3 --json");
        return command;
    }

    int Run(Console& console) override {
        constexpr std::size_t kPage = 50;
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const PointList points = m_view.MakeList(db, m_job, console);
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
    static PointDetails Read(CqSurveyDB& db, const PointList& points, std::size_t index) {
        CqCoordRec record;
        const CqHandle handle = points.Read(index, record);
        return {db, handle, std::move(record)};
    }

    void WriteTable(Console& console, CqSurveyDB& db, const PointList& points, std::size_t first,
                    std::size_t end) const {
        std::vector<TextTable::Heading> headings;
        std::vector<const PointColumn*> columns;
        for (const std::string& word : m_columns) {
            columns.push_back(PointColumn::Find(word));
            headings.push_back({columns.back()->heading, columns.back()->right});
        }
        TextTable table(console, headings);
        for (std::size_t i = first; i < end; ++i) {
            const PointDetails point = Read(db, points, i);
            std::vector<std::string> cells;
            cells.reserve(columns.size());
            for (const PointColumn* column : columns) {
                cells.push_back(column->cell(point, m_decimals));
            }
            table.Add(std::move(cells));
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
        Answer(console, [&](JsonWriter& json) {
            json.Member("total", points.GetCount());
            json.Member("first", first + 1);
            json.Member("count", end - first);
            json.Array("points", [&] {
                for (std::size_t i = first; i < end; ++i) {
                    Read(db, points, i).WriteJson(json);
                }
            });
        });
    }

    ViewOptions m_view;
    std::vector<std::string> m_columns = {"name", "easting", "northing", "height",
                                          "code", "group",   "desc"};
    int m_limit = 0;
    int m_page = 0;
    int m_decimals = 3;
};

}  // namespace

std::unique_ptr<Command> MakePointsCommand() {
    return std::make_unique<PointsCommand>();
}

}  // namespace cqsurvey::cqjob
