#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The point groups. A point names its group by record number, 0 for none.
class CqGroupTable : public CqRecordTable<GroupLayout> {
 public:
    /// Makes the first group in record order whose name is `name`, without regard to letter case,
    /// the current record. False when there is none. It finds no group by an empty name, although
    /// groups may have one.
    [[nodiscard]] bool FindByName(const CString& name);

    /// The name of a group, which becomes the current record. Throws error::kNoRecord when there is
    /// no such group.
    [[nodiscard]] CString GetName(CqHandle group);

    /// Appends a group with the first 19 code units of the name.
    void AppendGroup(const CString& name);
};

}  // namespace cqsurvey
