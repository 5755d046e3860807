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

/// One thing that a check has found in a job.
struct CqJobFinding {
    enum class Kind : std::uint8_t {
        Fault,  ///< damage: no operation of the library leaves it
        Note    ///< left by operations, by design, and perhaps worth knowing
    };

    Kind kind;
    /// The table or file of the job concerned, such as "_EntityData" or "Settings.ini"; empty for a
    /// page of the job's file.
    std::string table;
    /// The record or page concerned, 0 when it is not a single one.
    CqHandle record;
    /// What was found, one English sentence.
    std::string text;
};

/// Checks in a whole open job everything that its operations rely on. Points and survey-point
/// entities name each other. The chain runs through every entity once in both directions, between
/// the head and the tail that its header names. Every entity has a layer, and a record of its type
/// that no other entity has. Vertices follow their polyline. Links tie survey points to vertices.
/// Texts can be read. Names are unique. The extents hold every entity. Every page of the file
/// holds what was written to it. The settings can be read and have their two fixed sections.
///
/// What operations leave behind by design is a note and no fault: an entity whose layer was
/// deleted, a point in a group that does not exist, a link whose point or vertex was deleted, a
/// polyline of less than two vertices; names that became equal when they were cut to their length;
/// a fixed setting that was removed or has a value outside its range, settings in another code
/// page, and damaged settings that were kept.
///
/// The check only reads. With a damaged job, too, it comes to an end and does not throw.
class CQSURVEY_API CqJobCheck {
 public:
    /// Called for each look at a record, with the number of looks so far and about how many there
    /// will be. A record may need several.
    using Progress = std::function<void(std::uint64_t done, std::uint64_t whole)>;

    /// Keeps at most `maxFindings` findings of each kind and counts the rest.
    explicit CqJobCheck(CqSurveyDB& db, std::size_t maxFindings = 1000,
                        const Progress& progress = {});

    /// Faults and notes, in the order in which they were found.
    [[nodiscard]] const std::vector<CqJobFinding>& GetFindings() const { return m_findings; }

    /// The number of all faults, including those that were not kept.
    [[nodiscard]] std::size_t GetCount() const { return m_faults; }

    /// The number of all notes, including those that were not kept.
    [[nodiscard]] std::size_t GetNoteCount() const { return m_notes; }

    /// How many single conditions were checked.
    [[nodiscard]] std::uint64_t GetChecks() const { return m_checks; }

 private:
    void CheckPoints(Job& job);
    void CheckEntities(Job& job);
    void CheckChain(Job& job);
    void CheckMemos(Job& job);
    void CheckLinks(Job& job);
    void CheckTie(Job& job, CqHandle link, CqHandle entity, std::uint16_t type, const char* what);
    void CheckLayersAndGroups(Job& job);
    void CheckExtents(Job& job);
    void CheckPages(Job& job);
    void CheckSettings(Job& job);

    /// Calls `visit` for the number and the bytes of each record in record order.
    template <class Table, class Visit>
    void ForEach(Table& table, Visit&& visit);

    /// Counts a look at a record.
    void Look();

    /// Counts a condition; returns it. When it does not hold, that is a fault, and the text is
    /// asked for.
    template <class Text>
    bool Expect(bool condition, const char* table, CqHandle record, Text&& text);
    /// The same, but the finding is of this kind.
    template <class Text>
    bool ExpectOr(CqJobFinding::Kind kind, bool condition, const char* table, CqHandle record,
                  Text&& text);

    const Progress* m_progress = nullptr;
    std::uint64_t m_looks = 0;
    std::uint64_t m_allLooks = 0;
    std::size_t m_maxFindings;
    std::size_t m_faults = 0;
    std::size_t m_notes = 0;
    std::uint64_t m_checks = 0;
    std::vector<CqJobFinding> m_findings;
};

}  // namespace cqsurvey
