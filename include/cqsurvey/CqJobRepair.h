#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// Something that could not be saved from a damaged job, or only in part.
struct CqJobLoss {
    std::string table;  ///< the job table concerned, such as "_PointData"; "" when it is a file
    CqHandle first;     ///< the first record concerned, 0 when it is not a record
    CqHandle last;      ///< the last one; 4294967295 when nobody can tell how many there were
    std::string text;   ///< what is lost, and what became of the rest; one English sentence
};

/// Makes a new job of everything that can be saved from a damaged one. The damaged file is only
/// read; it keeps every byte.
///
/// The file is read page by page, without the database that gives up at the first bad page. So
/// everything outside of the bad pages is saved: points, entities, layers, groups and links keep
/// their handles, also where the list of tables or an inner page of a table is lost. What other
/// records depended on is then made anew:
///
///     the entity chain            from what is left of it, each polyline with its vertices
///     a point without its entity  is kept with its name; its coordinates are those of a vertex
///                                 that it is tied to, or not-a-numbers
///     an entity without its data  is kept in its place, with neutral data: no name, radius 0
///     a polyline                  is kept as long as it has a vertex
///     a vertex without a place    is lost
///     layers and groups           that others name are made anew, with their number as a name
///     a setting that is lost      has the value that it has in a new job
///     an image                    is lost unless it is whole
///
/// A page that does not match its sum but still has the form of a page is saved, and its records
/// are listed, because some of their values may be wrong. Everything above is listed, too, and so
/// are the records of the bad pages. What cannot be known is listed as a range: the records from
/// `first` to `last` that there were. The new job passes CqJobCheck; should a fault remain, it is
/// listed, too.
class CQSURVEY_API CqJobRepair {
 public:
    /// Reads the job at `damaged` and makes one at `repaired`. Keeps at most `maxLosses` losses and
    /// counts the rest. Time and memory are in proportion to the file, whatever its bytes are.
    ///
    /// Throws CqSurveyException: error::kFileExists when anything exists at `repaired`,
    /// error::kNoVolume when nothing is at `damaged`, error::kDamaged when nothing of a job was
    /// found there, error::kNewerVersion when a newer version wrote it, error::kVolumeMounted while
    /// someone has it open for writing, error::kAccessDenied while a change that was cut short
    /// waits beside it to be undone (open it once for writing). A failure leaves nothing at
    /// `repaired`.
    CqJobRepair(const CString& damaged, const CString& repaired, std::size_t maxLosses = 1000);

    [[nodiscard]] const std::vector<CqJobLoss>& GetLosses() const { return m_losses; }

    /// The number of all losses, including those that were not kept.
    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    // What the new job holds.

    [[nodiscard]] std::size_t GetPoints() const { return m_points; }
    [[nodiscard]] std::size_t GetEntities() const { return m_entities; }
    [[nodiscard]] std::size_t GetDescriptions() const { return m_descriptions; }

 private:
    std::vector<CqJobLoss> m_losses;
    std::size_t m_count = 0;
    std::size_t m_points = 0;
    std::size_t m_entities = 0;
    std::size_t m_descriptions = 0;
};

}  // namespace cqsurvey
