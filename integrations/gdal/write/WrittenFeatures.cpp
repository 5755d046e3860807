#include "gdal/write/WrittenFeatures.h"

#include <algorithm>

namespace cqsurvey::gdal {

void WrittenFeatures::Add(GIntBig id, const std::vector<RecordedPart>& parts) {
    m_entries.push_back({id, m_parts.size(), parts.size()});
    m_parts.insert(m_parts.end(), parts.begin(), parts.end());
}

std::optional<std::size_t> WrittenFeatures::Find(GIntBig id) {
    // Made when it is asked for: most programs only write.
    for (; m_indexed < m_entries.size(); ++m_indexed) {
        m_byId[m_entries[m_indexed].id] = m_indexed;
    }
    const auto found = m_byId.find(id);
    return found != m_byId.end() ? std::optional(found->second) : std::nullopt;
}

void WrittenFeatures::UndoTransaction() {
    if (m_kept < m_entries.size()) {
        m_parts.resize(m_entries[m_kept].first);
        m_entries.resize(m_kept);
        m_byId.clear();
        m_indexed = 0;
    }
}

}  // namespace cqsurvey::gdal
