#pragma once

#include <array>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

class CqSurveyDB;

/// What the title block of a printed plan says about an open job, kept as settings in a section of
/// its own:
///
///     [TITLE]
///     Title=Upper Mill Road
///     Client=County Roads
///     DrawingNumber=1207-03
///
/// The texts are the user's own and mean nothing to the library.
///
/// The object keeps nothing but the job, which must outlive it.
class CQSURVEY_API CqJobTitle {
 public:
    static constexpr const char16_t* kSection = u"TITLE";
    static constexpr const char16_t* kTitle = u"Title";
    static constexpr const char16_t* kClient = u"Client";
    static constexpr const char16_t* kPlace = u"Place";
    static constexpr const char16_t* kSurveyedBy = u"SurveyedBy";
    static constexpr const char16_t* kDrawnBy = u"DrawnBy";
    static constexpr const char16_t* kDate = u"Date";
    static constexpr const char16_t* kDrawingNumber = u"DrawingNumber";
    /// What the heights of the points refer to.
    static constexpr const char16_t* kHeightSystem = u"HeightSystem";

    /// The keys, in the order in which a title block shows them.
    static constexpr std::array kKeys{kTitle,   kClient, kPlace,         kSurveyedBy,
                                      kDrawnBy, kDate,   kDrawingNumber, kHeightSystem};

    explicit CqJobTitle(CqSurveyDB& db) : m_db(db) {}

    /// The text of one of the keys; empty when the job states none.
    [[nodiscard]] CString Get(const CString& key) const;

    /// States the text of one of the keys; an empty one removes it. Returns 1, or 0 with the
    /// settings unchanged when the key is none of kKeys, when the text does not fit on one line of
    /// the settings file as it is, or when they cannot be written. Throws as
    /// CqSurveyDB::WriteSettingsString.
    int Set(const CString& key, const CString& text);

 private:
    CqSurveyDB& m_db;
};

}  // namespace cqsurvey
