#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The ties between survey points and the polyline vertices that were drawn through them. Both are
/// named by their entity handles. A tie may outlive either, and of several ties of one vertex the
/// last one counts.
class CqLinkTable : public CqRecordTable<LinkLayout> {
 public:
    CqHandle AppendLink(CqHandle point, CqHandle vertex) {
        Layout::Bytes record{};
        Layout::Set<"PointDataID">(record.data(), point);
        Layout::Set<"VertexDataID">(record.data(), vertex);
        return AppendRecord(record);
    }
};

}  // namespace cqsurvey
