#pragma once

#include <optional>

#include "cqsurvey/CqAngleForm.h"
#include "cqsurvey/CqLengthUnit.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

class CqSurveyDB;

/// What the coordinates of an open job mean: the unit of length, the coordinate reference system,
/// and how bearings are written. They are settings of the job, in a section of their own:
///
///     [COORDINATES]
///     LengthUnit=us-ft
///     System=EPSG:2230
///     Angles=dms
///
/// Without a stated system, a job whose coordinate division is 1 to 19 is in the plane system of
/// that number, EPSG:6669 to EPSG:6687, which is in metres. Nothing else is assumed: a job that
/// states nothing has no unit and no system. Stating either changes no coordinate.
///
/// The system is a text that this class does not look into. CoordinateSystem of the exchange
/// library finds out what it means.
///
/// The object keeps nothing but the job, which must outlive it.
class CQSURVEY_API CqJobSystem {
 public:
    static constexpr const char16_t* kSection = u"COORDINATES";
    static constexpr const char16_t* kUnitKey = u"LengthUnit";
    static constexpr const char16_t* kSystemKey = u"System";
    static constexpr const char16_t* kAnglesKey = u"Angles";

    explicit CqJobSystem(CqSurveyDB& db) : m_db(db) {}

    /// The unit that the job states; without one, the metre when GetSystem comes from the
    /// coordinate division. Nothing when neither says it, or when the setting is no word of a unit.
    [[nodiscard]] std::optional<CqLengthUnit> GetUnit() const;

    /// The system that the job states, such as "EPSG:2230"; without one, that of the coordinate
    /// division. Empty when neither says it.
    [[nodiscard]] CString GetSystem() const;

    /// True when the job states a system itself, so that the coordinate division does not count.
    [[nodiscard]] bool StatesSystem() const;

    /// The form of bearings that the job states; nothing when it states none, or no known one.
    [[nodiscard]] std::optional<CqAngleForm> GetAngles() const;

    /// States the unit; nothing removes the statement. Returns 1, or 0 with the settings unchanged
    /// when they cannot be written. Throws as CqSurveyDB::WriteSettingsString.
    int SetUnit(std::optional<CqLengthUnit> unit);

    /// States the system; an empty text removes the statement. Returns 1, or 0 with the settings
    /// unchanged when the text does not fit on one line of the settings file as it is, or when
    /// they cannot be written. Throws as CqSurveyDB::WriteSettingsString.
    int SetSystem(const CString& system);

    /// States the form of bearings; nothing removes the statement. Returns 1, or 0 with the
    /// settings unchanged when they cannot be written. Throws as CqSurveyDB::WriteSettingsString.
    int SetAngles(std::optional<CqAngleForm> form);

 private:
    CqSurveyDB& m_db;
};

}  // namespace cqsurvey
