#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"

namespace cqsurvey {

// The table store on a mounted volume. Records are packed bytes without padding, numbers
// little-endian; each has a number that is never used again. An open table has a current record.
// Failure signs and codes are as in Qrfs.h.

/// One field of a table, in field order. The first and the last word are 0.
struct QrdbFieldDef {
    std::uint32_t reserved1;
    const char16_t* name;
    const char16_t*
        type;  ///< "DOUBLE", "WORD", "DWORD", "INTEGER", "TEXT20", "TEXT24", "TEXT52", "MEMO"
    std::uint32_t reserved2;
};

/// The only index there is: record order.
inline constexpr std::int32_t kRecordOrder = -1;

/// 0 on failure: error::kTableExists when the table exists, error::kBadTableDescription for a bad
/// description.
int QrdbCreateTable(const CString& path, std::uint32_t fieldCount, const QrdbFieldDef* fields);
/// Opens a table without loading it. 0 on failure: error::kNoTable when there is none.
std::uint32_t QrdbOpenTable(const CString& path);
int QrdbCloseTable(std::uint32_t table);

/// Appends a record; its number is one more than the highest ever used. The current record stays.
int QrdbAppendRecord(std::uint32_t table, const void* record);
/// Index -1 only. The current record stays.
int QrdbSetIndex(std::uint32_t table, std::int32_t index);

/// The moves return 0 on failure and when there is no such record. In the second case the last
/// error is 0 and there is no current record; a move back from after the end finds the last one
/// again.
int QrdbMoveFirst(std::uint32_t table);
int QrdbMoveLast(std::uint32_t table);
int QrdbMoveNext(std::uint32_t table);
int QrdbMovePrev(std::uint32_t table);

/// Non-zero when there is no valid current record.
int QrdbIsAtEnd(std::uint32_t table);
/// Negative on failure. Does not load the table.
std::int32_t QrdbGetRecordCount(std::uint32_t table);
int QrdbReadRecord(std::uint32_t table, void* record);
/// Replaces the current record. A memo that the old bytes named and the new ones do not is freed.
int QrdbWriteRecord(std::uint32_t table, const void* record);
/// Deletes the current record with its memos. There is no current record then; the next move goes
/// on from its place.
int QrdbDeleteRecord(std::uint32_t table);

/// Stores a text and puts its reference, 0 for an empty text, into the 4-byte field of a record
/// buffer. It belongs to the record that is appended or written with the reference.
int QrdbWriteMemo(std::uint32_t table, const CString& text, void* memoField);
/// Reads at most maxBytes / 2 - 1 code units and a terminating 0, never half a surrogate pair.
int QrdbReadMemo(std::uint32_t table, char16_t* buffer, std::uint16_t maxBytes,
                 std::uint32_t reference);

/// 0 on failure: error::kNoRecord when there is no such record.
int QrdbGoToRecord(std::uint32_t table, std::uint32_t record);
/// 0 when there is no current record.
std::uint32_t QrdbGetCurrentHandle(std::uint32_t table);

}  // namespace cqsurvey
