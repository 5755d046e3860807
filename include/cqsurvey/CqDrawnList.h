#pragma once

#include <cstdint>
#include <vector>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

class CqSurveyDB;

/// An entity that a program has drawn, and what it looked like then.
struct CqDrawn {
    CqHandle handle = 0;
    std::uint64_t mark = 0;  ///< a digest of the entity, whose meaning the program chooses

    bool operator==(const CqDrawn&) const = default;
};

/// The list of what a program has drawn by itself in an open job, so that it can take that away
/// again and nothing else. A handle is never used for another entity, so the list stays true
/// whatever else is added or deleted. It is a file in the job, and goes with every copy of it.
///
/// The object keeps nothing but the job, which must outlive it.
class CQSURVEY_API CqDrawnList {
 public:
    static constexpr const char16_t* kPath = u":/Drawn.lst";

    explicit CqDrawnList(CqSurveyDB& db) : m_db(db) {}

    /// The list; empty when there is none. Throws CqSurveyException with error::kDamaged when the
    /// file is no such list.
    [[nodiscard]] std::vector<CqDrawn> Get() const;

    /// Replaces the list; an empty one removes the file. Does nothing when it is the list already.
    /// Throws as an operation of CqSurveyDB, with the list unchanged.
    void Set(const std::vector<CqDrawn>& list);

 private:
    CqSurveyDB& m_db;
};

}  // namespace cqsurvey
