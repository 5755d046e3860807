#pragma once

#include <optional>
#include <string>

#include "cqsurvey/CqLengthUnit.h"
#include "cqsurvey/exchange/CoordinateOperation.h"
#include "cqsurvey/exchange/CoordinateSystem.h"
#include "cqsurvey/exchange/ImportReport.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// Brings the points of a file into the coordinate system of a job: the positions by a
/// CoordinateOperation, the heights by their unit of length alone.
class PointProjection {
 public:
    /// From `system` into that of the open job. `heightUnit` is the unit of the heights in the
    /// file; without it, that of the system, and the metre for a geographic one. `optionPrefix` is
    /// put before options that a message names. Throws OptionError when the job has no projected
    /// system, and when there is no way into it.
    PointProjection(CqSurveyDB& db, const CoordinateSystem& system,
                    std::optional<CqLengthUnit> heightUnit, const std::string& optionPrefix);

    /// Changes the point; false, with the point unchanged, when its position cannot be projected.
    bool Apply(ImportedPoint& point);

    /// Tells the report which operation it was.
    void Report(ImportReport& report) const;

 private:
    struct Systems {
        CoordinateSystem from;
        CoordinateSystem to;
    };
    [[nodiscard]] static Systems Find(CqSurveyDB& db, const CoordinateSystem& system,
                                      const std::string& optionPrefix);

    Systems m_systems;
    CoordinateOperation m_operation;
    CqLengthUnit m_heightUnit = CqLengthUnit::Metre;
    CqLengthUnit m_jobUnit = CqLengthUnit::Metre;
};

/// Throws OptionError when the system that the open job states is one of latitudes and longitudes:
/// nothing can be recorded in it.
void RequirePlaneJob(CqSurveyDB& db);

}  // namespace cqsurvey::exchange
