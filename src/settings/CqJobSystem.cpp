#include "cqsurvey/CqJobSystem.h"

#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "settings/OwnSetting.h"

namespace cqsurvey {

namespace {

/// The plane system of division 1 is EPSG:6669, and so on.
constexpr int kPlaneSystems = 6668;

bool IsDivision(int division) {
    return division >= limits::kLowestDivision && division <= limits::kHighestDivision;
}

}  // namespace

bool CqJobSystem::StatesSystem() const {
    return !ReadOwnSetting(m_db, kSection, kSystemKey).empty();
}

CString CqJobSystem::GetSystem() const {
    CString stated = ReadOwnSetting(m_db, kSection, kSystemKey);
    if (!stated.empty()) {
        return stated;
    }
    const int division = m_db.GetJCoordDivision();
    return IsDivision(division) ? FromUtf8("EPSG:" + std::to_string(kPlaneSystems + division))
                                : CString();
}

std::optional<CqLengthUnit> CqJobSystem::GetUnit() const {
    const CString stated = ReadOwnSetting(m_db, kSection, kUnitKey);
    if (!stated.empty()) {
        return FindLengthUnit(ToUtf8(stated));
    }
    return !StatesSystem() && IsDivision(m_db.GetJCoordDivision())
               ? std::optional(CqLengthUnit::Metre)
               : std::nullopt;
}

int CqJobSystem::SetUnit(std::optional<CqLengthUnit> unit) {
    return WriteOwnSetting(m_db, kSection, kUnitKey,
                           unit ? FromUtf8(GetUnitWord(*unit)) : CString());
}

std::optional<CqAngleForm> CqJobSystem::GetAngles() const {
    return FindAngleForm(ToUtf8(ReadOwnSetting(m_db, kSection, kAnglesKey)));
}

int CqJobSystem::SetAngles(std::optional<CqAngleForm> form) {
    return WriteOwnSetting(m_db, kSection, kAnglesKey,
                           form ? FromUtf8(GetAngleWord(*form)) : CString());
}

int CqJobSystem::SetSystem(const CString& system) {
    return FitsOnLine(system) ? WriteOwnSetting(m_db, kSection, kSystemKey, system) : 0;
}

}  // namespace cqsurvey
