#include "tables/RecordNames.h"

namespace cqsurvey {

CqHandle RecordNames::Find(std::u16string_view name) const {
    const auto first = m_names.lower_bound({CString(name), 0});
    return first != m_names.end() && first->first == name ? first->second : 0;
}

void RecordNames::Enter(CqHandle record, CString name) {
    if (!m_built) {
        return;
    }
    try {
        m_names.emplace(std::move(name), record);
    } catch (...) {
        Forget();
        throw;
    }
}

void RecordNames::Remove(CqHandle record, const CString& name) {
    if (!m_built) {
        return;
    }
    m_names.erase({name, record});
}

}  // namespace cqsurvey
