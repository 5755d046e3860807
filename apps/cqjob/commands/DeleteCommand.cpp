#include <cqsurvey/cqsurvey.h>

#include <unordered_set>
#include <utility>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/points/PointArgument.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class DeleteCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("delete", "Delete points");
        AddJob(command, "The job");
        command.Add("POINT", m_points, "The points to delete").Required().Placeholder("");
        command.AddFlag("--ignore-missing", m_ignoreMissing,
                        "Delete the other points when one does not exist");
        AddJson(command);
        command.SetFooter(
            "A point is deleted with its symbol and its description; polylines through it stay. "
            "When\n"
            "one of the points does not exist, none is deleted.\n" +
            std::string(kPointArgument) +
            "\n"
            "Example:\n"
            "  cqjob delete site.job P17 P18\n"
            "  cqjob delete site.job \"#17\" --ignore-missing");
        return command;
    }

    int Run(Console& console) override {
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        std::vector<std::pair<CqHandle, std::string>> points;
        std::vector<std::string> missing;
        std::unordered_set<CqHandle> seen;
        for (const std::string& text : m_points) {
            const CqHandle handle = FindPoint(db, m_job, text);
            if (handle == 0) {
                missing.push_back(text);
            } else if (seen.insert(handle).second) {
                CqCoordRec point;
                CqHandle next = handle;
                db.GetNextCoordRec(next, point);
                points.emplace_back(handle, ToUtf8(point.GetPtName()));
            }
        }
        for (const std::string& text : missing) {
            console.Say("{}: there is no point {}\n", Printable(m_job), Quoted(text));
        }
        if (!missing.empty() && !m_ignoreMissing) {
            throw Failure(Printable(m_job) +
                          ": nothing was deleted; --ignore-missing deletes the points that exist");
        }
        CqBatch batch(db);
        for (const auto& [handle, name] : points) {
            if (db.DelCoordRec(handle) == 0) {
                throw Failure(
                    fmt::format("{}: the point record {} cannot be deleted, so nothing "
                                "was deleted; cqjob check says more",
                                Printable(m_job), handle));
            }
        }
        batch.Commit();
        CloseChanged(db);
        if (!m_json) {
            console.Say("{} deleted\n", Count(points.size(), "point"));
            return 0;
        }
        JsonWriter json(console);
        json.BeginObject();
        json.Member("job", m_job);
        json.Key("deleted");
        json.BeginArray();
        for (const auto& [handle, name] : points) {
            json.BeginObject();
            json.Member("handle", handle);
            json.Member("name", name);
            json.EndObject();
        }
        json.EndArray();
        json.Key("missing");
        json.BeginArray();
        for (const std::string& text : missing) {
            json.Value(text);
        }
        json.EndArray();
        json.EndObject();
        return 0;
    }

 private:
    std::vector<std::string> m_points;
    bool m_ignoreMissing = false;
};

}  // namespace

std::unique_ptr<Command> MakeDeleteCommand() {
    return std::make_unique<DeleteCommand>();
}

}  // namespace cqsurvey::cqjob
