#include "exchange/drawing/LengthScale.h"

#include <fmt/format.h>

#include "text/NumberText.h"

namespace cqsurvey::exchange {

void ScaleLengths(std::optional<LengthUnit> file, std::optional<LengthUnit> job,
                  DrawingReport& report) {
    if (file && job) {
        report.scale = *file == *job ? 1.0 : MetresOf(*file) / MetresOf(*job);
        if (report.scale != 1.0) {
            report.Note(fmt::format("lengths were scaled by {} from {} to {}",
                                    FormatNumber(report.scale), UnitWord(*file), UnitWord(*job)));
        }
    } else if (job) {
        report.Note(
            fmt::format("the file does not say a unit that is known; its lengths were assumed to "
                        "be in the job's unit, {}",
                        UnitWord(*job)));
    } else if (file) {
        report.Note(
            fmt::format("the file's unit is the {}; its lengths were taken as they are, since the "
                        "job's unit was not told",
                        UnitWord(*file)));
    } else {
        report.Note(
            "neither the file's unit nor the job's is known; lengths were taken as they are");
    }
}

}  // namespace cqsurvey::exchange
