#include <cqsurvey/cqsurvey.h>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JobReports.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Progress.h"
#include "cqjob/RepairReport.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using Kind = CqJobFinding::Kind;

namespace {

class CheckCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("check", "Check one job or several for faults");
        command.AddRequired("JOB", m_jobs, "The jobs to check; they are not changed");
        AddJson(command);
        command.Add("--limit", m_limit, "Show at most this many faults, and as many notes")
            .Placeholder("N")
            .InRange(1, 1000000)
            .ShowDefault();
        command
            .Add("--repair", m_repair,
                 "Make a new job at OUT of everything that can be saved from a damaged one, and "
                 "list what could not be saved")
            .Placeholder("OUT");
        command.SetFooter(
            "Several jobs are checked one after the other, each with a report of its own.\n"
            "The exit status is 1 when anything is wrong, or could not be saved. A note is about\n"
            "something that was left as it "
            "is on purpose, such as an entity whose layer was deleted; it is not wrong.\n"
            "\n"
            "Example:\n"
            "  cqjob check site.job\n"
            "  cqjob check *.job --limit 10\n"
            "  cqjob check site.job --repair saved.job");
        return command;
    }

    int Run(Console& console) override {
        if (!m_repair.empty()) {
            if (m_jobs.size() != 1) {
                throw UsageError("--repair takes one job");
            }
            return RepairJob(console, m_jobs.front(), m_repair, m_json,
                             static_cast<std::size_t>(m_limit));
        }
        if (m_jobs.size() == 1) {
            JsonWriter json(console);
            return CheckJob(console, m_jobs.front(), json);
        }
        return ReportEach(console, m_jobs, m_json, [&](const std::string& job, JsonWriter& json) {
            return CheckJob(console, job, json);
        });
    }

 private:
    int CheckJob(Console& console, const std::string& job, JsonWriter& json) const {
        CqSurveyDB db;
        OpenToRead(db, job);
        const CqJobCheck check = Look(console, db);
        if (m_json) {
            WriteJson(json, job, check);
        } else {
            WriteText(console, job, check);
        }
        db.Close();
        return check.GetCount() == 0 ? 0 : 1;
    }

    [[nodiscard]] CqJobCheck Look(Console& console, CqSurveyDB& db) const {
        Progress progress(console, "looks at records");
        return CqJobCheck(
            db, static_cast<std::size_t>(m_limit),
            [&](std::uint64_t done, std::uint64_t whole) { progress.Update(done, done, whole); });
    }

    void WriteText(Console& console, const std::string& job, const CqJobCheck& check) const {
        for (const CqJobFinding& finding : check.GetFindings()) {
            console.Print("{}{}{}: {}\n", finding.kind == Kind::Note ? "note: " : "", finding.table,
                          finding.record == 0 ? "" : fmt::format(" record {}", finding.record),
                          Printable(finding.text));
        }
        const std::size_t all = check.GetCount() + check.GetNoteCount();
        if (all > check.GetFindings().size()) {
            console.Print("... and {} more\n", all - check.GetFindings().size());
        }
        console.Print("{}: {} checks, {} wrong{}\n", Printable(job), check.GetChecks(),
                      check.GetCount(),
                      check.GetNoteCount() == 0 ? "" : ", " + Count(check.GetNoteCount(), "note"));
    }

    void WriteJson(JsonWriter& json, const std::string& job, const CqJobCheck& check) const {
        json.Object([&] {
            json.Member("job", job);
            json.Member("checks", check.GetChecks());
            json.Member("wrong", check.GetCount());
            json.Member("notes", check.GetNoteCount());
            json.Objects("findings", check.GetFindings(), [&](const CqJobFinding& finding) {
                json.Member("kind", finding.kind == Kind::Note ? "note" : "fault");
                json.Member("table", finding.table);
                json.Member("record", finding.record);
                json.Member("text", finding.text);
            });
        });
    }

    std::vector<std::string> m_jobs;
    std::string m_repair;
    int m_limit = 1000;
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand() {
    return std::make_unique<CheckCommand>();
}

}  // namespace cqsurvey::cqjob
