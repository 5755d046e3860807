#pragma once

#include "cqsurvey/CVector.h"
#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The polylines' own data: line style, code and the rectangle around all vertices. The vertices
/// are the entities that follow the polyline's entity in the chain.
class CqPlineTable : public CqRecordTable<PlineLayout> {
 public:
    CqHandle AppendPline(std::int32_t line, std::int32_t code, const CVector& min,
                         const CVector& max) {
        Layout::Bytes record{};
        Layout::Set<"FeatureCode">(record.data(), code);
        Layout::Set<"LineID">(record.data(), line);
        Layout::Set<"minX">(record.data(), min.GetX());
        Layout::Set<"minY">(record.data(), min.GetY());
        Layout::Set<"maxX">(record.data(), max.GetX());
        Layout::Set<"maxY">(record.data(), max.GetY());
        return AppendRecord(record);
    }
};

}  // namespace cqsurvey
