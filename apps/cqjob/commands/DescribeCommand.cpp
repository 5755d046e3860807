#include <cqsurvey/cqsurvey.h>

#include <optional>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/points/PointArgument.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class DescribeCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("describe", "Show, set or delete a point's description");
        AddJob(command, "The job; it is not changed when a description is shown");
        command.AddRequired("POINT", m_point, "The point");
        const Argument text = command.Add("TEXT", m_text, "Its new description").Placeholder("");
        command.AddFlag("--delete", m_delete, "Delete the description").Excludes(text);
        AddJson(command);
        command.SetFooter(
            std::string(kPointArgument) +
            "The exit status is 1 when there is no description to show or to delete.\n"
            "\n"
            "Example:\n"
            "  cqjob describe site.job P17\n"
            "  cqjob describe site.job P17 \"iron pipe, bent\"\n"
            "  cqjob describe site.job P17 --delete");
        return command;
    }

    int Run(Console& console) override {
        if (m_text && m_text->empty()) {
            throw UsageError("a description cannot be empty; --delete deletes it");
        }
        const bool changes = m_text || m_delete;
        if (changes) {
            Change();
        }
        if (m_json || !changes) {
            Show(console);
        }
        return 0;
    }

 private:
    void Change() const {
        const CString text = ReadText(m_text.value_or(""), "the description");
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        const CqHandle handle = RequirePoint(db, m_job, m_point);
        if (m_text && db.EditCoordDescription(handle, text) == 0 &&
            db.AddCoordDescription(handle, text) == 0) {
            throw Failure(m_job, "the description of {} could not be stored", Quoted(m_point));
        }
        if (m_delete && db.DelCoordDescription(handle) == 0) {
            FailWithout();
        }
        change.Commit();
    }

    void Show(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const CqHandle handle = RequirePoint(db, m_job, m_point);
        CString text;
        if (db.GetCoordDescription(handle, text) == 0 && !m_delete) {
            FailWithout();
        }
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("handle", handle);
                json.Member("name", ReadPoint(db, handle).GetPtName());
                json.Member("description", text);
            });
        } else {
            console.Print("{}\n", ToUtf8(text));
        }
    }

    [[noreturn]] void FailWithout() const {
        throw Failure(m_job, "the point {} has no description", Quoted(m_point));
    }

    std::string m_point;
    std::optional<std::string> m_text;
    bool m_delete = false;
};

}  // namespace

std::unique_ptr<Command> MakeDescribeCommand() {
    return std::make_unique<DescribeCommand>();
}

}  // namespace cqsurvey::cqjob
