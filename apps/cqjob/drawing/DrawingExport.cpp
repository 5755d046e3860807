#include "cqjob/drawing/DrawingExport.h"

#include <cqsurvey/exchange/exchange.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string_view>

#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Progress.h"
#include "cqjob/drawing/DrawingImport.h"
#include "cqjob/drawing/DrawingReportText.h"
#include "cqjob/images/StoredImage.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::DxfArcs;
using exchange::DxfPoints;
using exchange::DxfVersion;

namespace {

/// The ending of a picture beside a DXF file; null for an image that its readers do not know.
const char* PictureEnding(const exchange::ImageHeader& image) {
    if (image.width == 0 || image.height == 0) {
        return nullptr;
    }
    const std::string_view format = image.format;
    return format == "PNG"    ? ".png"
           : format == "JPEG" ? ".jpg"
           : format == "BMP"  ? ".bmp"
                              : nullptr;
}

}  // namespace

void DrawingExport::AddTo(CommandLine& command) {
    m_command = &command;
    command
        .Add("--format", m_format,
             "What to write: text, dxf, landxml, sima, geojson or kml; auto goes by the file's "
             "name")
        .Placeholder("WORD")
        .OneOf({"auto", "text", "dxf", "landxml", "sima", "geojson", "kml"})
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
    command.Add("--tolerance", m_tolerance, "How far the lines of a broken arc may be off")
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
        .Add("--unit", m_unit, "The unit of a job that states none: m, mm, cm, km, ft, us-ft, in")
        .Placeholder("UNIT");
    command.AddFlag("--image,!--no-image", m_image,
                    "DXF: write the background image beside the drawing, or not");
    command.AddFlag("--plain", m_plain,
                    "GeoJSON: write northings and eastings as they are, not positions in WGS 84");
}

DrawingFormat DrawingExport::FindFormatOf(const std::string& file) const {
    return FindFormat(m_format, file);
}

exchange::DxfWriteOptions DrawingExport::ReadDxfOptions() const {
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

void DrawingExport::RequireFitting(DrawingFormat format, std::optional<int> codePage) const {
    const bool dxf = format == DrawingFormat::Dxf;
    for (const char* option : {"--version", "--arcs", "--points", "--code-layers", "--image"}) {
        if (!dxf && m_command->IsGiven(option)) {
            throw UsageError(std::string(option) + " is for DXF files");
        }
    }
    if (m_plain && format != DrawingFormat::GeoJson) {
        throw UsageError("--plain is for GeoJSON files");
    }
    if (codePage && format != DrawingFormat::Sima) {
        throw UsageError(std::string("the encoding of a ") + NameOf(format) +
                         " file is fixed: --code-page does not apply");
    }
}

exchange::DrawingReport DrawingExport::Write(
    CqSurveyDB& db, const std::string& job, DrawingFormat format, std::optional<int> codePage,
    const std::function<void(std::size_t)>& progress,
    const std::function<void(std::string_view)>& sink) const {
    const auto unit = FindJobUnit(db, ReadUnit(m_unit, "--unit"));
    const std::string project = std::filesystem::path(job).stem().string();
    const auto common = [&](auto options) {
        options.unit = unit;
        options.progress = progress;
        return options;
    };
    if (format == DrawingFormat::LandXml) {
        auto options = common(exchange::LandXmlWriteOptions());
        options.project = project;
        return exchange::LandXmlWriter(db, options, sink).Write();
    }
    if (format == DrawingFormat::Sima) {
        auto options = common(exchange::SimaWriteOptions());
        options.project = project;
        options.tolerance = m_tolerance;
        options.codePage = codePage.value_or(options.codePage);
        return exchange::SimaWriter(db, options, sink).Write();
    }
    if (format == DrawingFormat::GeoJson) {
        auto options = common(exchange::GeoJsonWriteOptions());
        options.plain = m_plain;
        options.tolerance = m_tolerance;
        return exchange::GeoJsonWriter(db, options, sink).Write();
    }
    auto options = common(exchange::KmlWriteOptions());
    options.project = project;
    options.tolerance = m_tolerance;
    return exchange::KmlWriter(db, options, sink).Write();
}

void DrawingExport::Run(Console& console, const std::string& job, const std::string& file,
                        bool replace, std::optional<int> codePage, bool json) const {
    const DrawingFormat format = FindFormatOf(file);
    RequireFitting(format, codePage);
    exchange::DxfWriteOptions options = ReadDxfOptions();
    RequireOtherFile(file, job);
    CqSurveyDB db;
    OpenToRead(db, job);
    options.unit = FindJobUnit(db, options.unit);
    const bool dxf = format == DrawingFormat::Dxf;
    std::optional<StoredImage> image;
    if (dxf && m_image && file != "-" && options.version != DxfVersion::R12) {
        image = StoredImage::Read(db);
    }
    const std::string_view bytes = image ? image->GetBytes() : std::string_view();
    std::optional<OutputFile> picture;
    std::string picturePath;
    const auto header = exchange::ImageHeader::Find(bytes);
    if (const char* ending = header ? PictureEnding(*header) : nullptr) {
        picturePath = std::filesystem::path(file).replace_extension(ending).string();
        RequireOtherFile(picturePath, job);
        options.image = exchange::DxfImage{std::filesystem::path(picturePath).filename().string(),
                                           header->width, header->height};
        picture.emplace(console, picturePath, replace);
        picture->Write(bytes);
    }
    OutputFile output(console, file, replace);
    Progress progress(console, "entities");
    const auto whole = static_cast<std::uint64_t>(db.GetNumCadEntities());
    options.progress = [&](std::size_t entities) { progress.Update(entities, entities, whole); };
    const auto sink = [&](std::string_view piece) { output.Write(piece); };
    const exchange::DrawingReport report =
        dxf ? exchange::DxfWriter(db, options, sink).Write()
            : Write(db, job, format, codePage, options.progress, sink);
    if (picture) {
        picture->Finish();
    }
    output.Finish();
    db.Close();
    if (json) {
        JsonWriter members(console);
        members.Object([&] {
            members.Member("job", job);
            members.Member("file", file);
            if (picture) {
                members.Member("image", picturePath);
            }
            WriteReport(members, report, false);
        });
    } else if (file != "-") {
        console.Print("{} into {}\n", Printable(job), Printable(file));
        WriteReport(console, report, false);
    }
}

}  // namespace cqsurvey::cqjob
