#include "cqjob/drawing/DrawingExport.h"

#include <cqsurvey/exchange/exchange.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string_view>

#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Progress.h"
#include "cqjob/drawing/DrawingImport.h"
#include "cqjob/drawing/DrawingReportText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

using exchange::DxfArcs;
using exchange::DxfPoints;
using exchange::DxfVersion;

/// The bytes of the job's background image; none when there is no image.
std::string ReadImage(CqSurveyDB& db) {
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0.0;
    if (db.IsBackgroundImageFile() == 0 ||
        db.ReadBackgroundImageFile(data, length, type, centre, size, rotation) == 0) {
        return {};
    }
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> owner(data, &std::free);
    return {data, data + length};
}

}  // namespace

void DrawingExport::AddTo(CommandLine& command) {
    command.Add("--format", m_format, "What to write: text or dxf; auto goes by the file's name")
        .Placeholder("WORD")
        .OneOf({"auto", "text", "dxf"})
        .ShowDefault();
    command.Add("--version", m_version, "DXF: the version, R12, R2000 or R2018")
        .Placeholder("WORD")
        .OneOf({"R12", "R2000", "R2018"})
        .ShowDefault();
    command
        .Add("--arcs", m_arcs,
             "DXF: arcs between vertices of different heights: break them into lines, or keep "
             "each as a level polyline of its own")
        .Placeholder("WAY")
        .OneOf({"break", "keep"})
        .ShowDefault();
    command.Add("--tolerance", m_tolerance, "DXF: how far the lines of a broken arc may be off")
        .Placeholder("LENGTH")
        .ShowDefault();
    command
        .Add("--points", m_points, "DXF: survey points as point, as block with attributes, or both")
        .Placeholder("WAY")
        .OneOf({"both", "point", "block"})
        .ShowDefault();
    command.AddFlag("--code-layers", m_codeLayers,
                    "DXF: put each point on a layer of its feature code");
    command
        .Add("--unit", m_unit,
             "DXF: the unit of a job that states none: m, mm, cm, km, ft, us-ft, in")
        .Placeholder("UNIT");
    command.AddFlag("--image,!--no-image", m_image,
                    "DXF: write the background image beside the drawing, or not");
}

bool DrawingExport::IsAsked(const std::string& file) const {
    return FindFormat(m_format, file) == DrawingFormat::Dxf;
}

exchange::DxfWriteOptions DrawingExport::ReadOptions() const {
    const std::map<std::string, DxfVersion> versions = {
        {"R12", DxfVersion::R12}, {"R2000", DxfVersion::R2000}, {"R2018", DxfVersion::R2018}};
    const std::map<std::string, DxfPoints> points = {
        {"both", DxfPoints::Both}, {"point", DxfPoints::Point}, {"block", DxfPoints::Block}};
    exchange::DxfWriteOptions options;
    options.version = versions.at(m_version);
    options.arcs = m_arcs == "keep" ? DxfArcs::Keep : DxfArcs::Break;
    options.tolerance = m_tolerance;
    options.points = points.at(m_points);
    options.layersByCode = m_codeLayers;
    options.unit = ReadUnit(m_unit, "--unit");
    return options;
}

void DrawingExport::Run(Console& console, const std::string& job, const std::string& file,
                        bool replace, bool json) const {
    exchange::DxfWriteOptions options = ReadOptions();
    RequireOtherFile(file, job);
    CqSurveyDB db;
    OpenToRead(db, job);
    options.unit = FindJobUnit(db, options.unit);
    const std::string bytes = m_image && file != "-" && options.version != DxfVersion::R12
                                  ? ReadImage(db)
                                  : std::string();
    std::optional<OutputFile> picture;
    std::string picturePath;
    if (const auto kind = exchange::ReadImageKind(bytes)) {
        picturePath = std::filesystem::path(file).replace_extension(kind->ending).string();
        RequireOtherFile(picturePath, job);
        options.image = exchange::DxfImage{std::filesystem::path(picturePath).filename().string(),
                                           kind->width, kind->height};
        picture.emplace(console, picturePath, replace);
        picture->Write(bytes);
    }
    OutputFile output(console, file, replace);
    Progress progress(console, "entities");
    const auto whole = static_cast<std::uint64_t>(db.GetNumCadEntities());
    options.progress = [&](std::size_t entities) { progress.Update(entities, entities, whole); };
    exchange::DxfWriter writer(db, options, [&](std::string_view piece) { output.Write(piece); });
    const exchange::DrawingReport report = writer.Write();
    if (picture) {
        picture->Finish();
    }
    output.Finish();
    db.Close();
    const DrawingReportText text(report);
    if (json) {
        JsonWriter members(console);
        members.BeginObject();
        members.Member("job", job);
        members.Member("file", file);
        if (picture) {
            members.Member("image", picturePath);
        }
        text.WriteJson(members, false);
        members.EndObject();
    } else if (file != "-") {
        console.Print("{} into {}\n", Printable(job), Printable(file));
        text.WriteText(console, false);
    }
}

}  // namespace cqsurvey::cqjob
