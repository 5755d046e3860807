#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The circles' own data. The centre, layer and colour are those of the circle's entity.
class CqCircleTable : public CqRecordTable<CircleLayout> {
 public:
    CqHandle AppendCircle(double radius, std::int32_t line, std::int32_t code) {
        Layout::Bytes record{};
        Fill(record.data(), radius, line, code);
        return AppendRecord(record);
    }

    void EditCircle(CqHandle handle, double radius, std::int32_t line, std::int32_t code) {
        Edit(handle, [&](std::byte* record) { Fill(record, radius, line, code); });
    }

 private:
    static void Fill(std::byte* record, double radius, std::int32_t line, std::int32_t code) {
        Layout::Set<"Radius">(record, radius);
        Layout::Set<"LineID">(record, line);
        Layout::Set<"FeatureCode">(record, code);
    }
};

}  // namespace cqsurvey
