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

        m_import = &command.AddCommand("import", "Read the code table from a CSV file");
        AddJob(*m_import, "The job");
        m_import->Add("FILE", m_file, "The table; - is standard input").Required().Placeholder("");
        m_import->Add("--words", m_words, "How the crew writes the words that control figures")
            .Placeholder("WORDS");
        AddJson(*m_import);
        m_import->SetFooter(
            "The file has a heading that names its columns:\n"
            "code,number,layer,color,line,kind,symbol,size,label,text\n"
            "Kinds: point, line, closed line, text, circle. The table replaces that of the job,\n"
            "which keeps its words unless --words says otherwise. When a line is wrong, the job\n"
            "is not changed.\n" +
            std::string(kWordsHelp) +
            "\n"
            "Example:\n"
            "  cqjob codes import site.job codes.csv --words numbers");

        m_list = &command.AddCommand("list", "List the code table");
        AddJob(*m_list, "The job; it is not changed");
        AddJson(*m_list);
        AddWide(*m_list);
        m_list->SetFooter("Example:\n  cqjob codes list site.job");

        m_export = &command.AddCommand("export", "Write the code table to a CSV file");
        AddJob(*m_export, "The job; it is not changed");
        m_export->Add("FILE", m_file, "The file; - is standard output").Required().Placeholder("");
        m_export->AddFlag("--force", m_force, "Replace an existing file");
        m_export->SetFooter("Example:\n  cqjob codes export site.job codes.csv");
        return command;
    }

    int Run(Console& console) override {
        if (m_import->IsGiven()) {
            Import(console);
        } else if (m_list->IsGiven()) {
            List(console);
        } else {
            Export(console);
        }
        return 0;
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
            throw Failure(fmt::format("{}: the code table does not fit into the job's settings",
                                      Printable(m_job)));
        }
        if (m_json) {
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Member("codes", table.GetCodes().size());
            json.Member("codes_before", before.GetCodes().size());
            json.EndObject();
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
        JsonWriter json(console);
        json.BeginObject();
        json.Member("job", m_job);
        json.Member("words", words);
        json.Key("codes");
        json.BeginArray();
        for (const CqCode& code : table.GetCodes()) {
            json.BeginObject();
            json.Member("code", ToUtf8(code.code));
            json.Member("number", code.number);
            json.Member("layer", ToUtf8(code.layer));
            json.Member("color", code.color);
            json.Member("line", code.line);
            json.Member("kind", ToUtf8(GetKindWord(code.kind)));
            json.Member("symbol", ToUtf8(code.symbol));
            json.Member("size", code.size);
            json.Member("label", ToUtf8(code.label));
            json.Member("text", ToUtf8(code.text));
            json.EndObject();
        }
        json.EndArray();
        json.EndObject();
    }

    void Export(Console& console) const {
        RequireOtherFile(m_file, m_job);
        const CqCodeTable table = Load(console);
        if (table.IsEmpty()) {
            throw Failure(fmt::format("{}: the job has no code table", Printable(m_job)));
        }
        OutputFile file(console, m_file, m_force);
        file.Write(exchange::FormatCodeTable(table));
        file.Finish();
    }

    std::string m_file;
    std::optional<std::string> m_words;
    bool m_force = false;
    CommandLine* m_import = nullptr;
    CommandLine* m_list = nullptr;
    CommandLine* m_export = nullptr;
};

}  // namespace

std::unique_ptr<Command> MakeCodesCommand() {
    return std::make_unique<CodesCommand>();
}

}  // namespace cqsurvey::cqjob
