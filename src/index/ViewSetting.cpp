#include "index/ViewSetting.h"

#include <algorithm>

namespace cqsurvey {

ViewSetting::ViewSetting(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter)
    : m_key(key),
      m_order(order),
      m_filter(filter),
      m_sortedCodes(filter.codes.begin(), filter.codes.end()) {
    std::sort(m_sortedCodes.begin(), m_sortedCodes.end());
}

ViewSetting::SortKey ViewSetting::SortedBy() const noexcept {
    switch (m_key) {
        case 0:
            return SortKey::Name;
        case 1:
            return SortKey::Code;
        default:
            return SortKey::Record;
    }
}

std::int32_t ViewSetting::CompareCodes(std::int32_t a, std::int32_t b) const noexcept {
    const std::uint32_t difference = static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b);
    return static_cast<std::int32_t>(IsDescending() ? 0U - difference : difference);
}

bool ViewSetting::AdmitsName(std::u16string_view name) const {
    const std::u16string_view from = m_filter.nameFrom;
    const std::size_t star = from.find(u'*');
    if (star != std::u16string_view::npos) {
        return name.substr(0, star) == from.substr(0, star);
    }
    const NameKey key = MakeNameKey(name);
    const NameKey lowest = MakeNameKey(from);
    if (!lowest.IsEmpty() && CompareNameKeys(lowest, key) > 0) {
        return false;
    }
    const NameKey highest = MakeNameKey(m_filter.nameTo);
    return highest.IsEmpty() || CompareNameKeys(highest, key) >= 0;
}

bool ViewSetting::AdmitsCode(std::int32_t code) const {
    return m_sortedCodes.empty() ||
           std::binary_search(m_sortedCodes.begin(), m_sortedCodes.end(), code);
}

bool ViewSetting::Admits(const std::byte* record) const {
    if ((m_filter.originMask & PointLayout::Get<"DataOrigin">(record)) == 0) {
        return false;
    }
    if (m_filter.group != 0) {
        const std::uint16_t group = PointLayout::Get<"GroupIndex">(record);
        const bool ungrouped = group == 0 && m_filter.withUngrouped != 0;
        if (!ungrouped && group != m_filter.group) {
            return false;
        }
    }
    if (!AdmitsCode(PointLayout::Get<"FeatureCode">(record))) {
        return false;
    }
    return (m_filter.nameFrom.empty() && m_filter.nameTo.empty()) ||
           AdmitsName(StoredPointName(record).View());
}

}  // namespace cqsurvey
