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
        command.Add("POINT", m_point, "The point").Required().Placeholder("");
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
        const CString newText = ReadText(m_text.value_or(""), "the description");
        CqSurveyDB db;
        if (m_text || m_delete) {
            OpenToWrite(db, m_job);
        } else {
            OpenToRead(db, m_job);
        }
        const CqHandle handle = RequirePoint(db, m_job, m_point);
        if (m_text) {
            if (db.EditCoordDescription(handle, newText) == 0 &&
                db.AddCoordDescription(handle, newText) == 0) {
                throw Failure(fmt::format("{}: the description of {} could not be stored",
                                          Printable(m_job), Quoted(m_point)));
            }
        } else if (m_delete && db.DelCoordDescription(handle) == 0) {
            FailWithout();
        }
        CString text;
        const bool described = db.GetCoordDescription(handle, text) != 0;
        if (!described && !m_delete) {
            FailWithout();
        }
        if (m_json) {
            CqCoordRec point;
            CqHandle next = handle;
            db.GetNextCoordRec(next, point);
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Member("handle", handle);
            json.Member("name", ToUtf8(point.GetPtName()));
            json.Member("description", ToUtf8(text));
            json.EndObject();
        } else if (!m_text && !m_delete) {
            console.Print("{}\n", ToUtf8(text));
        }
        if (m_text || m_delete) {
            CloseChanged(db);
        }
        return 0;
    }

 private:
    [[noreturn]] void FailWithout() const {
        throw Failure(
            fmt::format("{}: the point {} has no description", Printable(m_job), Quoted(m_point)));
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
