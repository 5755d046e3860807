#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"

namespace cqsurvey {

// The table store on a mounted volume. A record is the fields of its table packed without padding,
// with numbers in little-endian order. Each record has a number that is never used again. An open
// table, known by its handle, has a place in its records and, if there is a record at that place, a
// current record.
//
// Failure signs and codes are as in Qrfs.h.

/// One field of a table. Both reserved words are 0.
struct QrdbFieldDef {
    std::uint32_t reserved1;
    const char16_t* name;
    /// "DOUBLE", "DWORD", "INTEGER", "WORD", "MEMO", or "TEXTn" for n code units with a final 0.
    const char16_t* type;
    std::uint32_t reserved2;
};

/// The only index there is: record order.
inline constexpr std::int32_t kRecordOrder = -1;

/// Creates an empty table. 0 on failure: error::kTableExists when it exists,
/// error::kBadTableDescription for a name or fields that are not valid.
int QrdbCreateTable(const CString& path, std::uint32_t fieldCount, const QrdbFieldDef* fields);
/// Opens a table without loading it and returns its handle. 0 on failure: error::kNoTable when
/// there is no such table.
std::uint32_t QrdbOpenTable(const CString& path);
int QrdbCloseTable(std::uint32_t table);

/// Appends a record; its number is one more than the highest ever used. The current record stays.
int QrdbAppendRecord(std::uint32_t table, const void* record);
/// `index` must be kRecordOrder. The current record stays.
int QrdbSetIndex(std::uint32_t table, std::int32_t index);

// The moves return 0 on failure, and also when there is no such record. In the second case the last
// error is 0 and there is no current record, but the place is before the first or after the last
// one: a move back from there finds a record again.

int QrdbMoveFirst(std::uint32_t table);
int QrdbMoveLast(std::uint32_t table);
int QrdbMoveNext(std::uint32_t table);
int QrdbMovePrev(std::uint32_t table);

/// Non-zero when there is no valid current record.
int QrdbIsAtEnd(std::uint32_t table);
/// The number of records, found without loading the table; negative on failure.
std::int32_t QrdbGetRecordCount(std::uint32_t table);

// The next three return 0 on failure: error::kNoRecord when there is no current record.

/// Copies the current record.
int QrdbReadRecord(std::uint32_t table, void* record);
/// Replaces the current record. A memo that the old bytes named and the new ones do not is freed.
int QrdbWriteRecord(std::uint32_t table, const void* record);
/// Deletes the current record and its memos. Afterwards there is no current record, and the next
/// move starts from its place.
int QrdbDeleteRecord(std::uint32_t table);

/// Stores a text and puts its reference, 0 for an empty text, into the 4-byte field of a record
/// buffer. The text then belongs to the record that is appended or written with this buffer.
int QrdbWriteMemo(std::uint32_t table, const CString& text, void* memoField);
/// Copies at most maxBytes / 2 - 1 code units of a text and a terminating 0, and never splits a
/// surrogate pair. 0 on failure: error::kDamaged when there is no text of this reference.
int QrdbReadMemo(std::uint32_t table, char16_t* buffer, std::uint16_t maxBytes,
                 std::uint32_t reference);

/// Makes a record current. 0 on failure: error::kNoRecord when there is no such record; the place
/// is then unchanged.
int QrdbGoToRecord(std::uint32_t table, std::uint32_t record);
/// The number of the current record, 0 when there is none.
std::uint32_t QrdbGetCurrentHandle(std::uint32_t table);

}  // namespace cqsurvey
