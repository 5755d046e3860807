#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cqsurvey/Records.h"
#include "index/PointNameIndex.h"
#include "index/PointRecords.h"
#include "index/PointView.h"
#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The points' attributes, with what is kept about them in memory while the table is open: the name
/// index, the sorted and filtered view, and the entities of the points in the view.
///
/// The table does not maintain them by itself: whoever changes a name or a feature code takes the
/// record out of index and view before and enters it again after. What is said of the current
/// record means its values in the buffer.
class CqPointTable : public CqRecordTable<PointLayout>, private PointRecords {
 public:
    CqPointTable();
    ~CqPointTable() override;

    /// Reads every record in record order into the name index and into the view, whose setting is
    /// the default one: every point with one of the five low origin bits, by name, ascending.
    void Open(const CString& name) override;
    /// Drops the indexes.
    void Close() override;

    /// The point whose stored name is exactly `name`, which becomes the current record; 0, with the
    /// current record unchanged, when there is none or `name` is empty.
    CqHandle FindByName(std::u16string_view name);
    /// Whether FindByName would find one; the current record stays.
    [[nodiscard]] bool HasName(std::u16string_view name) const;
    /// Enters the current record's name for the point `handle`, which takes the name over from the
    /// point that had it in the index. An empty name is not entered.
    void EnterName(CqHandle handle);
    /// Removes the current record's name from the index, whichever point it is entered for.
    void RemoveName();

    /// Whether the current record passes the filter.
    [[nodiscard]] bool IsAdmitted();
    /// Puts the current record, which is stored, at its place in the view if it is admitted, and
    /// its entity, if it has one, among the view's entities.
    void InsertIntoView();
    /// Takes the current record and its entity out of the view if it is admitted by its present
    /// values; called before a name or a feature code is changed and before a record is deleted.
    void RemoveFromView();
    /// Enters the survey-point entity of an admitted point among the view's entities.
    void EnterEntity(CqHandle entity);
    /// Whether the entity is that of a point in the view.
    [[nodiscard]] bool IsEntityInView(CqHandle entity) const;

    /// Stores the setting, rebuilds the view and returns its size. On failure nothing is changed
    /// but the current record.
    std::int32_t SetSetting(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter);
    /// Copies the setting out and returns the size of the view.
    std::int32_t GetSetting(std::uint16_t& key, std::uint16_t& order, COORDFILTER& filter) const;
    [[nodiscard]] std::int32_t ViewSize() const;
    /// The point at `index`, which is 0 to ViewSize() - 1. Its record may be gone.
    [[nodiscard]] CqHandle ViewAt(std::int32_t index) const;

    /// Makes the changes to index, view and setting since the last KeepStep permanent.
    void KeepStep() noexcept;
    /// Undoes them, after the store has put the records back.
    void UndoStep() noexcept;

 private:
    [[nodiscard]] const std::byte* Peek(CqHandle handle) const override;
    void ClearIndexes();
    template <class Visit>
    void ForEachRecord(Visit&& visit);

    // Never without a value; dropping what they hold takes no memory.
    std::optional<PointNameIndex> m_names;
    std::optional<PointView> m_view;
};

}  // namespace cqsurvey
