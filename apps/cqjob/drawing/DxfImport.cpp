#include "cqjob/drawing/DxfImport.h"

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/exchange.h>

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

bool IsDxfName(const std::string& path) {
    constexpr std::size_t kLength = 4;
    if (path.size() < kLength) {
        return false;
    }
    std::string end = path.substr(path.size() - kLength);
    for (char& c : end) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return end == ".dxf";
}

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

void DxfImport::AddTo(CommandLine& command) {
    command.Add("--format", m_format, "What the file is: text or dxf; auto goes by its name")
        .Placeholder("WORD")
        .OneOf({"auto", "text", "dxf"})
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
    command
        .Add("--unit", m_unit,
             "DXF: the unit of a job that states none: m, mm, cm, km, ft, us-ft, in; a file in "
             "another is scaled")
        .Placeholder("UNIT");
    command.Add("--file-unit", m_fileUnit, "DXF: the file's unit, instead of what the file says")
        .Placeholder("UNIT");
}

bool DxfImport::IsAsked(const std::string& file) const {
    return m_format == "dxf" || (m_format == "auto" && IsDxfName(file));
}

exchange::DxfReadOptions DxfImport::ReadOptions() const {
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
    options.jobUnit = ReadUnit(m_unit, "--unit");
    options.fileUnit = ReadUnit(m_fileUnit, "--file-unit");
    return options;
}

void DxfImport::Run(Console& console, const std::string& file, const std::string& job,
                    exchange::DxfReadOptions options, bool json) const {
    RequireOtherFile(file, job);
    const Interrupt interrupt;
    exchange::FileSource source(file, [&source] { Interrupt::Check(source.GetName()); });
    Progress progress(console, "entities");
    options.jobName = job;
    options.progress = [&](std::uint64_t entities, std::uint64_t bytes,
                           std::optional<std::uint64_t> size) {
        Interrupt::Check(source.GetName());
        progress.Update(entities, bytes, size);
    };
    CqSurveyDB db;
    OpenToWrite(db, job);
    options.jobUnit = FindJobUnit(db, options.jobUnit);
    exchange::DxfReader reader(source, std::move(options));
    const exchange::DrawingReport report = reader.Import(db);
    CloseChanged(db);
    const DrawingReportText text(report);
    if (json) {
        JsonWriter writer(console);
        writer.BeginObject();
        writer.Member("file", file);
        writer.Member("job", job);
        text.WriteJson(writer, true);
        writer.EndObject();
        return;
    }
    console.Print("{} into {}\n", Printable(file), Printable(job));
    text.WriteText(console, true);
}

}  // namespace cqsurvey::cqjob
