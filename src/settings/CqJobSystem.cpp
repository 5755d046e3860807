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

/// False for a text that the settings file would give back otherwise: not all of it on one line,
/// blanks at its ends, or brackets that make the line a section.
bool FitsOnLine(const CString& text) {
    if (text.empty()) {
        return true;
    }
    const auto isBlank = [](char16_t c) { return c <= u' ' || c == u'\x7F'; };
    for (const char16_t c : text) {
        if (c < u' ' || c == u'\x7F') {
            return false;
        }
    }
    return !isBlank(text.front()) && !isBlank(text.back()) &&
           (text.find(u'[') == CString::npos || text.find(u']') == CString::npos);
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

int CqJobSystem::SetSystem(const CString& system) {
    return FitsOnLine(system) ? WriteOwnSetting(m_db, kSection, kSystemKey, system) : 0;
}

}  // namespace cqsurvey
