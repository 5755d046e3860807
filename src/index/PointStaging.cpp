#include "index/PointStaging.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace cqsurvey {

PointStaging::Named::Named(CqHandle point, const NameKey& key) noexcept
    : handle(point), number(key.number), length(static_cast<std::uint16_t>(key.prefix.size())) {
    key.prefix.copy(units.data(), length);
}

PointStaging::PointStaging(ViewSetting setting) : m_content{std::move(setting), {}, {}} {}

void PointStaging::Reserve(std::size_t count) {
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            m_named.reserve(count);
            break;
        case ViewSetting::SortKey::Code:
            m_coded.reserve(count);
            break;
        case ViewSetting::SortKey::Record:
            m_handles.reserve(count);
            break;
    }
}

void PointStaging::Stage(CqHandle handle, const std::byte* record) {
    const ViewSetting& setting = m_content.setting;
    if (!setting.Admits(record)) {
        return;
    }
    switch (setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            m_named.emplace_back(handle, MakeNameKey(StoredPointName(record).View()));
            break;
        case ViewSetting::SortKey::Code:
            m_coded.push_back({handle, PointLayout::Get<"FeatureCode">(record)});
            break;
        case ViewSetting::SortKey::Record:
            m_handles.push_back(handle);
            break;
    }
    m_content.entities.Insert(PointLayout::Get<"EntityIndex">(record));
}

void PointStaging::SortByName() {
    // Names come in runs, which merging makes use of.
    std::reverse(m_named.begin(), m_named.end());
    std::stable_sort(m_named.begin(), m_named.end(),
                     [&setting = m_content.setting](const Named& a, const Named& b) {
                         return setting.CompareNames(a.Key(), b.Key()) < 0;
                     });
}

bool PointStaging::DifferencesWrap() const noexcept {
    const auto [lowest, highest] =
        std::minmax_element(m_coded.begin(), m_coded.end(),
                            [](const Coded& a, const Coded& b) { return a.code < b.code; });
    return lowest != m_coded.end() &&
           std::int64_t{highest->code} - lowest->code > std::numeric_limits<std::int32_t>::max();
}

void PointStaging::SortByCode() {
    if (DifferencesWrap()) {
        InsertByWrappingCode();
        return;
    }
    std::sort(m_coded.begin(), m_coded.end(),
              [&setting = m_content.setting](const Coded& a, const Coded& b) {
                  const std::int32_t comparison = setting.CompareCodes(a.code, b.code);
                  return comparison != 0 ? comparison < 0 : a.handle > b.handle;
              });
}

void PointStaging::InsertByWrappingCode() {
    // Where a point comes to stand depends on the entries that its search happens to meet.
    HandleSequence order;
    for (std::uint32_t i = 0; i < m_coded.size(); ++i) {
        const std::uint32_t place = order.CountPreceding([&](std::uint32_t entry) {
            return m_content.setting.CompareCodes(m_coded[i].code, m_coded[entry].code) >= 1;
        });
        order.Insert(place, i);
    }
    std::vector<Coded> ordered;
    ordered.reserve(m_coded.size());
    for (std::uint32_t i = 0; i < order.Size(); ++i) {
        ordered.push_back(m_coded[order.At(i)]);
    }
    m_coded = std::move(ordered);
}

ViewContent PointStaging::Finish() {
    const auto takeHandles = [this](const auto& staged) {
        m_handles.reserve(staged.size());
        for (const auto& point : staged) {
            m_handles.push_back(point.handle);
        }
    };
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            SortByName();
            takeHandles(m_named);
            break;
        case ViewSetting::SortKey::Code:
            SortByCode();
            takeHandles(m_coded);
            break;
        case ViewSetting::SortKey::Record:
            if (m_content.setting.IsReversed()) {
                std::reverse(m_handles.begin(), m_handles.end());
            }
            break;
    }
    m_content.points = HandleSequence(m_handles);
    return std::move(m_content);
}

}  // namespace cqsurvey
