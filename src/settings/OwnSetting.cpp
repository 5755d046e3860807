#include "settings/OwnSetting.h"

#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

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

CString ReadOwnSetting(CqSurveyDB& db, const CString& section, const CString& key) {
    CString value;
    db.GetSettingsString(section, key, value, CString());
    return value;
}

int WriteOwnSetting(CqSurveyDB& db, const CString& section, const CString& key,
                    const CString& value) {
    if (ReadOwnSetting(db, section, key) == value) {
        return 1;
    }
    return Atomically(db.GetJob(), [&] {
        const bool added = db.AddSettingsSection(section) != 0;
        const int written = db.WriteSettingsString(section, key, value);
        CStringList keys;
        // A section that this call added, or has emptied, does not stay behind.
        if ((added || value.empty()) && db.GetSettingsKeyList(section, keys) != 0 && keys.empty()) {
            db.DeleteSettingsSection(section);
        }
        return written;
    });
}

}  // namespace cqsurvey
