#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "cqsurvey/Types.h"
#include "index/HandleSequence.h"
#include "index/HandleSet.h"
#include "index/PointRecords.h"
#include "index/PointStaging.h"
#include "index/ViewSetting.h"
#include "platform/ChangeLog.h"

namespace cqsurvey {

/// The points that the setting admits, in its order, and their survey-point entities. It follows
/// what it is told; a point whose group is edited stays in or out until the view is rebuilt.
///
/// Only handles are kept. A point's place is found by a binary search that compares stored records:
///
///     view     [ 4     5     3     2     1   ]        P9 is compared with P1, P10 and P2,
///     names      A     B     P1    P2    P10          and goes between P2 and P10
///
/// The same search serves where the entries are out of order, and must: an entry can be stale,
/// when its point left the group unnoticed and was renamed then, and codes further apart than 31
/// bits have no order. There the outcome depends on the entries that the search meets. So it meets
/// those that a plain array would offer.
///
/// Among a million points the search looks at 20 records. Points are mostly recorded in the order
/// of their names, and an edited one mostly comes back where it stood, so one likely place is tried
/// before. Without stale entries there is but one place where a name can go, and the search would
/// end there too.
class PointView {
 public:
    explicit PointView(const PointRecords& records);

    [[nodiscard]] const ViewSetting& Setting() const noexcept { return m_content.setting; }
    [[nodiscard]] std::uint32_t Size() const noexcept { return m_content.points.Size(); }
    /// The point at `index`, which is below Size().
    [[nodiscard]] CqHandle At(std::uint32_t index) const noexcept {
        return m_content.points.At(index);
    }
    [[nodiscard]] bool HasEntity(CqHandle entity) const {
        return m_content.entities.Contains(entity);
    }

    /// Puts the point, whose stored bytes are `record`, in front of every entry that it equals, if
    /// it is admitted; and its entity among the entities.
    void Insert(CqHandle handle, const std::byte* record);

    /// Takes out the point and its entity if it is admitted by its present values `record`. Said
    /// before a point's name or code is changed and before its record is deleted.
    void Remove(CqHandle handle, const std::byte* record);

    void EnterEntity(CqHandle entity);

    /// Replaces setting, points and entities.
    void Replace(ViewContent content) noexcept;

    void KeepStep() noexcept;
    /// Needs no record: those that were appended in the step are gone by now, and the others may be
    /// out of reach for the time being.
    void UndoStep() noexcept;

 private:
    struct Change {
        CqHandle entity;
        bool isEntered;
    };

    [[nodiscard]] std::uint32_t PlaceFor(const std::byte* record) const;
    [[nodiscard]] std::uint32_t PlaceByName(const std::byte* record) const;
    [[nodiscard]] std::uint32_t PlaceByCode(const std::byte* record) const;
    void RemoveEntity(CqHandle entity);

    const PointRecords& m_records;
    ViewContent m_content;
    /// Where the next point probably goes.
    std::uint32_t m_likelyPlace = 0;

    ChangeLog<Change> m_entityChanges;
    /// The content that the step replaced first. m_entityChanges led to it, and nothing is logged
    /// from then on.
    std::optional<ViewContent> m_replaced;
};

}  // namespace cqsurvey
