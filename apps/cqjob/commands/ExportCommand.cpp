#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/exchange.h>

#include "cqjob/Command.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Progress.h"
#include "cqjob/SeparatorOption.h"
#include "cqjob/ViewOptions.h"
#include "cqjob/drawing/DrawingExport.h"
#include "cqjob/gis/GisExchange.h"
#include "cqjob/settings/SystemOptions.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class ExportCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand(
            "export",
            "Write a job's points to a text file, or all of it to a DXF, LandXML, SIMA, "
            "GeoJSON or KML file");
        AddJob(command, "The job; it is not changed");
        command.AddRequired("FILE", m_file, "The file to write, - for standard output");
        command
            .Add("--order", m_order,
                 "Order of the columns: pnezd, penzd or other letters as for import; "
                 "without it, penzcd with a header")
            .Placeholder("ORDER");
        command
            .Add("--columns", m_columns,
                 "Columns by words (name,easting,-,northing,height,code,desc)")
            .Placeholder("LIST")
            .Excludes("--order");
        command
            .AddFlag("--all-columns", m_allColumns,
                     "Everything that the job knows of its points, with a header")
            .Excludes("--order")
            .Excludes("--columns");
        command.AddFlag("--header,!--no-header", m_header,
                        "Name the columns in the first line, or not; without it, only when neither "
                        "--order nor --columns is given");
        AddSeparator(command, m_separator, false);
        command
            .Add("--decimals", m_decimals,
                 "Decimal places; without it, as many as exactly the same numbers need")
            .Placeholder("N")
            .InRange(0, 17);
        command.AddFlag("--decimal-comma", m_decimalComma, "Write the decimal sign as a comma");
        command.AddFlag("--safe-csv", m_safe,
                        "For a spreadsheet: put an apostrophe before texts that begin with =, +, "
                        "- or @ and are no numbers, so that it does not run them");
        command
            .Add("--code-page", m_codePage,
                 "Code page of the file: 65001 is UTF-8; SIMA: 932 without it")
            .Placeholder("N")
            .ShowDefault();
        m_view.AddTo(command);
        m_drawing.AddTo(command);
        command.AddFlag("--force", m_force, "Replace an existing file");
        AddJson(command);
        command.SetFooter(
            "A missing height is an empty column. Importing the file with the same order yields "
            "the\n"
            "same points. When the order has no c, d holds the description or the feature code; "
            "for\n"
            "a point that has both, the code comes first, and then the description in a column of\n"
            "its own. --all-columns is penzcgfotld; cqjob import --order header reads it back "
            "whole.\n"
            "\n" +
            std::string(ViewOptions::kHelp) +
            "\n"
            "A file named .dxf, .xml, .landxml, .sim, .geojson, .json or .kml is a drawing: it\n"
            "holds all of the job, whatever the filter, and --version, --arcs, --tolerance,\n"
            "--points, --code-layers, --unit, --image and --plain are for such a file. The report\n"
            "tells what the format cannot hold.\n"
            "\n"
            "A file named .gpkg is a GeoPackage, and PG:dbname=... a PostGIS database: both hold "
            "all of\n"
            "the job with true arcs. GDAL's program ogr2ogr writes them, when it is there.\n"
            "\n"
            "Example:\n"
            "  cqjob export site.job points.csv\n"
            "  cqjob export site.job - --order pnezd --decimals 3\n"
            "  cqjob export site.job road.csv --group Road --sort code\n"
            "  cqjob export site.job plan.dxf --version R2000 --unit m\n"
            "  cqjob export site.job plan.xml --unit m\n"
            "  cqjob export site.job plan.kml"
            "  cqjob export site.job site.gpkg");
        m_command = &command;
        return command;
    }

    int Run(Console& console) override {
        if (GisExchange::IsAsked(m_file)) {
            GisExchange::Export(console, m_job, m_file, m_force, m_json);
            return 0;
        }
        if (m_drawing.FindFormatOf(m_file) != DrawingFormat::Text) {
            RequireOwnOutput(m_file);
            const auto codePage =
                m_command->IsGiven("--code-page") ? std::optional(m_codePage) : std::nullopt;
            m_drawing.Run(console, m_job, m_file, m_force, codePage, m_json);
            return 0;
        }
        exchange::FieldTextWriter writer(ReadOptions());
        RequireOtherFile(m_file, m_job);
        RequireOwnOutput(m_file);
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const PointList points = m_view.MakeList(db, m_job, console);
        OutputFile output(console, m_file, m_force);
        if (m_command->IsGiven("--header") ? m_header : m_order.empty() && m_columns.empty()) {
            output.Write(writer.MakeHeader());
        }
        Progress progress(console, "points");
        CqCoordRec point;
        for (std::size_t i = 0; i < points.GetCount(); ++i) {
            const CqHandle handle = points.Read(i, point);
            output.Write(writer.MakeLine(db, handle, point));
            progress.Update(i + 1, i + 1, points.GetCount());
        }
        output.Finish();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("file", m_file);
                json.Member("points", points.GetCount());
                json.Member("not_finite", writer.GetNotFinite());
                WriteSystem(json, db);
            });
            return 0;
        }
        console.Say("{} into {}\n", Count(points.GetCount(), "point"), Printable(m_file));
        const CqJobSystem system(db);
        if (system.GetUnit() || !system.GetSystem().empty()) {
            console.Say("  length unit: {}; system: {}\n", DescribeUnit(db), DescribeSystem(db));
        }
        if (writer.GetNotFinite() > 0) {
            console.Say(
                "{}: {} with coordinates that are not finite numbers; an import refuses such "
                "lines\n",
                Printable(m_job), Count(writer.GetNotFinite(), "point"));
        }
        return 0;
    }

 private:
    exchange::FieldTextWriteOptions ReadOptions() const {
        exchange::FieldTextWriteOptions options;
        if (m_allColumns) {
            options.order = exchange::ColumnOrder::FromLetters("penzcgfotld");
        } else if (!m_columns.empty()) {
            options.order = exchange::ColumnOrder::FromWords(m_columns);
        } else if (!m_order.empty()) {
            options.order = exchange::ColumnOrder::FromLetters(m_order, kOptionPrefix);
        }
        options.separator = ReadSeparator(m_separator);
        options.decimals = m_decimals;
        options.decimalComma = m_decimalComma;
        options.safe = m_safe;
        options.codePage = m_codePage;
        options.jobName = m_job;
        return options;
    }

    CommandLine* m_command = nullptr;
    ViewOptions m_view;
    std::string m_file;
    std::string m_order;
    std::string m_columns;
    bool m_allColumns = false;
    bool m_header = false;
    std::string m_separator = "comma";
    std::optional<int> m_decimals;
    bool m_decimalComma = false;
    bool m_safe = false;
    int m_codePage = CqCodePage::kUtf8;
    bool m_force = false;
    DrawingExport m_drawing;
};

}  // namespace

std::unique_ptr<Command> MakeExportCommand() {
    return std::make_unique<ExportCommand>();
}

}  // namespace cqsurvey::cqjob
