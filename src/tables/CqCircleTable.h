#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The circles' own data.
class CqCircleTable : public CqRecordTable<CircleLayout> {
 public:
    CqHandle AppendCircle(double radius, std::int32_t line, std::int32_t code) {
        Layout::Bytes record{};
        Fill(record, radius, line, code);
        return AppendRecord(record);
    }

    void EditCircle(CqHandle handle, double radius, std::int32_t line, std::int32_t code) {
        GoTo(handle);
        Load();
        Fill(m_record, radius, line, code);
        Store();
    }

 private:
    static void Fill(Layout::Bytes& record, double radius, std::int32_t line, std::int32_t code) {
        Layout::Set<"Radius">(record.data(), radius);
        Layout::Set<"LineID">(record.data(), line);
        Layout::Set<"FeatureCode">(record.data(), code);
    }
};

}  // namespace cqsurvey
