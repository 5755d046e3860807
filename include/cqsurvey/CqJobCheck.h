#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

class CqSurveyDB;

/// One thing in a job that is not as it must be.
struct CqJobFinding {
    std::string table;  ///< the job table concerned, such as "_EntityData"
    CqHandle record;    ///< its record, 0 when none in particular
    std::string text;   ///< what is wrong, one English sentence
};

/// Looks through a whole open job for what its operations rely on: points and survey-point entities
/// name each other, the chain runs both ways through every entity once between the head and the
/// tail that its header names, every entity has its type's record and a layer, names are unique.
/// Reads only; a damaged job makes it neither fail nor run on.
class CQSURVEY_API CqJobCheck {
 public:
    /// Keeps at most `maxFindings` findings and counts the rest.
    explicit CqJobCheck(CqSurveyDB& db, std::size_t maxFindings = 1000);

    [[nodiscard]] const std::vector<CqJobFinding>& GetFindings() const { return m_findings; }

    /// All findings, the ones not kept included.
    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    /// How many single conditions were looked at.
    [[nodiscard]] std::uint64_t GetChecks() const { return m_checks; }

 private:
    void CheckPoints(CqSurveyDB& db);
    void CheckChain(CqSurveyDB& db);
    void CheckEntities(CqSurveyDB& db);
    void CheckLayers(CqSurveyDB& db);
    void CheckGroups(CqSurveyDB& db);
    bool Expect(bool condition, const char* table, CqHandle record, const std::string& text);

    std::size_t m_maxFindings;
    std::size_t m_count = 0;
    std::uint64_t m_checks = 0;
    std::vector<CqJobFinding> m_findings;
};

}  // namespace cqsurvey
