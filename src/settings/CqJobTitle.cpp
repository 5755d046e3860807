#include "cqsurvey/CqJobTitle.h"

#include <algorithm>

#include "cqsurvey/CqSurveyDB.h"
#include "settings/OwnSetting.h"

namespace cqsurvey {

CString CqJobTitle::Get(const CString& key) const {
    return ReadOwnSetting(m_db, kSection, key);
}

int CqJobTitle::Set(const CString& key, const CString& text) {
    const bool known = std::find(kKeys.begin(), kKeys.end(), key) != kKeys.end();
    return known && FitsOnLine(text) ? WriteOwnSetting(m_db, kSection, key, text) : 0;
}

}  // namespace cqsurvey
