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

/// How drawing a picture went.
struct PlotReport {
    double scale = 0.0;          ///< the 500 of 1 : 500
    bool holdsAll = true;        ///< false: part of what was to be drawn lies outside the frame
    std::size_t lostLabels = 0;  ///< labels that found no room
    /// What could not be drawn as the job has it, one sentence in English each.
    std::vector<std::string> notes;
};

/// What there is to draw of a job: read once, drawn any number of times. A picture is one page with
/// north up: the map in its frame with a grid, and below it a title block with the heading, the
/// job's extents, a scale bar and a north arrow. Paper of less than 100 x 80 mm has the map alone.
///
/// A layer or an entity with a negative colour is hidden. Colours are numbers of the usual palette
/// of 255, line types 0 continuous, 1 dashed, 2 dotted, 3 dash and dot, 4 dash and two dots, 5
/// long, 6 short, 7 long and short dashes; 256 is that of the layer. The alignments of a text are 0
/// left, 1 centre, 2 right, and 0 baseline, 1 bottom, 2 middle, 3 top; rotations are degrees. The
/// settings' Mapscale is the scale, SiPointSize the size of a point's symbol in 1/72 inch.
class CQSURVEY_PLAN_API PlanDrawing {
 public:
    /// Is told how many entities have been read so far, or how many objects drawn.
    using Progress = std::function<void(std::size_t done)>;
    /// Takes the bytes of a picture, piece by piece.
    using Sink = std::function<void(std::string_view bytes)>;

    /// Reads an open job. The job is not changed, and may be closed afterwards. With `layers` only
    /// what is on those layers is read. Throws PlanFailure with error::kInvalidArgument when one of
    /// them does not exist, and with error::kDamaged when not every entity can be reached. What the
    /// job and `progress` throw comes through.
    explicit PlanDrawing(CqSurveyDB& db, const std::optional<CStringList>& layers = std::nullopt,
                         const Progress& progress = {});
    PlanDrawing(PlanDrawing&& other) noexcept;
    PlanDrawing& operator=(PlanDrawing&& other) noexcept;
    ~PlanDrawing();

    /// How many objects there are to draw; a polyline counts as one.
    [[nodiscard]] std::size_t GetCount() const;

    /// How many entities were left out because their own colour or their layer's hides them.
    [[nodiscard]] std::size_t GetHidden() const;

    /// How many entities were left out because they have no finite place, radius or width.
    [[nodiscard]] std::size_t GetUnplaced() const;

    /// The box of all objects in job coordinates, that of texts estimated. Without objects, the box
    /// of the background image; empty when there is no image either.
    [[nodiscard]] Box GetExtents() const;

    /// Draws the plan and hands the picture to `sink`. Throws PlanFailure with
    /// error::kInvalidArgument when FindFault finds one in the options, before `sink` is called,
    /// and with error::kGeneralFailure when the picture could not be drawn. What `sink` and
    /// `progress` throw comes through. After a failure the bytes that `sink` was given are of no
    /// use.
    PlotReport Draw(const PlotOptions& options, const Sink& sink,
                    const Progress& progress = {}) const;

 private:
    std::unique_ptr<const Plan> m_plan;
};

}  // namespace cqsurvey::plan
