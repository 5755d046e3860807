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

/// One fault in a job.
struct CqJobFinding {
    /// The job table concerned, such as "_EntityData"; empty for a page of the file.
    std::string table;
    /// The record or page concerned, 0 when it is not a single one.
    CqHandle record;
    std::string text;  ///< what is wrong, one English sentence
};

/// Checks in a whole open job everything that its operations rely on. Points and survey-point
/// entities name each other. The chain runs through every entity once in both directions, between
/// the head and the tail that its header names. Every entity has a layer, and a record of its type
/// that no other entity has. Vertices follow their polyline. Links tie survey points to vertices.
/// Texts can be read. Names are unique. The extents hold every entity. Every page of the file holds
/// what was written to it. What the operations leave behind by design, such as the link of a deleted
/// point, is not a finding. The check only reads. With a damaged job, too, it comes to an end and
/// does not throw.
class CQSURVEY_API CqJobCheck {
 public:
    /// Called for each look at a record, with the number of looks so far and about how many there
    /// will be. A record may need several.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t whole)>;

    /// Keeps at most `maxFindings` findings and counts the rest.
    explicit CqJobCheck(CqSurveyDB& db, std::size_t maxFindings = 1000,
                        const Progress& progress = {});

    [[nodiscard]] const std::vector<CqJobFinding>& GetFindings() const { return m_findings; }

    /// The number of all findings, including those that were not kept.
    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    /// How many single conditions were checked.
    [[nodiscard]] std::uint64_t GetChecks() const { return m_checks; }

 private:
    void CheckPoints(Job& job);
    void CheckEntities(Job& job);
    void CheckChain(Job& job);
    void CheckMemos(Job& job);
    void CheckLinks(Job& job);
    void CheckLayersAndGroups(Job& job);
    void CheckExtents(Job& job);
    void CheckPages(Job& job);

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
