#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"
#include "tables/RecordNames.h"

namespace cqsurvey {

/// The point groups. A point names its group by record number, 0 for none.
class CqGroupTable : public CqRecordTable<GroupLayout> {
 public:
    void Close() override;

    /// Makes the first group in record order whose name is `name`, up to a zero and without regard
    /// to letter case, the current record. False when there is none. It finds no group by an empty
    /// name, although groups may have one.
    [[nodiscard]] bool FindByName(const CString& name);

    /// The name of a group, which becomes the current record. Throws error::kNoRecord when there is
    /// no such group.
    [[nodiscard]] CString GetName(CqHandle group);

    /// Appends a group with the first 19 code units of the name.
    void AppendGroup(const CString& name);

    // Both throw error::kNoRecord when there is no such group.

    /// Gives a group the first 19 code units of the name.
    void RenameGroup(CqHandle group, const CString& name);
    void DeleteGroup(CqHandle group);

    void UndoStep() noexcept override;

 private:
    RecordNames m_names;  // with their letter case folded
};

}  // namespace cqsurvey
