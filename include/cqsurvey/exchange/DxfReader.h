#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/LengthUnit.h"
#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// Which entities of a DXF file become survey points.
struct DxfPointRule {
    enum class Kind {
        Points,  ///< every POINT
        Layer,   ///< every POINT and inserted block on the layer `name`
        Block  ///< every insert of the block `name`; its attribute `attribute` is the point's name
    };
    Kind kind = Kind::Points;
    std::string name;       ///< in UTF-8; letter case does not matter
    std::string attribute;  ///< empty: NAME, or the first one when there is no NAME
};

/// How a DXF file is to be read.
struct DxfReadOptions {
    /// How far a polyline may be from the ellipse, spline or tilted arc that it replaces, in the
    /// job's unit; positive.
    double tolerance = 0.001;

    /// Take the outlines of SOLID, TRACE, 3DFACE and HATCH as closed polylines.
    bool fills = false;

    /// Which entities become survey points. Without a list: every POINT, and the blocks of
    /// DxfWriter. An empty list: none.
    std::optional<std::vector<DxfPointRule>> points;

    /// Name the points that have no name after the nearest text, if there is one within
    /// `nameReach` times its height. A text names one point.
    bool namesFromTexts = false;
    double nameReach = 5.0;
    std::string nameLayer;  ///< only texts on this layer; empty: all

    /// The folder of the picture that the first IMAGE shows, as a path of the host in UTF-8: that
    /// of the drawing. The picture becomes the background image of a job that has none. Of the path
    /// in the file only the last part is used, and a link is not followed. Empty: none is taken.
    std::string pictureFolder;

    /// The unit of the job, and that of the file instead of what the file says. The lengths of the
    /// file are scaled when both units are known; otherwise they are taken as they are.
    std::optional<LengthUnit> jobUnit;
    std::optional<LengthUnit> fileUnit;

    /// What to do with a point whose name the job already has, the data origin of the points, and
    /// their group as in ImportOptions.
    Duplicates duplicates = Duplicates::Refuse;
    SurveyCoordType origin{1};
    CString group;

    /// How many entities inserted blocks may draw. A few blocks, each inserted many times in the
    /// next, can stand for more than any machine can draw, and so can the arcs that curves are
    /// fitted with. A large entity counts as several: one
    /// for each 16 vertices that it draws, or for each KiB that it takes in memory.
    std::uint64_t mostDrawn = 20'000'000;

    /// How many bytes of memory one entity may take, its texts and its groups each, and how many
    /// all blocks together, and the tables. To draw an entity takes several times as much. A device
    /// with little memory may want less.
    std::size_t mostEntityBytes = std::size_t{1} << 26U;
    std::size_t mostBlockBytes = std::size_t{1} << 29U;

    /// What messages call the job. Empty: they do not name it.
    std::string jobName;

    /// Called after each entity with the number of entities, the bytes read, and the size of the
    /// file when it is known. An exception that it throws ends the import.
    std::function<void(std::uint64_t entities, std::uint64_t bytes,
                       std::optional<std::uint64_t> size)>
        progress;
};

/// Reads a drawing from a DXF file, in text or binary form, of R12 to R2018.
///
///     exchange::FileSource source("plan.dxf");
///     exchange::DxfReader reader(source, {});
///     const exchange::DrawingReport report = reader.Import(db);
///
/// Lines, polylines and arcs become polylines with true arcs; circles, texts and points become
/// what they are. Inserted blocks are drawn entity by entity. Ellipses, splines, and arcs that are
/// tilted or distorted, become polylines with arcs within a tolerance. Heights are kept. What was
/// not taken, or not exactly, is in the report with the reason.
///
/// Entities are read one at a time; only blocks are kept in memory.
class CQSURVEY_EXCHANGE_API DxfReader {
 public:
    /// The source must outlive the reader, and nothing else may read it. Throws OptionError when
    /// the tolerance or the reach is not a positive number.
    DxfReader(TextSource& source, DxfReadOptions options);
    DxfReader(const DxfReader&) = delete;
    DxfReader& operator=(const DxfReader&) = delete;

    /// Records the drawing in an open job, in one step. A layer that the job has keeps its colour
    /// and line, unless nothing has been drawn in the job so far. The current layer, colour and
    /// group stay as they were. Call Import once.
    ///
    /// Throws ExchangeError with the place when the file is no DXF file, is cut off, contradicts
    /// itself, or is too large in one of its parts; CqSurveyException with error::kInvalidArgument
    /// when the job has an open CqBatch, with error::kNoMount when no job is open; and whatever
    /// CqBatch::Commit and `progress` throw. The job is then as it was before.
    [[nodiscard]] DrawingReport Import(CqSurveyDB& db);

 private:
    TextSource& m_source;
    DxfReadOptions m_options;
};

}  // namespace cqsurvey::exchange
