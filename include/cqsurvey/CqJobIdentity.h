#pragma once

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

class CqSurveyDB;

/// The identity of an open job: a random UUID by which a job is known again, whatever its file is
/// called. It is a setting in a section of its own:
///
///     [IDENTITY]
///     Job=6f1c3d52-8a0e-4b57-9d0c-2f6f0c1b7a44
///
/// A copy of the file has the same identity. The library gives none by itself, so a job from
/// CqSurveyDB::CreateNew has none until an application calls Give.
///
/// The object keeps nothing but the job, which must outlive it.
class CQSURVEY_API CqJobIdentity {
 public:
    static constexpr const char16_t* kSection = u"IDENTITY";
    static constexpr const char16_t* kKey = u"Job";

    explicit CqJobIdentity(CqSurveyDB& db) : m_db(db) {}

    /// The UUID in lower case; empty when the job has none, or what it has is no UUID.
    [[nodiscard]] CString Get() const;

    /// Gives the job a new UUID unless it has one. Returns 1 when the job has one afterwards, and 0
    /// with the settings unchanged when they cannot be written. Throws as
    /// CqSurveyDB::WriteSettingsString.
    int Give();

    /// Makes `uuid` the job's identity; an empty text removes it. Returns 1, or 0 with the settings
    /// unchanged when the text is no UUID or they cannot be written. Throws as Give.
    int Set(const CString& uuid);

 private:
    CqSurveyDB& m_db;
};

}  // namespace cqsurvey
