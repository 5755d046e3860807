#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/CodeTable.h>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/OutputFile.h"
#include "cqjob/TextTable.h"
#include "cqjob/drawing/CodeTableFile.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

std::string ShowNumber(int number) {
    return number == CqCode::kByLayer ? std::string("layer") : std::to_string(number);
}

class CodesCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("codes", "Show and change a job's code table");
        command.RequireCommand();
        command.SetFooter(
            "A code table says how the field codes in the descriptions of points are drawn: the\n"
            "layer, colour, line type, feature code and symbol of each. cqjob draw draws by it.\n"
            "\n"
            "Example:\n"
            "  cqjob codes import site.job codes.csv\n"
            "  cqjob codes list site.job");

        CommandLine& load = AddAction(command, "import", "Read the code table from a CSV file",
                                      [this](Console& console) { Import(console); });
        AddJob(load, "The job");
        load.AddRequired("FILE", m_file, "The table; - is standard input");
        load.Add("--words", m_words, "How the crew writes the words that control figures")
            .Placeholder("WORDS");
        AddJson(load);
        load.SetFooter(
            "The file has a heading that names its columns:\n"
            "code,number,layer,color,line,kind,symbol,size,label,text\n"
            "Kinds: point, line, closed line, text, circle. The table replaces that of the job,\n"
            "which keeps its words unless --words says otherwise. When a line is wrong, the job\n"
            "is not changed.\n" +
            std::string(kWordsHelp) +
            "\n"
            "Example:\n"
            "  cqjob codes import site.job codes.csv --words numbers");

        CommandLine& list = AddAction(command, "list", "List the code table",
                                      [this](Console& console) { List(console); });
        AddJob(list, "The job; it is not changed");
        AddJson(list);
        AddWide(list);
        list.SetFooter("Example:\n  cqjob codes list site.job");

        CommandLine& save = AddAction(command, "export", "Write the code table to a CSV file",
                                      [this](Console& console) { Export(console); });
        AddJob(save, "The job; it is not changed");
        save.AddRequired("FILE", m_file, "The file; - is standard output");
        save.AddFlag("--force", m_force, "Replace an existing file");
        save.SetFooter("Example:\n  cqjob codes export site.job codes.csv");
        return command;
    }

 private:
    void Import(Console& console) const {
        RequireOtherFile(m_file, m_job);
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        CqJobCodes codes(db);
        const CqCodeTable before = codes.Get();
        const CqCodeTable table =
            LoadCodeTable(m_file, m_words ? *m_words : ToUtf8(before.GetWords()));
        if (codes.Set(table) == 0) {
            throw Failure(m_job, "the code table does not fit into the job's settings");
        }
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("codes", table.GetCodes().size());
                json.Member("codes_before", before.GetCodes().size());
            });
        } else {
            console.Print("{}: {}", Printable(m_job), Count(table.GetCodes().size(), "code"));
            if (!before.IsEmpty()) {
                console.Print(", in place of {}", before.GetCodes().size());
            }
            console.Print("\n");
        }
        if (!(before == table)) {
            CloseChanged(db);
        }
    }

    [[nodiscard]] CqCodeTable Load(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        std::size_t damaged = 0;
        CqCodeTable table = CqJobCodes(db).Get(&damaged);
        db.Close();
        if (damaged > 0) {
            console.Say("cqjob: {}: {} of the code table make no sense and are left out\n",
                        Printable(m_job), Count(damaged, "row"));
        }
        return table;
    }

    void List(Console& console) const {
        const CqCodeTable table = Load(console);
        const std::string words =
            table.GetWords().empty() ? std::string("words") : ToUtf8(table.GetWords());
        if (m_json) {
            WriteJson(console, table, words);
            return;
        }
        TextTable rows(console, {{"Code"},
                                 {"Number", true},
                                 {"Layer"},
                                 {"Color", true},
                                 {"Line", true},
                                 {"Kind"},
                                 {"Symbol"},
                                 {"Size", true},
                                 {"Label"},
                                 {"Text"}});
        for (const CqCode& code : table.GetCodes()) {
            rows.Add({ToUtf8(code.code), std::to_string(code.number), ToUtf8(code.layer),
                      ShowNumber(code.color), ShowNumber(code.line), ToUtf8(GetKindWord(code.kind)),
                      ToUtf8(code.symbol), code.size == 0.0 ? "" : FormatNumber(code.size),
                      ToUtf8(code.label), ToUtf8(code.text)});
        }
        rows.Finish();
        console.Say("{}, words: {}\n", Count(table.GetCodes().size(), "code"), Printable(words));
    }

    void WriteJson(Console& console, const CqCodeTable& table, const std::string& words) const {
        Answer(console, [&](JsonWriter& json) {
            json.Member("words", words);
            json.Objects("codes", table.GetCodes(), [&](const CqCode& code) {
                json.Member("code", code.code);
                json.Member("number", code.number);
                json.Member("layer", code.layer);
                json.Member("color", code.color);
                json.Member("line", code.line);
                json.Member("kind", GetKindWord(code.kind));
                json.Member("symbol", code.symbol);
                json.Member("size", code.size);
                json.Member("label", code.label);
                json.Member("text", code.text);
            });
        });
    }

    void Export(Console& console) const {
        RequireOtherFile(m_file, m_job);
        const CqCodeTable table = Load(console);
        if (table.IsEmpty()) {
            throw Failure(m_job, "the job has no code table");
        }
        OutputFile file(console, m_file, m_force);
        file.Write(exchange::FormatCodeTable(table));
        file.Finish();
    }

    std::string m_file;
    std::optional<std::string> m_words;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeCodesCommand() {
    return std::make_unique<CodesCommand>();
}

}  // namespace cqsurvey::cqjob
