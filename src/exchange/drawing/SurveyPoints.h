#pragma once

#include <cstdint>

#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/exchange/Import.h"
#include "exchange/PointNames.h"
#include "exchange/drawing/Drawing.h"
#include "exchange/drawing/Extras.h"

namespace cqsurvey::exchange {

/// What is known of a survey point besides its place.
struct PointDetails {
    CString name;
    std::int32_t code = 0;
    CString description;
    bool noHeight = false;
    CString group{};  ///< empty: that of the options
};

/// Records the survey points of a file: cuts names that are too long, and does with a name that
/// the job already has what the options say. Groups that the job does not have are added.
class SurveyPoints {
 public:
    /// `group` is that of points that name none; empty: the job's current group. Throws
    /// ExchangeError when it cannot be added.
    SurveyPoints(Drawing& drawing, DrawingReport& report, Duplicates duplicates,
                 SurveyCoordType origin, const CString& group, const std::string& jobName);

    /// Records one point; of `extras`, ORIGIN and FLAGS.
    DrawingOutcome Add(const Style& style, Vec3 at, const PointDetails& details,
                       const Extras& extras);

    /// The entity of the point that was recorded last; 0 when the last one was not.
    [[nodiscard]] CqHandle GetLastEntity() const;

    /// Names that the job does not have.
    [[nodiscard]] PointNames& GetNames() { return m_names; }

 private:
    void UseGroup(const CString& group);

    Drawing& m_drawing;
    DrawingReport& m_report;
    Duplicates m_duplicates;
    SurveyCoordType m_origin;
    PointNames m_names;
    CString m_group;
    CqHandle m_last = 0;
};

}  // namespace cqsurvey::exchange
