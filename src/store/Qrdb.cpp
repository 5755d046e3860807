#include "store/Qrdb.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "cqsurvey/Text.h"
#include "platform/ByteOrder.h"
#include "platform/Text.h"
#include "store/LastError.h"
#include "store/MountRegistry.h"

namespace cqsurvey {

namespace {

constexpr std::uint64_t kBehindLast = std::uint64_t{1} << 32;

MountRegistry& Registry() {
    return MountRegistry::Get();
}

TableCursor& CursorOf(std::uint32_t table) {
    TableCursor* cursor = Registry().Tables().Find(table);
    if (cursor == nullptr) {
        throw StoreFailure(error::kInvalidArgument, "no open table has this handle");
    }
    return *cursor;
}

/// The number of the current record; throws 0x31000003 when there is none.
std::uint32_t Current(const TableCursor& cursor) {
    if (!cursor.valid || cursor.table->Find(static_cast<std::uint32_t>(cursor.place)) == nullptr) {
        throw StoreFailure(error::kNoRecord,
                           "table " + cursor.table->GetName() + " has no current record");
    }
    return static_cast<std::uint32_t>(cursor.place);
}

/// Ends a move at a record, or at `otherwise` where there is none.
int Arrive(TableCursor& cursor, std::uint32_t number, std::uint64_t otherwise) {
    cursor.valid = number != 0;
    cursor.place = cursor.valid ? number : otherwise;
    if (!cursor.valid) {
        SetLastError(error::kNone);
        return 0;
    }
    return 1;
}

std::string TableName(const CString& name) {
    return ToUtf8(name);
}

}  // namespace

int QrdbCreateTable(const CString& path, std::uint32_t fieldCount, const QrdbFieldDef* fields) {
    return Guarded(0, [&] {
        const auto [volume, name] = Registry().Resolve(path);
        volume->Perform(1, [&, v = volume, &n = name] {
            v->CreateTable(TableName(n), RecordFormat(fieldCount, fields));
        });
        return 1;
    });
}

std::uint32_t QrdbOpenTable(const CString& path) {
    return Guarded(std::uint32_t{0}, [&] {
        const auto [volume, name] = Registry().Resolve(path);
        std::shared_ptr<RecordTable> table = volume->FindTable(TableName(name));
        if (table == nullptr) {
            throw StoreFailure(error::kNoTable, "table " + ToUtf8(name));
        }
        const std::uint32_t handle = Registry().Tables().Add(TableCursor{volume, std::move(table)});
        if (handle == 0) {
            throw StoreFailure(error::kOutOfMemory, "too many open tables");
        }
        return handle;
    });
}

int QrdbCheckTable(std::uint32_t table, std::uint32_t fieldCount, const QrdbFieldDef* fields) {
    return Guarded(0, [&] {
        const RecordTable& records = *CursorOf(table).table;
        if (!(records.GetFormat() == RecordFormat(fieldCount, fields))) {
            throw StoreFailure(error::kDamaged,
                               "table " + records.GetName() + " has other fields than it must");
        }
        return 1;
    });
}

int QrdbCloseTable(std::uint32_t table) {
    return Guarded(0, [&] {
        if (!Registry().Tables().Remove(table)) {
            throw StoreFailure(error::kInvalidArgument, "no open table has this handle");
        }
        return 1;
    });
}

int QrdbAppendRecord(std::uint32_t table, const void* record) {
    return Guarded(0, [&] {
        const TableCursor& cursor = CursorOf(table);
        cursor.volume->Perform(
            1, [&] { cursor.table->Append(static_cast<const std::byte*>(record)); });
        return 1;
    });
}

std::uint32_t QrdbAppendCurrent(std::uint32_t table, const void* record) {
    return Guarded(std::uint32_t{0}, [&] {
        TableCursor& cursor = CursorOf(table);
        std::uint32_t number = 0;
        cursor.volume->Perform(
            1, [&] { number = cursor.table->Append(static_cast<const std::byte*>(record)); });
        cursor.place = number;
        cursor.valid = true;
        return number;
    });
}

int QrdbSetIndex(std::uint32_t table, std::int32_t index) {
    return Guarded(0, [&] {
        (void)CursorOf(table);
        if (index != kRecordOrder) {
            throw StoreFailure(error::kInvalidArgument, "there is no index but record order");
        }
        return 1;
    });
}

int QrdbMoveFirst(std::uint32_t table) {
    return Guarded(0, [&] {
        TableCursor& cursor = CursorOf(table);
        return Arrive(cursor, cursor.table->Next(0), 0);
    });
}

int QrdbMoveLast(std::uint32_t table) {
    return Guarded(0, [&] {
        TableCursor& cursor = CursorOf(table);
        return Arrive(cursor, cursor.table->Prev(kBehindLast), kBehindLast);
    });
}

int QrdbMoveNext(std::uint32_t table) {
    return Guarded(0, [&] {
        TableCursor& cursor = CursorOf(table);
        if (cursor.place >= kBehindLast) {
            return Arrive(cursor, 0, kBehindLast);
        }
        return Arrive(cursor, cursor.table->Next(static_cast<std::uint32_t>(cursor.place)),
                      kBehindLast);
    });
}

int QrdbMovePrev(std::uint32_t table) {
    return Guarded(0, [&] {
        TableCursor& cursor = CursorOf(table);
        return Arrive(cursor, cursor.table->Prev(cursor.place), 0);
    });
}

int QrdbIsAtEnd(std::uint32_t table) {
    return Guarded(1, [&] {
        const TableCursor& cursor = CursorOf(table);
        return !cursor.valid ||
               cursor.table->Find(static_cast<std::uint32_t>(cursor.place)) == nullptr;
    });
}

std::int32_t QrdbGetRecordCount(std::uint32_t table) {
    return Guarded(std::int32_t{-1}, [&] { return CursorOf(table).table->GetCount(); });
}

int QrdbReadRecord(std::uint32_t table, void* record) {
    return Guarded(0, [&] {
        const TableCursor& cursor = CursorOf(table);
        const std::byte* bytes =
            cursor.valid ? cursor.table->Find(static_cast<std::uint32_t>(cursor.place)) : nullptr;
        if (bytes == nullptr) {
            (void)Current(cursor);
            return 0;
        }
        std::memcpy(record, bytes, cursor.table->GetFormat().GetWidth());
        return 1;
    });
}

int QrdbWriteRecord(std::uint32_t table, const void* record) {
    return Guarded(0, [&] {
        const TableCursor& cursor = CursorOf(table);
        const std::uint32_t number = Current(cursor);
        cursor.volume->Perform(
            1, [&] { cursor.table->Write(number, static_cast<const std::byte*>(record)); });
        return 1;
    });
}

int QrdbDeleteRecord(std::uint32_t table) {
    return Guarded(0, [&] {
        TableCursor& cursor = CursorOf(table);
        const std::uint32_t number = Current(cursor);
        cursor.volume->Perform(1, [&] { cursor.table->Delete(number); });
        cursor.valid = false;
        return 1;
    });
}

int QrdbWriteMemo(std::uint32_t table, const CString& text, void* memoField) {
    return Guarded(0, [&] {
        const TableCursor& cursor = CursorOf(table);
        std::uint32_t reference = 0;
        cursor.volume->Perform(1 + text.size() / 32,
                               [&] { reference = cursor.volume->GetMemos().Add(text); });
        StoreLittle<std::uint32_t>(static_cast<std::byte*>(memoField), reference);
        return 1;
    });
}

int QrdbReadMemo(std::uint32_t table, char16_t* buffer, std::uint16_t maxBytes,
                 std::uint32_t reference) {
    return Guarded(0, [&] {
        const TableCursor& cursor = CursorOf(table);
        if (maxBytes < sizeof(char16_t)) {
            throw StoreFailure(error::kInvalidArgument, "a buffer without room for a text");
        }
        buffer[0] = 0;
        const std::size_t room = maxBytes / sizeof(char16_t) - 1;
        if (reference != 0 && room != 0) {
            const CString& text = cursor.volume->GetMemos().Get(reference);
            const std::size_t length = WholeUtf16Prefix(text, room);
            std::copy_n(text.data(), length, buffer);
            buffer[length] = 0;
        }
        return 1;
    });
}

int QrdbGoToRecord(std::uint32_t table, std::uint32_t record) {
    return Guarded(0, [&] {
        TableCursor& cursor = CursorOf(table);
        if (cursor.table->Find(record) == nullptr) {
            throw StoreFailure(error::kNoRecord, "table " + cursor.table->GetName() +
                                                     " has no record " + std::to_string(record));
        }
        cursor.place = record;
        cursor.valid = true;
        return 1;
    });
}

std::uint32_t QrdbGetCurrentHandle(std::uint32_t table) {
    return Guarded(std::uint32_t{0}, [&] {
        const TableCursor& cursor = CursorOf(table);
        return cursor.valid &&
                       cursor.table->Find(static_cast<std::uint32_t>(cursor.place)) != nullptr
                   ? static_cast<std::uint32_t>(cursor.place)
                   : 0U;
    });
}

const std::byte* QrdbPeekRecord(std::uint32_t table, std::uint32_t record) {
    return Guarded(static_cast<const std::byte*>(nullptr), [&] {
        const std::byte* bytes = CursorOf(table).table->Find(record);
        if (bytes == nullptr) {
            SetLastError(error::kNone);
        }
        return bytes;
    });
}

int QrdbCreateView(const CString& path, const char* sql) {
    return Guarded(0, [&] {
        const auto [volume, name] = Registry().Resolve(path);
        volume->Perform(1, [&, v = volume, &n = name] { v->CreateView(TableName(n), sql); });
        return 1;
    });
}

}  // namespace cqsurvey
