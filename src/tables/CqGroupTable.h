#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The point groups.
class CqGroupTable : public CqRecordTable<GroupLayout> {
 public:
    /// The first group in record order whose name is like `name` but for letter case becomes the
    /// current record. False for none and for an empty name, which groups may have all the same.
    [[nodiscard]] bool FindByName(const CString& name);

    /// The name of the group that a record number names; throws 0x31000003 when there is none. The
    /// group becomes the current record.
    [[nodiscard]] CString GetName(CqHandle group);

    /// Appends a group with the first 19 code units of the name.
    void AppendGroup(const CString& name);
};

}  // namespace cqsurvey
