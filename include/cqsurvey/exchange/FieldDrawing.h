#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cqsurvey/CqCodeTable.h"
#include "cqsurvey/exchange/CodeReport.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// The order in which points follow each other along a line.
enum class PointSequence {
    Recorded,  ///< as they were recorded
    Names      ///< by their names, P2 before P10
};

struct DrawOptions {
    /// The code table. Nothing: the job's own.
    std::optional<CqCodeTable> codes{};

    /// Keep `codes` in the job as its own table, with the words that are used.
    bool keepCodes = false;

    /// The words that control figures, instead of those of the table: a preset, "words" or
    /// "numbers", and after it words of the crew's own, as in "words,begin=I,curve-point=C". An
    /// empty text is the preset "words".
    std::optional<std::string> words{};

    PointSequence sequence = PointSequence::Recorded;

    /// How far a shot of a curve may be from the circle that fits best, in the job's unit; 0 or
    /// more. Nothing: 0.05 m, or 0.05 when the job does not state its unit.
    std::optional<double> arcTolerance{};

    /// The longest segment of a figure, in the job's unit; above 0. When the next point is farther
    /// away, a figure begins there instead. Nothing: any length.
    std::optional<double> longest{};

    /// The height of texts whose code has no size, in the job's unit; positive. Nothing: 2 mm on
    /// paper at the job's map scale.
    std::optional<double> textHeight{};

    /// Replace what was drawn earlier.
    bool redraw = false;

    /// Called now and then with the points that have been read and their number. An exception that
    /// it throws ends the drawing.
    std::function<void(std::uint64_t done, std::uint64_t whole)> progress{};
};

/// Draws a job from the field codes in the descriptions of its points.
///
///     1  EP2 B         a line begins           4  EP2 EC E KERB1 B    the arc and the line end
///     2  EP2 BC        an arc begins           5  KERB1
///     3  EP2           the arc goes on         6  KERB1 CLS           the line goes back to 4
///
/// Lines become polylines whose vertices are tied to their points. Curves become true arcs: through
/// three shots the circle through them, through more the circle that fits best, and from two the
/// arc that goes on in the direction of the segment before. A curve whose shots are farther from
/// their circle than the tolerance is drawn straight, and the report says so.
///
/// The job keeps a list of what was drawn (CqDrawnList). Drawing again with `redraw` takes away
/// what is no longer right and adds what is new, so it changes nothing when no point was changed.
/// Entities that were edited since stay, and the report names them.
class CQSURVEY_EXCHANGE_API FieldDrawing {
 public:
    /// Throws OptionError when the words or one of the lengths make no sense.
    explicit FieldDrawing(DrawOptions options);

    /// Draws in an open job, in one step. The current layer, colour and group stay as they were.
    ///
    /// Throws ExchangeError when there is no code table, when the table that is to be kept does not
    /// fit into the job's settings, and when the job was drawn before and `redraw` is not asked
    /// for; CqSurveyException with error::kInvalidArgument when the job has an open CqBatch; and
    /// whatever CqBatch::Commit and `progress` throw. The job is then as it was before.
    [[nodiscard]] CodeReport Draw(CqSurveyDB& db) const;

 private:
    DrawOptions m_options;
};

}  // namespace cqsurvey::exchange
