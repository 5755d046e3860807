#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The vertices' own data: the bulge of the segment that begins at the vertex, and the polyline.
/// The coordinates are those of the vertex's entity.
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
