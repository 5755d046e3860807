#include "cqjob/gis/GisExchange.h"

#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <fstream>
#include <string_view>

#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/OutputFile.h"
#include "cqjob/ScratchFolder.h"
#include "cqjob/drawing/DrawingFormat.h"
#include "cqjob/gis/GdalProgram.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

bool IsDatabase(const std::string& target) {
    return target.starts_with("PG:");
}

SVDB_INFORMATION CountOf(const std::string& job) {
    CqSurveyDB db;
    OpenToRead(db, job);
    SVDB_INFORMATION info;
    constexpr std::uint32_t kAll = 0x1FF;
    (void)CqSurveyDB::GetDBInformation(kAll, CString(), info, &db);
    return info;
}

void Copy(const std::string& from, OutputFile& to) {
    constexpr std::size_t kPiece = 1U << 20U;
    std::ifstream source(from, std::ios::binary);
    std::string piece(kPiece, '\0');
    while (source) {
        source.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        to.Write(std::string_view(piece).substr(0, static_cast<std::size_t>(source.gcount())));
    }
    if (!source.eof()) {
        throw Failure(from, "cannot be read");
    }
}

/// The layers to import, in an order in which the job comes out the same: its layers before what is
/// on them, and polylines before their vertices. None stands for all that GDAL lists.
///
/// What comes from a job has its tables. A file has nothing to do with other things, so what else
/// is in it comes too; a database has.
std::vector<std::string> LayersToImport(const GdalProgram& program, const std::string& source) {
    std::vector<std::string> layers;
    for (const char* own : {"layers", "groups", "settings", "points", "polylines", "vertices",
                            "texts", "circles", "bitmaps", "background"}) {
        if (program.HasLayer(source, own)) {
            layers.emplace_back(own);
        }
        // The first three are those that nobody else has together.
        if (std::string_view(own) == "settings" && layers.size() < 3) {
            return {};
        }
    }
    for (const std::string& listed : program.ListLayers(source)) {
        if (!IsDatabase(source) &&
            std::find(layers.begin(), layers.end(), listed) == layers.end()) {
            layers.push_back(listed);
        }
    }
    return layers;
}

/// What went over, for people or for programs.
void Tell(Console& console, const std::string& job, const std::string& other, bool json,
          const SVDB_INFORMATION& after, const SVDB_INFORMATION& before) {
    const int points = after.numPoints - before.numPoints;
    const int polylines = after.numPlines - before.numPlines;
    const int texts = after.numTexts - before.numTexts;
    const int circles = after.numCircles - before.numCircles;
    if (json) {
        JsonWriter writer(console);
        writer.Object([&] {
            writer.Member("job", job);
            writer.Member("file", other);
            writer.Member("points", points);
            writer.Member("polylines", polylines);
            writer.Member("texts", texts);
            writer.Member("circles", circles);
        });
        return;
    }
    console.Say("{}, {}, {}, {} into {}\n", Count(static_cast<std::size_t>(points), "point"),
                Count(static_cast<std::size_t>(polylines), "polyline"),
                Count(static_cast<std::size_t>(texts), "text"),
                Count(static_cast<std::size_t>(circles), "circle"), Printable(other));
}

}  // namespace

bool GisExchange::IsAsked(const std::string& target) {
    return IsDatabase(target) || FindEnding(target) == ".gpkg";
}

void GisExchange::Export(Console& console, const std::string& job, const std::string& target,
                         bool replace, bool json) {
    const SVDB_INFORMATION info = CountOf(job);
    if (IsDatabase(target)) {
        std::vector<std::string> arguments{"-q", "-f", "PostgreSQL", target, job};
        if (replace) {
            arguments.insert(arguments.begin(), "-overwrite");
        }
        GdalProgram().Run(arguments);
    } else {
        RequireOtherFile(target, job);
        OutputFile output(console, target, replace);
        const ScratchFolder scratch(target);
        const std::string made = scratch.PathOf("site.gpkg");
        GdalProgram().Run({"-q", "-f", "GPKG", made, job});
        Copy(made, output);
        output.Finish();
    }
    Tell(console, job, target, json, info, {});
}

void GisExchange::Import(Console& console, const std::string& job, const std::string& source,
                         const std::string& duplicates, bool json) {
    const SVDB_INFORMATION before = CountOf(job);
    const GdalProgram program;
    std::vector<std::string> arguments{"-q",
                                       "-update",
                                       "-ds_transaction",
                                       "-doo",
                                       "MAKE_LAYERS=YES",
                                       "-doo",
                                       "DUPLICATES=" + duplicates,
                                       job,
                                       source};
    for (std::string& layer : LayersToImport(program, source)) {
        arguments.push_back(std::move(layer));
    }
    program.Run(arguments);
    const SVDB_INFORMATION after = CountOf(job);
    Tell(console, job, json ? source : job, json, after, before);
}

}  // namespace cqsurvey::cqjob
