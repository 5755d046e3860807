#include <cqsurvey/cqsurvey.h>

#include <unordered_set>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/points/PointArgument.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

struct Deleted {
    CqHandle handle = 0;
    CString name;
};

class DeleteCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("delete", "Delete points");
        AddJob(command, "The job");
        command.AddRequired("POINT", m_points, "The points to delete");
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
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        std::vector<Deleted> points;
        std::vector<std::string> missing;
        std::unordered_set<CqHandle> seen;
        for (const std::string& text : m_points) {
            const CqHandle handle = FindPoint(db, m_job, text);
            if (handle == 0) {
                missing.push_back(text);
            } else if (seen.insert(handle).second) {
                points.push_back({handle, ReadPoint(db, handle).GetPtName()});
            }
        }
        for (const std::string& text : missing) {
            console.Say("{}: there is no point {}\n", Printable(m_job), Quoted(text));
        }
        if (!missing.empty() && !m_ignoreMissing) {
            throw Failure(m_job,
                          "nothing was deleted; --ignore-missing deletes the points that exist");
        }
        for (const Deleted& point : points) {
            if (db.DelCoordRec(point.handle) == 0) {
                throw Failure(m_job,
                              "the point record {} cannot be deleted, so nothing "
                              "was deleted; cqjob check says more",
                              point.handle);
            }
        }
        change.Commit();
        if (!m_json) {
            console.Say("{} deleted\n", Count(points.size(), "point"));
            return 0;
        }
        Answer(console, [&](JsonWriter& json) {
            json.Objects("deleted", points, [&](const Deleted& point) {
                json.Member("handle", point.handle);
                json.Member("name", point.name);
            });
            json.Values("missing", missing);
        });
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
