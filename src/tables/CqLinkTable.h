#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The ties between survey points and polyline vertices, both named by their entity handles.
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
