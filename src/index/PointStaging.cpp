#include "index/PointStaging.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "index/NameKey.h"
#include "index/SortDigest.h"

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
    m_staged.reserve(count);
}

void PointStaging::Stage(CqHandle handle, const std::byte* record) {
    const ViewSetting& setting = m_content.setting;
    if (!setting.Admits(record)) {
        return;
    }
    switch (setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            StageByName(handle, record);
            break;
        case ViewSetting::SortKey::Code: {
            const std::int32_t code = PointLayout::Get<"FeatureCode">(record);
            m_content.codes.Add(code);
            m_codes.push_back(code);
            m_staged.push_back({handle, DigestOfCode(code)});
            break;
        }
        case ViewSetting::SortKey::Record:
            m_staged.push_back({handle, {}});
            break;
    }
    m_content.entities.Insert(PointLayout::Get<"EntityIndex">(record));
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
    m_staged.push_back({handle, DigestOfName(key)});
}

void PointStaging::SortNames(std::vector<Entry>::iterator first, std::vector<Entry>::iterator last,
                             std::uint32_t round) const {
    std::sort(first, last,
              [descending = m_content.setting.IsDescending()](const Entry& a, const Entry& b) {
                  if (a.digest != b.digest) {
                      return descending ? a.digest > b.digest : a.digest < b.digest;
                  }
                  return a.handle > b.handle;
              });
    for (auto run = first; run != last;) {
        const SortDigest digest = run->digest;
        const auto end =
            std::find_if(run, last, [&](const Entry& entry) { return entry.digest != digest; });
        if (end - run > 1 && !digest.IsExact()) {
            // The digests of what comes behind in the names order the run.
            for (auto entry = run; entry != end; ++entry) {
                const StoredPointName name(m_records.Peek(entry->handle));
                NameKey rest = MakeNameKey(name.View());
                for (std::uint32_t i = 0; i <= round; ++i) {
                    rest = RestOfName(rest);
                }
                entry->digest = DigestOfName(rest);
            }
            SortNames(run, end, round + 1);
            for (auto entry = run; entry != end; ++entry) {
                entry->digest = digest;
            }
        }
        run = end;
    }
}

void PointStaging::SortByName() {
    if (m_noneBehindLast) {
        std::reverse(m_staged.begin(), m_staged.end());
    } else if (!m_eachBehindLast) {
        SortNames(m_staged.begin(), m_staged.end(), 0);
    }
}

void PointStaging::SortByCode() {
    if (m_content.codes.Wraps()) {
        InsertByWrappingCode();
        return;
    }
    std::sort(m_staged.begin(), m_staged.end(),
              [descending = m_content.setting.IsDescending()](const Entry& a, const Entry& b) {
                  if (a.digest.high != b.digest.high) {
                      return descending ? a.digest.high > b.digest.high
                                        : a.digest.high < b.digest.high;
                  }
                  return a.handle > b.handle;
              });
}

void PointStaging::InsertByWrappingCode() {
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
        order.Insert(low, {i, {}});
    }
    std::vector<Entry> ordered(m_staged.size());
    for (std::uint32_t i = 0; i < ordered.size(); ++i) {
        ordered[i] = m_staged[order.At(i)];
    }
    m_staged = std::move(ordered);
}

ViewContent PointStaging::Finish() {
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            SortByName();
            break;
        case ViewSetting::SortKey::Code:
            SortByCode();
            break;
        case ViewSetting::SortKey::Record:
            if (m_content.setting.IsReversed()) {
                std::reverse(m_staged.begin(), m_staged.end());
            }
            break;
    }
    m_content.points.Assign(m_staged);
    m_staged = {};
    return std::move(m_content);
}

}  // namespace cqsurvey
