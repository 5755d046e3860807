#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cqsurvey/Records.h"
#include "index/PointNameIndex.h"
#include "index/PointRecords.h"
#include "index/PointView.h"
#include "tables/CqPointTable.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// What is kept in memory about the points while a job is open: which point has which name, the
/// sorted and filtered view, and the survey-point entities of the points in the view.
///
/// It does not watch the table. Whoever changes a name or a feature code takes the record out of
/// names and view before, and enters it again after. `record` is always the record's stored bytes.
class PointIndex : public JobPart, private PointRecords {
 public:
    /// `points` must outlive the index.
    explicit PointIndex(CqPointTable& points);
    ~PointIndex() override;

    /// Reads every record in record order into the names and into the view, whose setting becomes
    /// the default one: every point with one of the five low origin bits, by name, ascending.
    void Build();

    void OnCreate(const CString& /*root*/) override { Build(); }
    void OnOpen(const CString& /*root*/) override { Build(); }
    void OnClose() override { Clear(); }

    /// The point whose stored name is exactly `name`, up to a zero; 0 when there is none or the
    /// name is empty.
    [[nodiscard]] CqHandle FindByName(std::u16string_view name) const;
    /// Enters the record's name for the point `handle`, which takes the name over from the point
    /// that had it in the index. An empty name is not entered.
    void EnterName(CqHandle handle, const std::byte* record);
    /// Removes the record's name from the index, whichever point it is entered for.
    void RemoveName(const std::byte* record);

    /// Puts the point at its place in the view if the filter admits it, and its entity, if it has
    /// one, among the view's entities.
    void EnterIntoView(CqHandle handle, const std::byte* record);
    /// Takes the point and its entity out of the view if it is admitted by its present values.
    void RemoveFromView(CqHandle handle, const std::byte* record);
    /// Whether the entity is that of a point in the view.
    [[nodiscard]] bool IsEntityInView(CqHandle entity) const;

    /// Stores the setting, rebuilds the view and returns its size. Nothing is changed on failure.
    std::int32_t SetSetting(std::uint16_t key, std::uint16_t order, const COORDFILTER& filter);
    /// Copies the setting out and returns the size of the view.
    std::int32_t GetSetting(std::uint16_t& key, std::uint16_t& order, COORDFILTER& filter) const;
    [[nodiscard]] std::int32_t ViewSize() const;
    /// The point at `index`, which is 0 to ViewSize() - 1. Its record may be gone.
    [[nodiscard]] CqHandle ViewAt(std::int32_t index) const;

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    [[nodiscard]] const std::byte* Peek(CqHandle handle) const override;
    void Clear();

    CqPointTable& m_points;
    // Never without a value; dropping what they hold takes no memory.
    std::optional<PointNameIndex> m_names;
    std::optional<PointView> m_view;
};

}  // namespace cqsurvey
