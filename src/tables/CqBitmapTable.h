#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The bitmaps' own data: the name of the picture and its width in the drawing. Position, layer and
/// colour are those of the bitmap's entity.
class CqBitmapTable : public CqRecordTable<BitmapLayout> {
 public:
    CqHandle AppendBitmap(const CString& resName, double sizeX) {
        Layout::Bytes record{};
        SetMemo<"ResName">(record, resName);
        Layout::Set<"sizeX">(record.data(), sizeX);
        return AppendRecord(record);
    }

    /// Replaces name and width; the field DataOrigin keeps its value.
    void EditBitmap(CqHandle handle, const CString& resName, double sizeX) {
        GoTo(handle);
        SetMemo<"ResName">(resName);
        Set<"sizeX">(sizeX);
        Store();
    }
};

}  // namespace cqsurvey
