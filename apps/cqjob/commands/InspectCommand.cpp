#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/JobInspection.h>

#include <cmath>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JobReports.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Progress.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

using exchange::InspectionFinding;
using exchange::JobInspection;
using exchange::Oddity;

class InspectCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("inspect", "Look for probable mistakes in a job's points");
        command.AddRequired("JOB", m_jobs, "The jobs; they are not changed");
        AddJson(command);
        command
            .Add("--tolerance", m_tolerance,
                 "Points no further apart than this are in the same place")
            .Placeholder("LENGTH")
            .InRange(0.0, 1e6)
            .ShowDefault();
        command
            .Add("--limit", m_limit, "Show at most this many findings of each kind; JSON has all")
            .Placeholder("N")
            .InRange(1, 1000000)
            .ShowDefault();
        command.SetFooter(
            "It finds numbers that stand for no number, points without height by group and code,\n"
            "points far outside of all others, heights far from those around them, points in the\n"
            "same place, names in two places that may be one name, codes used once that are\n"
            "nearly common ones, and gaps in numbered names. A code is the word at the head of a\n"
            "description. Each finding is a hint: the exit status is 0 whatever is found. For\n"
            "damage to the file there is cqjob check.\n"
            "\n"
            "Example:\n"
            "  cqjob inspect site.job\n"
            "  cqjob inspect *.job --tolerance 0.02 --json");
        return command;
    }

    int Run(Console& console) override {
        if (std::isnan(m_tolerance)) {
            throw UsageError("--tolerance takes a number");
        }
        return ReportEach(console, m_jobs, m_json, [&](const std::string& job, JsonWriter& json) {
            const JobInspection inspection = Inspect(console, job);
            if (m_json) {
                WriteJson(json, job, inspection);
            } else {
                WriteText(console, job, inspection);
            }
            return 0;
        });
    }

 private:
    JobInspection Inspect(Console& console, const std::string& job) const {
        CqSurveyDB db;
        OpenToRead(db, job);
        Progress progress(console, "looks at points");
        exchange::InspectOptions options;
        options.tolerance = m_tolerance;
        options.progress = [&](std::uint64_t done, std::uint64_t whole) {
            progress.Update(done, done, whole);
        };
        JobInspection inspection(db, options);
        db.Close();
        return inspection;
    }

    void WriteText(Console& console, const std::string& job,
                   const JobInspection& inspection) const {
        console.Print("{}: {}, {}\n", Printable(job), Count(inspection.GetPoints(), "point"),
                      Count(inspection.GetFindings().size(), "finding"));
        std::size_t shown = 0;
        const InspectionFinding* before = nullptr;
        for (const InspectionFinding& finding : inspection.GetFindings()) {
            const std::size_t count = inspection.GetCount(finding.kind);
            if (before == nullptr || before->kind != finding.kind) {
                console.Print("  {}: {}\n", exchange::OddityText(finding.kind), count);
                shown = 0;
            }
            before = &finding;
            if (++shown <= static_cast<std::size_t>(m_limit)) {
                console.Print("    {}\n", finding.text);
            } else if (shown == count) {
                console.Print("    ... and {} more; --limit shows them\n",
                              count - static_cast<std::size_t>(m_limit));
            }
        }
    }

    void WriteJson(JsonWriter& json, const std::string& job,
                   const JobInspection& inspection) const {
        json.Object([&] {
            json.Member("job", job);
            json.Member("points", inspection.GetPoints());
            json.Object("counts", [&] {
                for (std::size_t kind = 0; kind < exchange::kOddityCount; ++kind) {
                    const auto oddity = static_cast<Oddity>(kind);
                    json.Member(exchange::OddityWord(oddity), inspection.GetCount(oddity));
                }
            });
            json.Objects("findings", inspection.GetFindings(),
                         [&](const InspectionFinding& finding) {
                             json.Member("kind", exchange::OddityWord(finding.kind));
                             json.Member("text", finding.text);
                             json.Objects("points", finding.points,
                                          [&](const exchange::InspectedName& point) {
                                              json.Member("handle", point.handle);
                                              json.Member("name", point.name);
                                          });
                         });
        });
    }

    std::vector<std::string> m_jobs;
    double m_tolerance = 0.001;
    int m_limit = 20;
};

}  // namespace

std::unique_ptr<Command> MakeInspectCommand() {
    return std::make_unique<InspectCommand>();
}

}  // namespace cqsurvey::cqjob
