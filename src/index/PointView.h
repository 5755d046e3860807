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
