#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/exchange.h>

#include <map>
#include <optional>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/DxfImport.h"
#include "cqjob/Failure.h"
#include "cqjob/Interrupt.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Progress.h"
#include "cqjob/SeparatorOption.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::ColumnOrder;
using exchange::FieldTextReader;
using exchange::ImportNote;
using exchange::ImportReport;
using Fate = exchange::ImportReport::Fate;

namespace {

constexpr const char* kFooter =
    "Orders (--order) are letters, one for each column of the file:\n"
    "  p point name   n northing   e easting   z height   c feature code\n"
    "  d description: the rest of the line   - a column that is not wanted\n"
    "Other layouts (--columns): words with commas between them, or columns by their heading or\n"
    "number. \"--order header\" recognises the usual headings in English, Spanish, Portuguese and\n"
    "German; x is the easting and y the northing. --columns can then name the columns that it "
    "does\n"
    "not recognise. Which number is the northing is never guessed: without --order and --columns\n"
    "nothing is imported.\n"
    "\n"
    "The text after the coordinates is the description. If it begins with a whole number in a\n"
    "column of its own, that is the feature code, and the description is what follows. Blanks\n"
    "around an unquoted field do not count. A quotation mark that does not enclose a whole field\n"
    "is a character like any other.\n"
    "\n"
    "The points are recorded in one step; when the import fails or is interrupted, none is. A\n"
    "line that should be a point and is not is refused, and reported with its number and the\n"
    "reason; the others are recorded. The exit status is 0 when every line is accounted for. It\n"
    "is 1 when lines were refused and no point could be recorded, and with --strict when any line\n"
    "was refused.\n"
    "\n"
    "A file named .dxf is a drawing: --points, --names, --fills, --tolerance, --unit and\n"
    "--file-unit are for such a file, and so are --duplicates, --group and --origin. The report\n"
    "accounts for every entity: what it became, or why it was left out.\n"
    "\n"
    "Example:\n"
    "  cqjob import site.job points.csv --order pnezd\n"
    "  cqjob import site.job total_station.csv --order header --no-height -9.99E+27\n"
    "  cqjob import site.job export.txt --columns name,-,-,easting,northing,height,code,desc,-\n"
    "  cqjob import site.job marks.csv --columns \"name=New Name,easting=EASTING,northing=5\"\n"
    "  cqjob import site.job pontos.txt --order header --decimal-comma --duplicates rename";

class ImportCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand(
            "import", "Record the points of a text file, or the drawing of a DXF file");
        AddJob(command, "The job into which the points go");
        command.Add("FILE", m_file, "The text file of points, - for standard input")
            .Required()
            .Placeholder("");
        command
            .Add("--order", m_order,
                 "Order of the columns: pnezd, penzd or other letters, or header")
            .Placeholder("ORDER");
        command
            .Add("--columns", m_columns,
                 "Columns by words (name,easting,-,northing,height,code,desc) or by "
                 "heading or number (easting=EASTING,name=3)")
            .Placeholder("LIST");
        command
            .Add("--header", m_header,
                 "Lines of header: a number, none, or auto: the first line, if its northing "
                 "and easting are words")
            .Placeholder("N|auto|none")
            .ShowDefault();
        AddSeparator(command, m_separator, true);
        command.Add("--comment", m_comment, "What a comment line begins with; empty: no comments")
            .Placeholder("MARK")
            .ShowDefault();
        command.AddFlag("--decimal-comma", m_decimalComma,
                        "The decimal sign is the comma, not the point");
        command.Add("--code-page", m_codePage, "Code page of the file: 65001 is UTF-8")
            .Placeholder("N")
            .ShowDefault();
        command
            .Add("--no-height", m_noHeight,
                 "What means a missing height, besides an empty column; may be given several "
                 "times")
            .Placeholder("VALUE")
            .OneValueEach();
        command
            .Add("--duplicates", m_duplicates,
                 "What to do with a point whose name the job already has: refuse, skip or rename")
            .Placeholder("WAY")
            .OneOf({"refuse", "skip", "rename"})
            .ShowDefault();
        command.Add("--group", m_group, "Put the points into this group, new or not")
            .Placeholder("NAME");
        command.Add("--origin", m_origin, "Data origin of the points")
            .Placeholder("N")
            .InRange(1, 65535)
            .ShowDefault();
        command.AddFlag("--strict", m_strict, "Record nothing when any line is refused");
        m_dxf.AddTo(command);
        AddJson(command);
        command.SetFooter(kFooter);
        return command;
    }

    int Run(Console& console) override {
        if (m_dxf.IsAsked(m_file)) {
            return RunDxf(console);
        }
        const exchange::FieldTextReadOptions options = ReadOptions();
        RequireOtherFile(m_file, m_job);
        const Interrupt interrupt;
        exchange::FileSource source(m_file, [&source] { Interrupt::Check(source.GetName()); });
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        FieldTextReader reader(source, options);
        const ImportReport report = Import(console, db, source, reader);
        const bool withheld = m_strict && report.Get(Fate::Refused) > 0;
        if (m_json) {
            WriteJson(console, report, reader);
        } else {
            WriteText(console, report, reader);
            if (withheld) {
                console.Say("{}: nothing was recorded: lines were refused\n", Printable(m_job));
            }
        }
        db.Close();
        return report.Get(Fate::Refused) > 0 && report.Get(Fate::Recorded) == 0 ? 1 : 0;
    }

 private:
    exchange::FieldTextReadOptions ReadOptions() const {
        exchange::FieldTextReadOptions options;
        const bool assigns = ColumnOrder::IsAssignment(m_columns);
        if (m_order.empty() && m_columns.empty()) {
            throw UsageError(
                "which column is the northing and which the easting? Use --order pnezd, --order "
                "penzd, --columns or, if the file's header names them, --order header");
        }
        if (m_order == "header") {
            if (!m_columns.empty() && !assigns) {
                throw UsageError("--order header and a list of columns exclude each other");
            }
            options.recognise = true;
        } else if (!m_order.empty()) {
            if (!m_columns.empty()) {
                throw UsageError("--order and --columns exclude each other");
            }
            options.order = ColumnOrder::FromLetters(m_order, kOptionPrefix);
        } else if (!assigns) {
            options.order = ColumnOrder::FromWords(m_columns);
        }
        if (assigns) {
            options.assigned = ColumnOrder::ReadAssignments(m_columns);
        }
        if (m_header == "none") {
            options.headerLines = 0;
        } else if (m_header != "auto") {
            const std::optional<std::int32_t> lines = ParseWholeNumber(m_header);
            if (!lines || *lines < 0) {
                throw UsageError("--header takes a number of lines, auto or none, not " +
                                 Quoted(m_header));
            }
            options.headerLines = static_cast<std::uint64_t>(*lines);
        }
        if (!options.order && options.headerLines == 0U) {
            throw UsageError("the columns cannot come from a header when the file has none");
        }
        if (m_separator != "auto") {
            options.separator = ReadSeparator(m_separator);
        }
        options.comment = m_comment;
        options.decimalComma = m_decimalComma;
        options.codePage = m_codePage;
        options.noHeight = m_noHeight;
        options.optionPrefix = kOptionPrefix;
        static_cast<void>(ReadName(m_group, "the group's name"));
        return options;
    }

    int RunDxf(Console& console) const {
        if (!m_order.empty() || !m_columns.empty()) {
            throw UsageError("a DXF file has no columns: --order and --columns do not apply");
        }
        exchange::DxfReadOptions options = m_dxf.ReadOptions();
        options.duplicates = ReadDuplicates();
        options.origin = static_cast<SurveyCoordType>(m_origin);
        options.group = ReadName(m_group, "the group's name");
        m_dxf.Run(console, m_file, m_job, std::move(options), m_json);
        return 0;
    }

    exchange::Duplicates ReadDuplicates() const {
        using exchange::Duplicates;
        const std::map<std::string, Duplicates> ways = {{"refuse", Duplicates::Refuse},
                                                        {"skip", Duplicates::Skip},
                                                        {"rename", Duplicates::Rename}};
        return ways.at(m_duplicates);
    }

    ImportReport Import(Console& console, CqSurveyDB& db, const exchange::TextSource& source,
                        FieldTextReader& reader) const {
        exchange::ImportOptions options;
        options.duplicates = ReadDuplicates();
        options.origin = static_cast<SurveyCoordType>(m_origin);
        options.group = FromUtf8(m_group);
        options.strict = m_strict;
        options.jobName = m_job;
        const std::string file = Printable(source.GetName());
        if (!m_json) {
            options.note = [&](const ImportNote& note) {
                const std::string last =
                    note.lines > 1 ? fmt::format("-{}", note.line + note.lines - 1) : "";
                console.Say("{}:{}{}: {}: {}\n", file, note.line, last, note.what, note.text);
            };
        }
        Progress progress(console, "points");
        options.progress = [&](std::uint64_t recorded, std::uint64_t bytes,
                               std::optional<std::uint64_t> size) {
            Interrupt::Check(source.GetName());
            progress.Update(recorded, bytes, size);
        };
        return reader.Import(db, options);
    }

    static std::string DescribeColumns(const FieldTextReader& reader) {
        return reader.GetOrder() ? reader.GetOrder()->Describe() : "none";
    }

    void WriteText(Console& console, const ImportReport& report,
                   const FieldTextReader& reader) const {
        std::string untaken;
        for (const std::string& column : reader.GetUntaken()) {
            untaken += (untaken.empty() ? "" : ", ") + column;
        }
        console.Print("{} into {}\n", Printable(m_file), Printable(m_job));
        console.Print("  columns: {}; separator: {}\n", DescribeColumns(reader),
                      exchange::SeparatorWord(reader.GetSeparator()));
        if (!untaken.empty()) {
            console.Print("  columns not used: {}\n", untaken);
        }
        console.Print("  {}\n", report.DescribeSum());
        const auto tell = [&](std::uint64_t count, const char* what) {
            if (count > 0) {
                console.Print("  {} {}\n", count, what);
            }
        };
        tell(report.missingHeights, "without height");
        tell(report.unnamed, "without name");
        tell(report.cut, "with the name cut");
        tell(report.renamed, "renamed");
        tell(report.strayQuotes, "with a quotation mark kept as it is");
        tell(report.moreColumns, "with text after the last column");
    }

    void WriteJson(Console& console, const ImportReport& report,
                   const FieldTextReader& reader) const {
        JsonWriter json(console);
        json.BeginObject();
        json.Member("file", m_file);
        json.Member("job", m_job);
        json.Member("columns", DescribeColumns(reader));
        json.Member("separator", exchange::SeparatorWord(reader.GetSeparator()));
        json.Key("columns_not_taken");
        json.BeginArray();
        for (const std::string& column : reader.GetUntaken()) {
            json.Value(column);
        }
        json.EndArray();
        WriteReport(json, report);
        json.EndObject();
    }

    static void WriteReport(JsonWriter& json, const ImportReport& report) {
        json.Member("lines", report.GetSum());
        json.Member("header", report.Get(Fate::Header));
        json.Member("comment", report.Get(Fate::Comment));
        json.Member("blank", report.Get(Fate::Blank));
        json.Member("recorded", report.Get(Fate::Recorded));
        json.Member("continued", report.GetContinued());
        json.Member("skipped", report.Get(Fate::Skipped));
        json.Member("refused", report.Get(Fate::Refused));
        json.Member("withheld", report.GetWithheld());
        json.Member("missing_heights", report.missingHeights);
        json.Member("unnamed", report.unnamed);
        json.Member("names_cut", report.cut);
        json.Member("renamed", report.renamed);
        json.Member("stray_quotes", report.strayQuotes);
        json.Member("more_columns", report.moreColumns);
        json.Key("notes");
        json.BeginArray();
        for (const ImportNote& note : report.GetNotes()) {
            json.BeginObject();
            json.Member("line", note.line);
            json.Member("lines", note.lines);
            json.Member("what", note.what);
            json.Member("text", note.text);
            json.EndObject();
        }
        json.EndArray();
    }

    std::string m_file;
    std::string m_order;
    std::string m_columns;
    std::string m_header = "auto";
    std::string m_separator = "auto";
    std::string m_comment = "#";
    bool m_decimalComma = false;
    int m_codePage = CqCodePage::kUtf8;
    std::vector<std::string> m_noHeight;
    std::string m_duplicates = "refuse";
    std::string m_group;
    int m_origin = 1;
    bool m_strict = false;
    DxfImport m_dxf;
};

}  // namespace

std::unique_ptr<Command> MakeImportCommand() {
    return std::make_unique<ImportCommand>();
}

}  // namespace cqsurvey::cqjob
