#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "cqsurvey/Types.h"
#include "index/HandleSequence.h"
#include "index/HandleSet.h"
#include "index/PointRecords.h"
#include "index/ViewSetting.h"

namespace cqsurvey {

/// The difference of two feature codes as it is compared: in 32 bits that wrap around, turned round
/// for a descending order.
[[nodiscard]] std::int32_t CompareCodes(std::int32_t a, std::int32_t b, bool descending) noexcept;

/// The codes seen in a view.
class CodeSpan {
 public:
    void Add(std::int32_t code) noexcept;
    /// Whether some of the codes differ by more than 32 bits hold, so that their wrapping
    /// differences order nothing.
    [[nodiscard]] bool Wraps() const noexcept;

 private:
    bool m_any = false;
    std::int32_t m_lowest = 0;
    std::int32_t m_highest = 0;
};

/// The content of a view.
struct ViewContent {
    ViewSetting setting;
    HandleSequence points;
    /// The points' survey-point entities.
    HandleSet entities;
    CodeSpan codes;
};

/// Gathers the points of a view that is rebuilt, and puts them in the order in which they would
/// stand had each been inserted by itself: among equal ones the last record comes first.
class PointStaging {
 public:
    /// `records` is asked for the points' names while they are sorted.
    PointStaging(ViewSetting setting, const PointRecords& records);

    void Reserve(std::size_t count);

    /// Stages the point if the setting admits it. Called in record order.
    void Stage(CqHandle handle, const std::byte* record);

    /// What was gathered. The staging is over.
    [[nodiscard]] ViewContent Finish();

 private:
    using Entry = HandleSequence::Entry;

    void StageByName(CqHandle handle, const std::byte* record);
    void SortNames(std::vector<Entry>::iterator first, std::vector<Entry>::iterator last,
                   std::uint32_t round) const;
    void SortByName();
    void SortByCode();
    void InsertByWrappingCode();

    ViewContent m_content;
    const PointRecords& m_records;
    std::vector<Entry> m_staged;
    /// Of each point staged, when the view is sorted by code.
    std::vector<std::int32_t> m_codes;
    std::optional<StoredPointName> m_lastName;
    bool m_eachBehindLast = true;
    bool m_noneBehindLast = true;
};

}  // namespace cqsurvey
