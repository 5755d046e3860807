#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/LengthUnit.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// The versions of DXF that can be written.
enum class DxfVersion { R12, R2000, R2018 };

/// What becomes of an arc in a polyline whose vertices have different heights. DXF has curved
/// polylines at one height, and straight ones in space.
enum class DxfArcs {
    Break,  ///< it is broken into straight lines within the tolerance, their heights between those
            ///< of its ends
    Keep    ///< it is kept as a polyline of its own, at the height half way between its ends
};

/// How survey points are written.
enum class DxfPoints {
    Both,   ///< as a POINT, and a block with attributes upon it
    Point,  ///< as a POINT alone, which has no name
    Block   ///< as a block with attributes alone
};

/// The background image as a file beside the drawing. Programs that read DXF know PNG, JPEG and
/// BMP.
struct DxfImage {
    std::string fileName;      ///< without a folder
    std::uint32_t width = 0;   ///< in pixels
    std::uint32_t height = 0;  ///< in pixels
};

/// How a job is to be written as a DXF file.
struct DxfWriteOptions {
    DxfVersion version = DxfVersion::R2018;
    DxfArcs arcs = DxfArcs::Break;
    /// How far the lines may be from an arc that is broken, in the job's unit; positive.
    double tolerance = 0.001;
    DxfPoints points = DxfPoints::Both;
    /// Put each point with a feature code on a layer CODE_n of its own colour, instead of its own.
    bool layersByCode = false;
    /// The job's unit, which the file says unless the version is R12.
    std::optional<LengthUnit> unit = std::nullopt;
    /// The image's file, when there is one; not for R12.
    std::optional<DxfImage> image = std::nullopt;
    /// Called with the number of entities read. An exception that it throws ends the writing.
    std::function<void(std::size_t entities)> progress = nullptr;
};

/// Writes the points and the drawing of a job as a DXF file. DxfReader reads the same job back,
/// except for what the report says is lost.
///
///     exchange::DxfWriter writer(db, {}, [&](std::string_view bytes) { file << bytes; });
///     const exchange::DrawingReport report = writer.Write();
///
/// Polylines keep their arcs as bulges, layers their colours, line types and visibility, texts
/// their alignment. What DXF has no place for, such as feature codes of lines, is written as
/// extended data under the application name CQSURVEY.
class CQSURVEY_EXCHANGE_API DxfWriter {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// The open job must outlive the writer. Throws OptionError when the tolerance is not a
    /// positive number.
    DxfWriter(CqSurveyDB& db, DxfWriteOptions options, Sink sink);
    DxfWriter(const DxfWriter&) = delete;
    DxfWriter& operator=(const DxfWriter&) = delete;

    /// Hands the whole file to the sink, piece by piece. Throws ExchangeError when not every entity
    /// of the job can be reached, and whatever the sink and `progress` throw. Call it once.
    [[nodiscard]] DrawingReport Write();

 private:
    CqSurveyDB& m_db;
    DxfWriteOptions m_options;
    Sink m_sink;
};

}  // namespace cqsurvey::exchange
