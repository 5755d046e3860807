#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/exchange.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/Interrupt.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Progress.h"
#include "cqjob/drawing/DrawingImport.h"
#include "cqjob/gis/GisExchange.h"
#include "cqjob/import/ImportReports.h"
#include "cqjob/import/PointFileOptions.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::FieldTextReader;
using exchange::ForeignFile;
using exchange::ImportReport;
using Fate = exchange::ImportReport::Fate;

namespace {

constexpr const char* kFooter =
    "\n"
    "The points of a file are recorded in one step; when its import fails or is interrupted, none\n"
    "is. A line that should be a point and is not is refused, and reported with its number and "
    "the\n"
    "reason; the others are recorded. The exit status is 0 when every line is accounted for. It\n"
    "is 1 when lines were refused and no point could be recorded, and with --strict when any line\n"
    "was refused. Several files are imported one after the other, each with a report of its own;\n"
    "when one of them fails, the others are imported, and the exit status is 1.\n"
    "\n"
    "A repeated name (--duplicates) is refused; or skipped; or recorded with a number added "
    "(rename);\n"
    "or the point of that name gets the new coordinates and code (update); or it is compared with\n"
    "the new ones and stays (check). Each way tells the differences dE, dN, dH: file less job.\n"
    "\n"
    "A file named .dxf, .xml, .landxml or .sim is a drawing: --points, --names, --fills,\n"
    "--no-image, --surfaces, --any-crs, --tolerance, --unit and --file-unit are for such a file, "
    "and\n"
    "so are --duplicates, --group and --origin. The report accounts for everything in it: what it "
    "became,\n"
    "or why it was left out.\n"
    "\n"
    "A file named .gpkg is a GeoPackage, and PG:dbname=... a PostGIS database. GDAL's program\n"
    "ogr2ogr reads them, when it is there, and all of it is recorded in one step; --duplicates\n"
    "is for them, too, but not update and check.\n"
    "\n"
    "Example:\n"
    "  cqjob import site.job points.csv --order pnezd\n"
    "  cqjob import site.job total_station.csv --order header --no-height -9.99E+27\n"
    "  cqjob import site.job export.txt --columns name,-,-,easting,northing,height,code,desc,-\n"
    "  cqjob import site.job marks.csv --columns \"name=New Name,easting=EASTING,northing=5\"\n"
    "  cqjob import site.job pontos.txt --order header --decimal-comma --duplicates rename\n"
    "  cqjob import site.job day1.csv day2.csv --order pnezd --dry-run\n"
    "  cqjob import site.job check.csv --order pnez --duplicates check --tolerance 0.02\n"
    "  cqjob import site.job gnss.csv --order header --from-crs EPSG:4326 --layer GNSS";

/// What to do with a file that is no text of points.
std::string Advise(ForeignFile kind) {
    switch (kind) {
        case ForeignFile::Job:
            return "cqjob export writes its points to a text";
        case ForeignFile::Picture:
            return "cqjob image store puts it behind a job's plan";
        case ForeignFile::Gzip:
            return "unpack it first: gunzip -c FILE | cqjob import JOB - ...";
        case ForeignFile::Zip:
            return "unpack it first";
        case ForeignFile::Dwg:
            return "no command takes it; save it as DXF";
        case ForeignFile::Dxf:
            return "cqjob import JOB FILE --format dxf takes it";
        case ForeignFile::LandXml:
            return "cqjob import JOB FILE --format landxml takes it";
        case ForeignFile::Xml:
        case ForeignFile::Database:
        case ForeignFile::Pdf:
        case ForeignFile::Program:
            break;
    }
    return "no command takes it; save its points as text";
}

/// Throws when a file begins like one that is no text of points. Pipes are not looked at, because
/// what was read of them is gone.
void RefuseForeign(const std::string& file) {
    std::error_code failure;
    if (!std::filesystem::is_regular_file(file, failure)) {
        return;
    }
    std::string start(4096, '\0');
    std::ifstream source(file, std::ios::binary);
    source.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(source.gcount()));
    if (const auto kind = exchange::FindForeignFile(start)) {
        throw exchange::ExchangeError(fmt::format("{}: is {}, no text of points; {}",
                                                  Printable(file), DescribeForeignFile(*kind),
                                                  Advise(*kind)));
    }
}

class ImportCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand(
            "import", "Record the points of text files, or a DXF, LandXML or SIMA file");
        AddJob(command, "The job into which the points go");
        command.AddRequired("FILE", m_files, "The text files of points, - for standard input");
        m_how.AddTo(command);
        command
            .Add("--duplicates", m_duplicates,
                 "What to do with a point whose name the job already has: refuse, skip, rename, "
                 "update or check")
            .Placeholder("WAY")
            .OneOf({"refuse", "skip", "rename", "update", "check"})
            .ShowDefault();
        command
            .Add("--tolerance", m_tolerance,
                 "With --duplicates check: the largest distance in plan and in height. DXF and "
                 "LandXML: how far arcs may be from the curve that they replace, 0.001 without it")
            .Placeholder("LENGTH")
            .Check(FindNumberFault);
        command.Add("--group", m_group, "Put the points into this group, new or not")
            .Placeholder("NAME");
        command.Add("--layer", m_layer, "Put the points on this layer, new or not")
            .Placeholder("NAME");
        command.AddFlag("--layer-from-code", m_layerFromCode,
                        "Put each point on the layer called by its feature code, or by the first "
                        "word of its description when it has no code");
        command.Add("--origin", m_origin, "Data origin of the points")
            .Placeholder("N")
            .InRange(1, limits::kHighestOrigin)
            .ShowDefault();
        command.AddFlag("--strict", m_strict, "Record nothing when any line is refused");
        command.AddFlag("--dry-run", m_dryRun, "Do everything but record");
        m_drawing.AddTo(command);
        AddJson(command);
        command.SetFooter(std::string(PointFileOptions::kHelp) + kFooter);
        return command;
    }

    int Run(Console& console) override {
        for (const std::string& file : m_files) {
            if (GisExchange::IsAsked(file)) {
                return RunGis(console);
            }
            if (m_drawing.FindFormatOf(file) != DrawingFormat::Text) {
                return RunDrawing(console);
            }
        }
        if (!m_how.HasColumns()) {
            // It is no use asking for the columns of a file that has none.
            std::for_each(m_files.begin(), m_files.end(), RefuseForeign);
        }
        const exchange::FieldTextReadOptions how = m_how.Read();
        m_options = ReadOptions();
        for (const std::string& file : m_files) {
            RequireOtherFile(file, m_job);
        }
        const Interrupt interrupt;
        CqSurveyDB db;
        int status = 0;
        JsonWriter json(console);
        if (m_files.size() == 1) {
            status = ImportFile(console, json, db, m_files.front(), how);
        } else {
            OpenToWrite(db, m_job);
            status = ImportFiles(console, json, db, how);
        }
        const bool changed = !m_dryRun && m_sum.Get(Fate::Recorded) + m_sum.Get(Fate::Updated) > 0;
        if (changed) {
            CloseChanged(db);
        } else {
            db.Close();
        }
        return status;
    }

 private:
    int RunGis(Console& console) const {
        if (m_files.size() > 1) {
            throw UsageError("a GeoPackage or a database is imported alone");
        }
        if (m_how.HasColumns() || m_dryRun || m_strict || m_layerFromCode || !m_layer.empty() ||
            !m_group.empty() || m_tolerance) {
            throw UsageError("a GeoPackage or a database takes no option but --duplicates");
        }
        if (m_duplicates == "update" || m_duplicates == "check") {
            throw UsageError("--duplicates update and check are for text files");
        }
        GisExchange::Import(console, m_job, m_files.front(), m_duplicates, m_json);
        return 0;
    }

    int RunDrawing(Console& console) const {
        if (m_files.size() > 1) {
            throw UsageError("a drawing is imported alone");
        }
        const std::string& file = m_files.front();
        const std::string name = NameOf(m_drawing.FindFormatOf(file));
        if (m_drawing.FindFormatOf(file) == DrawingFormat::GeoJson ||
            m_drawing.FindFormatOf(file) == DrawingFormat::Kml) {
            throw UsageError(name + " files are only written");
        }
        if (m_how.HasColumns()) {
            throw UsageError("a " + name +
                             " file has no columns: --order and --columns do not apply");
        }
        if (m_dryRun || m_strict || m_layerFromCode || !m_layer.empty()) {
            throw UsageError(
                "--dry-run, --strict, --layer and --layer-from-code are for text files");
        }
        DrawingImport::Common common;
        common.duplicates = ReadDuplicates();
        if (common.duplicates == exchange::Duplicates::Update ||
            common.duplicates == exchange::Duplicates::Check) {
            throw UsageError("--duplicates update and check are for text files");
        }
        if (m_tolerance) {
            common.tolerance = ReadTolerance();
        }
        common.origin = static_cast<SurveyCoordType>(m_origin);
        common.group = ReadName(m_group, "the group's name", limits::kGroupName);
        common.codePage = m_how.GetCodePage();
        m_drawing.Run(console, file, m_job, common, m_json);
        return 0;
    }

    exchange::Duplicates ReadDuplicates() const {
        using exchange::Duplicates;
        const std::map<std::string, Duplicates> ways = {{"refuse", Duplicates::Refuse},
                                                        {"skip", Duplicates::Skip},
                                                        {"rename", Duplicates::Rename},
                                                        {"update", Duplicates::Update},
                                                        {"check", Duplicates::Check}};
        return ways.at(m_duplicates);
    }

    double ReadTolerance() const {
        const double tolerance = ParseNumber(*m_tolerance).value;
        if (!(tolerance >= 0.0)) {
            throw UsageError("--tolerance is at least 0");
        }
        return tolerance;
    }

    exchange::ImportOptions ReadOptions() const {
        exchange::ImportOptions options;
        options.duplicates = ReadDuplicates();
        if ((options.duplicates == exchange::Duplicates::Check) != m_tolerance.has_value()) {
            throw UsageError("--duplicates check and --tolerance need each other");
        }
        if (m_tolerance) {
            options.tolerance = ReadTolerance();
        }
        options.origin = static_cast<SurveyCoordType>(m_origin);
        options.group = ReadName(m_group, "the group's name", limits::kGroupName);
        options.layer = ReadName(m_layer, "the layer's name", limits::kLayerName);
        options.layerFromCode = m_layerFromCode;
        options.strict = m_strict;
        options.dryRun = m_dryRun;
        options.jobName = m_job;
        return options;
    }

    /// Imports several files one after the other and reports each, and all of them together.
    /// Returns the exit status.
    int ImportFiles(Console& console, JsonWriter& json, CqSurveyDB& db,
                    const exchange::FieldTextReadOptions& how) {
        int status = 0;
        const auto importAll = [&] {
            for (const std::string& file : m_files) {
                try {
                    status = std::max(status, ImportFile(console, json, db, file, how));
                } catch (const exchange::ExchangeError& error) {
                    status = 1;
                    TellFailure(console, json, file, error.what());
                }
            }
        };
        if (m_json) {
            json.Object([&] {
                json.Member("job", m_job);
                json.Array("files", importAll);
                json.Object("sum", [&] {
                    json.Member("failed", m_failed);
                    WriteReport(json, m_sum);
                });
            });
        } else {
            importAll();
            console.Print("{} into {}{}\n", Count(m_files.size(), "file"), Printable(m_job),
                          m_failed > 0 ? fmt::format(", {} failed", m_failed) : "");
            WriteReport(console, m_sum);
        }
        return status;
    }

    /// Imports one file in one step and reports it. Returns the exit status.
    int ImportFile(Console& console, JsonWriter& json, CqSurveyDB& db, const std::string& file,
                   const exchange::FieldTextReadOptions& how) {
        exchange::FileSource source(file, [&source] { Interrupt::Check(source.GetName()); });
        if (!db.IsOpen()) {
            OpenToWrite(db, m_job);
        }
        Progress progress(console, "points");
        m_options.progress = [&](std::uint64_t recorded, std::uint64_t bytes,
                                 std::optional<std::uint64_t> size) {
            Interrupt::Check(source.GetName());
            progress.Update(recorded, bytes, size);
        };
        std::optional<FieldTextReader> reader;
        try {
            reader.emplace(source, how);
        } catch (const exchange::ForeignFileError& error) {
            throw exchange::ExchangeError(std::string(error.what()) + "; " +
                                          Advise(error.GetKind()));
        }
        const ImportReport report = reader->Import(db, m_options);
        m_sum.Add(report);
        if (m_json) {
            WriteJson(json, file, report, *reader);
        } else {
            WriteText(console, file, report, *reader);
            WriteNotes(console, source.GetName(), report);
            if (report.GetWithheld() > 0) {
                console.Say("{}: nothing was recorded: lines were refused\n", Printable(m_job));
            }
        }
        const std::uint64_t taken =
            report.Get(Fate::Recorded) + report.Get(Fate::Updated) + report.Get(Fate::Checked);
        return report.Get(Fate::Refused) > 0 && taken == 0 ? 1 : 0;
    }

    static std::string DescribeColumns(const FieldTextReader& reader) {
        return reader.GetOrder() ? reader.GetOrder()->Describe() : "none";
    }

    void WriteText(Console& console, const std::string& file, const ImportReport& report,
                   const FieldTextReader& reader) const {
        console.Print("{} into {}{}\n", Printable(file), Printable(m_job),
                      m_dryRun ? ": a dry run, nothing is recorded" : "");
        console.Print("  columns: {}; separator: {}\n", DescribeColumns(reader),
                      exchange::SeparatorWord(reader.GetSeparator()));
        if (!reader.GetUntaken().empty()) {
            console.Print("  columns not used: {}\n", fmt::join(reader.GetUntaken(), ", "));
        }
        WriteReport(console, report);
    }

    void WriteJson(JsonWriter& json, const std::string& file, const ImportReport& report,
                   const FieldTextReader& reader) const {
        json.Object([&] {
            json.Member("file", file);
            json.Member("job", m_job);
            json.Member("dry_run", m_dryRun);
            json.Member("columns", DescribeColumns(reader));
            json.Member("separator", exchange::SeparatorWord(reader.GetSeparator()));
            json.Values("columns_not_taken", reader.GetUntaken());
            WriteReport(json, report);
        });
    }

    void TellFailure(Console& console, JsonWriter& json, const std::string& file,
                     const std::string& error) {
        ++m_failed;
        console.Say("cqjob: {}\n", error);
        if (m_json) {
            json.Object([&] {
                json.Member("file", file);
                json.Member("error", error);
            });
        }
    }

    PointFileOptions m_how;
    exchange::ImportOptions m_options;
    ImportReport m_sum;
    std::size_t m_failed = 0;
    std::vector<std::string> m_files;
    std::string m_duplicates = "refuse";
    std::optional<std::string> m_tolerance;
    std::string m_group;
    std::string m_layer;
    bool m_layerFromCode = false;
    int m_origin = 1;
    bool m_strict = false;
    bool m_dryRun = false;
    DrawingImport m_drawing;
};

}  // namespace

std::unique_ptr<Command> MakeImportCommand() {
    return std::make_unique<ImportCommand>();
}

}  // namespace cqsurvey::cqjob
