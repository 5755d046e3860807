#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/Types.h"
#include "cqsurvey/plan/Box.h"
#include "cqsurvey/plan/Export.h"
#include "cqsurvey/plan/PlotOptions.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::plan {

struct Plan;

/// What there is to say about a picture that was drawn.
struct PlotReport {
    double scale = 0.0;          ///< the 500 of 1 : 500
    bool holdsAll = true;        ///< false: part of the drawing lies outside the frame
    std::size_t drawn = 0;       ///< objects in the part that is shown, at least partly
    std::size_t lostLabels = 0;  ///< labels that found no room
    int sheets = 1;              ///< pages, the key plan included
    /// English sentences, one for each thing that could not be drawn as it is in the job.
    std::vector<std::string> notes;
};

/// The drawing of a job: read once, drawn any number of times. A picture is a page with north up,
/// or several of a plan that is divided. It has the map in its frame with a grid, below it a legend
/// of the signs in use, and a title block with the heading, the extents and the number of objects
/// of what is shown, a scale bar, a north arrow, and what the job says about itself (CqJobTitle,
/// CqJobSystem). Paper smaller than 100 x 80 mm has only the map.
///
/// Each point has the symbol that the job's code table gives the word at the head of its
/// description, or else its code's number (CqJobCodes); without one, it is a cross. Symbols, labels
/// and lines have a size on paper. A text that the frame would cut is moved inside when its place
/// is inside, and left out otherwise; a note says so. An SVG has a group for each layer, with its
/// name, and its texts are texts, as those of a PDF.
///
/// CqSurveyDB.h says what the numbers of colours, line types and alignments mean; line type 256,
/// like colour 256, is that of the layer. A colour with too little contrast to the background is
/// drawn darker, or brighter on a dark one: lines and symbols have 3 to 1, letters 3.5 to 1. A
/// layer or an entity with a negative colour is hidden. Of the settings, Mapscale may be the scale
/// (PlotOptions::scale), and SiPointSize is the size of a cross in 1/72 inch. The scale is true on
/// paper in the job's unit of length (CqJobSystem); without a unit, it is that of a job in metres,
/// and the scale bar names no unit.
class CQSURVEY_PLAN_API PlanDrawing {
 public:
    /// Called with the number of entities read so far, or of objects drawn so far.
    using Progress = std::function<void(std::size_t done)>;
    /// Receives the bytes of a picture, piece by piece.
    using Sink = std::function<void(std::string_view bytes)>;

    /// Reads an open job, of all layers or only of `layers`. The job is not changed, and may be
    /// closed afterwards. Throws PlanFailure with error::kInvalidArgument when one of the layers
    /// does not exist, and with error::kDamaged when not every entity can be reached. Throws what
    /// the job and `progress` throw.
    explicit PlanDrawing(CqSurveyDB& db, const std::optional<CStringList>& layers = std::nullopt,
                         const Progress& progress = {});
    PlanDrawing(PlanDrawing&& other) noexcept;
    PlanDrawing& operator=(PlanDrawing&& other) noexcept;
    ~PlanDrawing();

    /// How many objects there are to draw; a polyline counts as one.
    [[nodiscard]] std::size_t GetCount() const;

    /// How many entities were left out because their own colour or that of their layer hides them.
    [[nodiscard]] std::size_t GetHidden() const;

    /// How many entities were left out because their position, radius or width is not finite.
    [[nodiscard]] std::size_t GetUnplaced() const;

    /// The box of all objects in job coordinates; the size of texts is estimated. Without objects,
    /// the box of the background image; empty when there is no image either.
    [[nodiscard]] Box GetExtents() const;

    /// Draws the plan and hands the picture to `sink`. Throws PlanFailure with
    /// error::kInvalidArgument, before `sink` is called, when FindFault finds a fault in the
    /// options, when there is no sheet of the number that they ask for, or more sheets than the
    /// format or a plan may have, and with error::kGeneralFailure when the picture could not be
    /// drawn. Throws what `sink` and `progress` throw. After a failure, do not use the bytes that
    /// `sink` received.
    PlotReport Draw(const PlotOptions& options, const Sink& sink,
                    const Progress& progress = {}) const;

 private:
    std::unique_ptr<const Plan> m_plan;
};

}  // namespace cqsurvey::plan
