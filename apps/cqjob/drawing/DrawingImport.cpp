#include "cqjob/drawing/DrawingImport.h"

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/exchange.h>

#include <filesystem>
#include <utility>

#include "cqjob/Failure.h"
#include "cqjob/Interrupt.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Progress.h"
#include "cqjob/drawing/DrawingReportText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

using exchange::DxfPointRule;

constexpr std::string_view kLayer = "layer:";
constexpr std::string_view kBlock = "block:";
constexpr std::string_view kText = "text";

DxfPointRule ReadRule(const std::string& word) {
    DxfPointRule rule;
    if (word == "point") {
        return rule;
    }
    if (word.starts_with(kLayer) && word.size() > kLayer.size()) {
        rule.kind = DxfPointRule::Kind::Layer;
        rule.name = word.substr(kLayer.size());
        return rule;
    }
    if (word.starts_with(kBlock) && word.size() > kBlock.size()) {
        rule.kind = DxfPointRule::Kind::Block;
        const std::string rest = word.substr(kBlock.size());
        const std::size_t colon = rest.find(':');
        rule.name = rest.substr(0, colon);
        rule.attribute = colon == std::string::npos ? "" : rest.substr(colon + 1);
        return rule;
    }
    throw UsageError(
        "--points takes point, layer:NAME, block:NAME, block:NAME:ATTRIBUTE or none, not " +
        Quoted(word));
}

}  // namespace

std::optional<exchange::LengthUnit> ReadUnit(const std::string& word, const char* option) {
    if (word.empty()) {
        return std::nullopt;
    }
    const std::optional<exchange::LengthUnit> unit = exchange::UnitOfWord(word);
    if (!unit) {
        throw UsageError(std::string(option) + " takes m, mm, cm, km, ft, us-ft or in, not " +
                         Quoted(word));
    }
    return unit;
}

std::optional<exchange::LengthUnit> FindJobUnit(CqSurveyDB& db,
                                                std::optional<exchange::LengthUnit> asked) {
    const std::optional<CqLengthUnit> stated = CqJobSystem(db).GetUnit();
    if (!stated) {
        return asked;
    }
    const auto unit = exchange::UnitOfWord(GetUnitWord(*stated));
    if (asked && asked != unit) {
        throw UsageError(std::string("--unit contradicts the job, which is in ") +
                         GetUnitWord(*stated));
    }
    return unit;
}

void DrawingImport::AddTo(CommandLine& command) {
    command
        .Add("--format", m_format,
             "What the file is: text, dxf, landxml or sima; auto goes by its name")
        .Placeholder("WORD")
        .OneOf({"auto", "text", "dxf", "landxml", "sima"})
        .ShowDefault();
    command
        .Add("--points", m_points,
             "DXF: what becomes survey points: point, layer:NAME, block:NAME[:ATTRIBUTE] or none; "
             "may be given several times. Without it: every POINT, and the blocks of an export")
        .Placeholder("WHAT")
        .OneValueEach();
    command
        .Add("--names", m_names,
             "DXF: text or text:LAYER names the points that have no name after the nearest text")
        .Placeholder("WAY");
    command.AddFlag("--fills", m_fills,
                    "DXF: take the outlines of hatches and solids as polylines");
    command.AddFlag("--image,!--no-image", m_image,
                    "DXF: take the first image, whose picture lies beside the drawing, as the "
                    "background of a job that has none, or not");
    command
        .Add("--unit", m_unit,
             "The unit of a job that states none: m, mm, cm, km, ft, us-ft, in; a drawing in "
             "another is scaled")
        .Placeholder("UNIT");
    command.Add("--file-unit", m_fileUnit, "The unit of a drawing, instead of what its file says")
        .Placeholder("UNIT");
    command
        .Add("--surfaces", m_surfaces,
             "LandXML: take points, lines or both of surfaces; may be given twice")
        .Placeholder("WHAT")
        .OneOf({"points", "lines"})
        .OneValueEach();
    command.AddFlag("--any-crs", m_anySystem,
                    "LandXML: read a file that states another coordinate system than the job, "
                    "with its coordinates as they are");
}

DrawingFormat DrawingImport::FindFormatOf(const std::string& file) const {
    return FindFormat(m_format, file);
}

exchange::DxfReadOptions DrawingImport::ReadDxfOptions(const std::string& file) const {
    exchange::DxfReadOptions options;
    if (!m_points.empty()) {
        options.points.emplace();
        for (const std::string& word : m_points) {
            if (word != "none") {
                options.points->push_back(ReadRule(word));
            } else if (m_points.size() > 1) {
                throw UsageError("--points none and other points exclude each other");
            }
        }
    }
    if (!m_names.empty()) {
        const std::string layer = std::string(kText) + ":";
        if (m_names != kText && !m_names.starts_with(layer)) {
            throw UsageError("--names takes text or text:LAYER, not " + Quoted(m_names));
        }
        options.namesFromTexts = true;
        options.nameLayer = m_names == kText ? "" : m_names.substr(layer.size());
    }
    options.fills = m_fills;
    if (m_image && file != "-") {
        options.pictureFolder = (std::filesystem::path(".") / file).parent_path().string();
    }
    options.jobUnit = ReadUnit(m_unit, "--unit");
    options.fileUnit = ReadUnit(m_fileUnit, "--file-unit");
    return options;
}

exchange::LandXmlReadOptions DrawingImport::ReadLandXmlOptions() const {
    exchange::LandXmlReadOptions options;
    for (const std::string& what : m_surfaces) {
        (what == "points" ? options.surfacePoints : options.surfaceLines) = true;
    }
    options.anySystem = m_anySystem;
    options.jobUnit = ReadUnit(m_unit, "--unit");
    options.fileUnit = ReadUnit(m_fileUnit, "--file-unit");
    return options;
}

exchange::SimaReadOptions DrawingImport::ReadSimaOptions(const Common& common) const {
    exchange::SimaReadOptions options;
    options.codePage = common.codePage.value_or(options.codePage);
    options.jobUnit = ReadUnit(m_unit, "--unit");
    options.fileUnit = ReadUnit(m_fileUnit, "--file-unit");
    return options;
}

void DrawingImport::Run(Console& console, const std::string& file, const std::string& job,
                        const Common& common, bool json) const {
    RequireOtherFile(file, job);
    const DrawingFormat format = FindFormatOf(file);
    if (format != DrawingFormat::Dxf &&
        (!m_points.empty() || !m_names.empty() || m_fills || !m_image)) {
        throw UsageError("--points, --names, --fills and --no-image are for DXF files");
    }
    if (format != DrawingFormat::LandXml && (!m_surfaces.empty() || m_anySystem)) {
        throw UsageError("--surfaces and --any-crs are for LandXML files");
    }
    if (format == DrawingFormat::Sima && common.tolerance) {
        throw UsageError("a SIMA file has no curves: --tolerance does not apply");
    }
    if (format != DrawingFormat::Sima && common.codePage) {
        throw UsageError(std::string("a ") + NameOf(format) + " file tells its code page itself");
    }
    const Interrupt interrupt;
    exchange::FileSource source(file, [&source] { Interrupt::Check(source.GetName()); });
    Progress progress(console, "entities");
    CqSurveyDB db;
    const auto prepare = [&](auto options) {
        options.jobName = job;
        options.duplicates = common.duplicates;
        options.origin = common.origin;
        options.group = common.group;
        options.progress = [&](std::uint64_t entities, std::uint64_t bytes,
                               std::optional<std::uint64_t> size) {
            Interrupt::Check(source.GetName());
            progress.Update(entities, bytes, size);
        };
        OpenToWrite(db, job);
        options.jobUnit = FindJobUnit(db, options.jobUnit);
        return options;
    };
    const auto prepareCurves = [&](auto options) {
        options.tolerance = common.tolerance.value_or(options.tolerance);
        return prepare(std::move(options));
    };
    const exchange::DrawingReport report =
        format == DrawingFormat::LandXml
            ? exchange::LandXmlReader(source, prepareCurves(ReadLandXmlOptions())).Import(db)
        : format == DrawingFormat::Sima
            ? exchange::SimaReader(source, prepare(ReadSimaOptions(common))).Import(db)
            : exchange::DxfReader(source, prepareCurves(ReadDxfOptions(file))).Import(db);
    CloseChanged(db);
    if (json) {
        JsonWriter writer(console);
        writer.Object([&] {
            writer.Member("file", file);
            writer.Member("job", job);
            WriteReport(writer, report, true);
        });
        return;
    }
    console.Print("{} into {}\n", Printable(file), Printable(job));
    WriteReport(console, report, true);
}

}  // namespace cqsurvey::cqjob
