#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The vertices' own data.
class CqVertexTable : public CqRecordTable<VertexLayout> {
 public:
    /// `pline` is the polyline's entity handle.
    CqHandle AppendVertex(double bulge, CqHandle pline) {
        Layout::Bytes record{};
        Layout::Set<"Bulge">(record.data(), bulge);
        Layout::Set<"PlineIndex">(record.data(), pline);
        return AppendRecord(record);
    }
};

}  // namespace cqsurvey
