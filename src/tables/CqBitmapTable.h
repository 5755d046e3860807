#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The bitmaps' own data.
class CqBitmapTable : public CqRecordTable<BitmapLayout> {
 public:
    CqHandle AppendBitmap(const CString& resName, double sizeX) {
        Layout::Bytes record{};
        SetMemo<"ResName">(record, resName);
        Layout::Set<"sizeX">(record.data(), sizeX);
        return AppendRecord(record);
    }

    /// The data's origin stays.
    void EditBitmap(CqHandle handle, const CString& resName, double sizeX) {
        GoTo(handle);
        SetMemo<"ResName">(resName);
        Set<"sizeX">(sizeX);
        Store();
    }
};

}  // namespace cqsurvey
