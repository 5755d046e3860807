#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/ImportReport.h"

namespace cqsurvey::exchange {

/// What to do with a point whose name the job already has.
enum class Duplicates {
    Refuse,  ///< it is refused
    Skip,    ///< it is left out
    Rename,  ///< it is recorded under the first free name of P1_2, P1_3 ...
    /// The point of the job gets the new coordinates, code, description, group, flags and time, as
    /// far as the line says them, and the layer when the line or the options do. What it does not
    /// say stays: a line without height leaves the height.
    Update,
    /// The line is a check shot: the point of the job is compared with it and stays as it is.
    Check
};

/// How the points of a file go into a job.
struct ImportOptions {
    Duplicates duplicates = Duplicates::Refuse;

    /// The data origin of the points.
    SurveyCoordType origin{1};

    /// Used with Duplicates::Check: the largest distance in plan, and the largest difference of the
    /// heights, in the job's unit of length.
    double tolerance = 0.0;

    /// The layer of the points, at most 51 code units. It is added when the job does not have it.
    /// Empty: the job's current layer.
    CString layer;

    /// The layer of a point is called by its feature code; without a code, by the first word of its
    /// description; without either, it is as above. A line's own layer column comes before.
    bool layerFromCode = false;

    /// Record nothing, and report as if it had been recorded.
    bool dryRun = false;

    /// The group of the points, at most 19 code units. It is added when the job does not have it,
    /// and stays the job's current group. Empty: the job's current group.
    CString group;

    /// Record nothing when any line is refused.
    bool strict = false;

    /// What messages call the job. Empty: they do not name it. UTF-8 is shown as it is, other bytes
    /// as \x and their number.
    std::string jobName;

    /// Called with each note as it arises. Without a listener the report keeps so many of them.
    ImportReport::Listener note;
    std::size_t mostNotes = ImportReport::kMostNotes;

    /// Called after each line with the number of points recorded, the bytes read, and the size of
    /// the file when it is known. An exception that it throws ends the import, and the job is as it
    /// was before.
    std::function<void(std::uint64_t recorded, std::uint64_t bytes,
                       std::optional<std::uint64_t> size)>
        progress;
};

}  // namespace cqsurvey::exchange
