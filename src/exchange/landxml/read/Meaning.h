#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/LandXmlReader.h"
#include "cqsurvey/exchange/LengthUnit.h"

namespace cqsurvey::exchange::landxml {

/// The unit of a linearUnit attribute; nothing for one that no job has.
[[nodiscard]] std::optional<LengthUnit> UnitOfLinear(std::string_view word);

/// What the coordinates of a file mean, against what those of the job mean. The first coordinate
/// decides: what the file says later comes too late.
class Meaning {
 public:
    Meaning(CqSurveyDB& db, const LandXmlReadOptions& options, DrawingReport& report);

    void SetUnit(std::string_view linear);
    void SetSystem(std::string_view epsg);

    /// Decides by what lengths are multiplied. An empty job that states nothing gets the file's
    /// unit and system. Throws OptionError when both state a system and the systems differ.
    void Decide();

    [[nodiscard]] bool IsDecided() const { return m_decided; }
    /// The unit of the job, as far as it is known.
    [[nodiscard]] std::optional<LengthUnit> GetJobUnit() const { return m_jobUnit; }

 private:
    void CompareSystems();

    CqSurveyDB& m_db;
    const LandXmlReadOptions& m_options;
    DrawingReport& m_report;
    std::optional<LengthUnit> m_jobUnit;
    std::string m_linear;
    std::string m_epsg;
    bool m_empty;
    bool m_decided = false;
};

}  // namespace cqsurvey::exchange::landxml
