#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "cqsurvey/Records.h"
#include "index/NameKey.h"
#include "index/PointRecords.h"

namespace cqsurvey {

/// What a view of the points is sorted by and which points it admits.
class ViewSetting {
 public:
    enum class SortKey { Name, Code, Record };

    /// Every point with one of the five low origin bits, by name, ascending.
    ViewSetting() : ViewSetting(0, 0, COORDFILTER{}) {}
    ViewSetting(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter);

    [[nodiscard]] std::uint16_t Key() const noexcept { return m_key; }
    [[nodiscard]] std::uint16_t Order() const noexcept { return m_order; }
    [[nodiscard]] const COORDFILTER& Filter() const noexcept { return m_filter; }

    [[nodiscard]] SortKey SortedBy() const noexcept;
    /// By name or code: the highest first.
    [[nodiscard]] bool IsDescending() const noexcept { return m_order == 1; }
    /// By record: the point entered last first. Any order but 0 does that, unlike IsDescending.
    [[nodiscard]] bool IsReversed() const noexcept { return m_order != 0; }

    /// Positive when a point with the name `a` goes behind one with the name `b`, negative when it
    /// goes in front of it, 0 when they are equal.
    [[nodiscard]] int CompareNames(const NameKey& a, const NameKey& b) const noexcept {
        return IsDescending() ? CompareNameKeys(b, a) : CompareNameKeys(a, b);
    }
    /// The same for feature codes, by their difference in 32 bits, which wraps around.
    [[nodiscard]] std::int32_t CompareCodes(std::int32_t a, std::int32_t b) const noexcept;

    /// Whether the point with these record bytes passes the filter.
    [[nodiscard]] bool Admits(const std::byte* record) const;

 private:
    [[nodiscard]] bool AdmitsName(std::u16string_view name) const;
    [[nodiscard]] bool AdmitsCode(std::int32_t code) const;

    std::uint16_t m_key;
    std::uint16_t m_order;
    COORDFILTER m_filter;
    std::vector<std::int32_t> m_sortedCodes;
};

}  // namespace cqsurvey
