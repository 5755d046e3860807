#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

class CqSurveyDB;
struct Job;

/// One thing in a job that is not as it must be.
struct CqJobFinding {
    std::string table;  ///< the job table concerned, such as "_EntityData"
    CqHandle record;    ///< its record, 0 when none in particular
    std::string text;   ///< what is wrong, one English sentence
};

/// Looks through a whole open job for what its operations rely on: points and survey-point entities
/// name each other; the chain runs both ways through every entity once, between the head and the
/// tail that its header names; every entity has its type's record to itself, and a layer; vertices
/// follow their polyline; links tie survey points to vertices; texts can be read; names are unique;
/// the extents hold every entity. What the operations leave behind by design, such as the link of a
/// deleted point, is no finding. Reads only; a damaged job makes it neither fail nor run on.
class CQSURVEY_API CqJobCheck {
 public:
    /// Is told with each look at a record how many there were and about how many there will be; a
    /// record may need more than one.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t whole)>;

    /// Keeps at most `maxFindings` findings and counts the rest.
    explicit CqJobCheck(CqSurveyDB& db, std::size_t maxFindings = 1000,
                        const Progress& progress = {});

    [[nodiscard]] const std::vector<CqJobFinding>& GetFindings() const { return m_findings; }

    /// All findings, the ones not kept included.
    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    /// How many single conditions were looked at.
    [[nodiscard]] std::uint64_t GetChecks() const { return m_checks; }

 private:
    void CheckPoints(Job& job);
    void CheckEntities(Job& job);
    void CheckChain(Job& job);
    void CheckMemos(Job& job);
    void CheckLinks(Job& job);
    void CheckLayersAndGroups(Job& job);
    void CheckExtents(Job& job);

    /// Calls `visit` for the number and the bytes of each record in record order.
    template <class Table, class Visit>
    void ForEach(Table& table, Visit&& visit);

    /// Counts a look at a record.
    void Look();

    /// Counts a condition; returns it. The text is asked for only when it does not hold.
    template <class Text>
    bool Expect(bool condition, const char* table, CqHandle record, Text&& text);

    const Progress* m_progress = nullptr;
    std::uint64_t m_looks = 0;
    std::uint64_t m_allLooks = 0;
    std::size_t m_maxFindings;
    std::size_t m_count = 0;
    std::uint64_t m_checks = 0;
    std::vector<CqJobFinding> m_findings;
};

}  // namespace cqsurvey
