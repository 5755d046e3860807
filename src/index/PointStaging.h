#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "cqsurvey/Types.h"
#include "index/HandleSequence.h"
#include "index/HandleSet.h"
#include "index/NameKey.h"
#include "index/PointRecords.h"
#include "index/ViewSetting.h"

namespace cqsurvey {

/// The content of a view.
struct ViewContent {
    ViewSetting setting;
    HandleSequence points;
    /// The points' survey-point entities.
    HandleSet entities;
    /// Whether an entry may stand where its present values do not belong.
    bool isStale = false;
};

/// Gathers the points of a view that is rebuilt, and puts them in the order in which they would
/// stand had each been inserted by itself: an entry goes in front of all that it equals, so among
/// equal ones the last record comes first.
///
/// Each point is noted with what it is sorted by, and one sort orders them:
///
///     (P 10, 1) (P 2, 2) (A, 3) (P 02, 4)   ->   (A, 3) (P 02, 4) (P 2, 2) (P 10, 1)
///
/// Only codes that lie further apart than 31 bits have no order to sort by, since their difference
/// wraps. Those points are inserted one by one.
class PointStaging {
 public:
    explicit PointStaging(ViewSetting setting);

    void Reserve(std::size_t count);

    /// Stages the point if the setting admits it. Called in record order.
    void Stage(CqHandle handle, const std::byte* record);

    /// What was gathered. The staging is over.
    [[nodiscard]] ViewContent Finish();

 private:
    /// A point by its name. The key's prefix is kept here, since a key only looks into a name.
    struct Named {
        Named(CqHandle point, const NameKey& key) noexcept;
        [[nodiscard]] NameKey Key() const noexcept {
            return {std::u16string_view(units.data(), length), number};
        }

        CqHandle handle;
        std::int32_t number;
        std::uint16_t length;
        std::array<char16_t, StoredPointName::Type::kCapacity> units;
    };
    struct Coded {
        CqHandle handle;
        std::int32_t code;
    };

    [[nodiscard]] bool DifferencesWrap() const noexcept;
    void SortByName();
    void SortByCode();
    void InsertByWrappingCode();

    ViewContent m_content;
    // The points staged, in the one that the setting sorts by.
    std::vector<Named> m_named;
    std::vector<Coded> m_coded;
    std::vector<CqHandle> m_handles;
};

}  // namespace cqsurvey
