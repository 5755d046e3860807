#pragma once

#include <cstddef>

#include "cqsurvey/CqCodeTable.h"
#include "cqsurvey/Export.h"

namespace cqsurvey {

class CqSurveyDB;

/// The code table of an open job, kept in a settings section of its own, one key for each row:
///
///     [CODES]
///     Words=numbers
///     1=EP,12,Road,7,0,line,,0,,
///     2=TREE*,40,Trees,3,,point,deciduous,4,{text},
///
/// The columns are those of CqCode in their order; an empty colour or line is that of the layer. A
/// comma, a bracket, "%", a blank at an end, and everything outside of ASCII is written as "%" and
/// the four hexadecimal digits of its UTF-16 code unit.
///
/// The object keeps nothing but the job, which must outlive it.
class CQSURVEY_API CqJobCodes {
 public:
    static constexpr const char16_t* kSection = u"CODES";
    static constexpr const char16_t* kWordsKey = u"Words";

    explicit CqJobCodes(CqSurveyDB& db) : m_db(db) {}

    /// The job's table; an empty one when it has none. Rows that make no sense, as after an edit by
    /// hand, are left out; `damaged` becomes their number when it is not null.
    [[nodiscard]] CqCodeTable Get(std::size_t* damaged = nullptr) const;

    /// Replaces the job's table; an empty one without words removes it. Returns 1, or 0 with the
    /// settings unchanged when they would become too long or cannot be written. Throws as
    /// CqSurveyDB::WriteSettingsString.
    int Set(const CqCodeTable& table);

    /// The height of texts whose code has no size: 2 mm on paper at the job's map scale, in its
    /// unit of length. A job without a unit counts as one in metres.
    [[nodiscard]] double GetTextHeight() const;

 private:
    CqSurveyDB& m_db;
};

}  // namespace cqsurvey
