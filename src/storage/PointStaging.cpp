#include "storage/PointStaging.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace cqsurvey {

std::int32_t CompareCodes(std::int32_t a, std::int32_t b, bool descending) noexcept {
    const std::uint32_t difference = static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b);
    return static_cast<std::int32_t>(descending ? 0U - difference : difference);
}

void CodeSpan::Add(std::int32_t code) noexcept {
    m_lowest = m_any ? std::min(m_lowest, code) : code;
    m_highest = m_any ? std::max(m_highest, code) : code;
    m_any = true;
}

bool CodeSpan::Wraps() const noexcept {
    return std::int64_t{m_highest} - m_lowest > std::numeric_limits<std::int32_t>::max();
}

PointStaging::PointStaging(ViewSetting setting, const PointRecords& records)
    : m_content{std::move(setting), {}, {}, {}}, m_records(records) {}

void PointStaging::Reserve(std::size_t count) {
    m_content.entities.Reserve(count);
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            m_named.reserve(count);
            break;
        case ViewSetting::SortKey::Code:
            m_codes.reserve(count);
            [[fallthrough]];
        case ViewSetting::SortKey::Record:
            m_handles.reserve(count);
            break;
    }
}

void PointStaging::Stage(CqHandle handle, const std::byte* record) {
    if (!m_content.setting.Admits(record)) {
        return;
    }
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            StageByName(handle, record);
            break;
        case ViewSetting::SortKey::Code: {
            const std::int32_t code = PointLayout::Get<"FeatureCode">(record);
            m_content.codes.Add(code);
            m_codes.push_back(code);
            m_handles.push_back(handle);
            break;
        }
        case ViewSetting::SortKey::Record:
            m_handles.push_back(handle);
            break;
    }
    m_content.entities.Insert(PointLayout::Get<"EntityIndex">(record));
}

std::uint64_t PointStaging::Units(const NameKey& key, std::size_t first) const noexcept {
    std::uint64_t units = 0;
    for (std::size_t i = first; i < first + 4; ++i) {
        units = units << 16 | (i < key.prefix.size() ? key.prefix[i] : 0);
    }
    return m_content.setting.IsDescending() ? ~units : units;
}

bool PointStaging::EndsPrefix(std::uint64_t units) const noexcept {
    const std::uint64_t last = m_content.setting.IsDescending() ? ~units : units;
    return (last & 0xFFFF) == 0;
}

void PointStaging::StageByName(CqHandle handle, const std::byte* record) {
    const StoredPointName name(record);
    const NameKey key = MakeNameKey(name.View());
    if (m_lastName && (m_eachBehindLast || m_noneBehindLast)) {
        const int comparison = CompareNameKeys(key, MakeNameKey(m_lastName->View()));
        const bool behind = (m_content.setting.IsDescending() ? -comparison : comparison) > 0;
        m_eachBehindLast = m_eachBehindLast && behind;
        m_noneBehindLast = m_noneBehindLast && !behind;
    }
    m_lastName = name;
    // The complement of a number falls as the number rises, and none is out of range.
    m_named.push_back(
        {Units(key, 0), m_content.setting.IsDescending() ? ~key.number : key.number, handle});
}

void PointStaging::SortNames(NamedPoints first, NamedPoints last, std::size_t firstUnit) const {
    const auto alike = [](const NamedPoint& a, const NamedPoint& b) { return a.units == b.units; };
    const bool allAlike =
        std::all_of(first, last, [&](const NamedPoint& point) { return alike(point, *first); });
    if (!allAlike || EndsPrefix(first->units)) {
        std::sort(first, last, [](const NamedPoint& a, const NamedPoint& b) {
            if (a.units != b.units) {
                return a.units < b.units;
            }
            return a.number != b.number ? a.number < b.number : a.handle > b.handle;
        });
    }
    for (auto run = first; run != last;) {
        const auto end = std::find_if_not(
            run, last, [&](const NamedPoint& point) { return alike(point, *run); });
        if (end - run > 1 && !EndsPrefix(run->units)) {
            for (auto point = run; point != end; ++point) {
                const StoredPointName name(m_records.Peek(point->handle));
                point->units = Units(MakeNameKey(name.View()), firstUnit + 4);
            }
            SortNames(run, end, firstUnit + 4);
        }
        run = end;
    }
}

std::vector<CqHandle> PointStaging::SortByName() {
    if (m_noneBehindLast) {
        std::reverse(m_named.begin(), m_named.end());
    } else if (!m_eachBehindLast) {
        SortNames(m_named.begin(), m_named.end(), 0);
    }
    std::vector<CqHandle> sorted(m_named.size());
    std::transform(m_named.begin(), m_named.end(), sorted.begin(),
                   [](const NamedPoint& point) { return point.handle; });
    return sorted;
}

std::vector<CqHandle> PointStaging::SortByCode() {
    if (m_content.codes.Wraps()) {
        return InsertByWrappingCode();
    }
    constexpr std::uint32_t kSign = 0x80000000;
    std::vector<std::uint64_t> keys(m_handles.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::uint32_t rising = static_cast<std::uint32_t>(m_codes[i]) ^ kSign;
        const std::uint32_t code = m_content.setting.IsDescending() ? ~rising : rising;
        keys[i] = std::uint64_t{code} << 32 | static_cast<std::uint32_t>(~m_handles[i]);
    }
    std::sort(keys.begin(), keys.end());
    std::transform(keys.begin(), keys.end(), m_handles.begin(),
                   [](std::uint64_t key) { return ~static_cast<std::uint32_t>(key); });
    return std::move(m_handles);
}

std::vector<CqHandle> PointStaging::InsertByWrappingCode() {
    // Where a point comes to stand depends on the entries that its search happens to meet.
    HandleSequence order;
    for (std::uint32_t i = 0; i < m_codes.size(); ++i) {
        std::uint32_t low = 0;
        std::uint32_t high = order.Size();
        while (low < high) {
            const std::uint32_t middle = (low + high) / 2;
            const std::int32_t entry = m_codes[order.At(middle)];
            if (CompareCodes(m_codes[i], entry, m_content.setting.IsDescending()) >= 1) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        order.Insert(low, i);
    }
    std::vector<CqHandle> sorted(m_handles.size());
    for (std::uint32_t i = 0; i < sorted.size(); ++i) {
        sorted[i] = m_handles[order.At(i)];
    }
    return sorted;
}

ViewContent PointStaging::Finish() {
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            m_content.points.Assign(SortByName());
            break;
        case ViewSetting::SortKey::Code:
            m_content.points.Assign(SortByCode());
            break;
        case ViewSetting::SortKey::Record:
            if (m_content.setting.IsReversed()) {
                std::reverse(m_handles.begin(), m_handles.end());
            }
            m_content.points.Assign(m_handles);
            break;
    }
    return std::move(m_content);
}

}  // namespace cqsurvey
