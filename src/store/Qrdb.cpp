#include "store/Qrdb.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "cqsurvey/Text.h"
#include "platform/ByteOrder.h"
#include "platform/Text.h"
#include "store/Registry.h"

namespace cqsurvey {

namespace {

/// The number of the current record; throws error::kNoRecord when there is none.
std::uint32_t RequireCurrent(const TableCursor& cursor) {
    const std::uint32_t number = cursor.Current();
    if (number == 0) {
        throw StoreFailure(error::kNoRecord,
                           "table " + cursor.table->GetName() + " has no current record");
    }
    return number;
}

/// Ends a move at record `number`, or at the place `otherwise` when the number is 0.
int Arrive(TableCursor& cursor, std::uint32_t number, std::uint64_t otherwise) {
    cursor.valid = number != 0;
    cursor.place = cursor.valid ? number : otherwise;
    if (!cursor.valid) {
        Registry::SetLastError(error::kNone);
        return 0;
    }
    return 1;
}

}  // namespace

int QrdbCreateTable(const CString& path, std::uint32_t fieldCount, const QrdbFieldDef* fields) {
    return Registry::Run(0, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        volume->Perform(1, [&, v = volume, &n = name] {
            v->CreateTable(ToUtf8(n), RecordFormat(fieldCount, fields));
        });
        return 1;
    });
}

std::uint32_t QrdbOpenTable(const CString& path) {
    return Registry::Run(std::uint32_t{0}, [&](Registry& open) {
        const auto [volume, name] = open.Resolve(path);
        std::shared_ptr<RecordTable> table = volume->FindTable(ToUtf8(name));
        if (table == nullptr) {
            throw StoreFailure(error::kNoTable, "table " + ToUtf8(name));
        }
        return open.AddTable(TableCursor{volume, std::move(table)});
    });
}

int QrdbCloseTable(std::uint32_t table) {
    return Registry::Run(0, [&](Registry& open) {
        open.RemoveTable(table);
        return 1;
    });
}

int QrdbAppendRecord(std::uint32_t table, const void* record) {
    return Registry::Run(0, [&](Registry& open) {
        const TableCursor& cursor = open.Table(table);
        cursor.volume->Perform(
            1, [&] { cursor.table->Append(static_cast<const std::byte*>(record)); });
        return 1;
    });
}

int QrdbSetIndex(std::uint32_t table, std::int32_t index) {
    return Registry::Run(0, [&](Registry& open) {
        (void)open.Table(table);
        if (index != kRecordOrder) {
            throw StoreFailure(error::kInvalidArgument, "record order is the only index");
        }
        return 1;
    });
}

int QrdbMoveFirst(std::uint32_t table) {
    return Registry::Run(0, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
        return Arrive(cursor, cursor.table->Next(0), 0);
    });
}

int QrdbMoveLast(std::uint32_t table) {
    return Registry::Run(0, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
        return Arrive(cursor, cursor.table->Prev(TableCursor::kAfterLast), TableCursor::kAfterLast);
    });
}

int QrdbMoveNext(std::uint32_t table) {
    return Registry::Run(0, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
        if (cursor.place >= TableCursor::kAfterLast) {
            return Arrive(cursor, 0, TableCursor::kAfterLast);
        }
        return Arrive(cursor, cursor.table->Next(static_cast<std::uint32_t>(cursor.place)),
                      TableCursor::kAfterLast);
    });
}

int QrdbMovePrev(std::uint32_t table) {
    return Registry::Run(0, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
        return Arrive(cursor, cursor.table->Prev(cursor.place), 0);
    });
}

int QrdbIsAtEnd(std::uint32_t table) {
    return Registry::Run(1, [&](Registry& open) { return open.Table(table).Current() == 0; });
}

std::int32_t QrdbGetRecordCount(std::uint32_t table) {
    return Registry::Run(std::int32_t{-1},
                         [&](Registry& open) { return open.Table(table).table->GetCount(); });
}

int QrdbReadRecord(std::uint32_t table, void* record) {
    return Registry::Run(0, [&](Registry& open) {
        const TableCursor& cursor = open.Table(table);
        const std::byte* bytes = cursor.table->Find(RequireCurrent(cursor));
        std::memcpy(record, bytes, cursor.table->GetFormat().GetWidth());
        return 1;
    });
}

int QrdbWriteRecord(std::uint32_t table, const void* record) {
    return Registry::Run(0, [&](Registry& open) {
        const TableCursor& cursor = open.Table(table);
        const std::uint32_t number = RequireCurrent(cursor);
        cursor.volume->Perform(
            1, [&] { cursor.table->Write(number, static_cast<const std::byte*>(record)); });
        return 1;
    });
}

int QrdbDeleteRecord(std::uint32_t table) {
    return Registry::Run(0, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
        const std::uint32_t number = RequireCurrent(cursor);
        cursor.volume->Perform(1, [&] { cursor.table->Delete(number); });
        cursor.valid = false;
        return 1;
    });
}

int QrdbWriteMemo(std::uint32_t table, const CString& text, void* memoField) {
    return Registry::Run(0, [&](Registry& open) {
        const TableCursor& cursor = open.Table(table);
        std::uint32_t reference = 0;
        cursor.volume->Perform(1 + text.size() / 32,
                               [&] { reference = cursor.volume->GetMemos().Add(text); });
        StoreLittle<std::uint32_t>(static_cast<std::byte*>(memoField), reference);
        return 1;
    });
}

int QrdbReadMemo(std::uint32_t table, char16_t* buffer, std::uint16_t maxBytes,
                 std::uint32_t reference) {
    return Registry::Run(0, [&](Registry& open) {
        const TableCursor& cursor = open.Table(table);
        if (maxBytes < sizeof(char16_t)) {
            throw StoreFailure(error::kInvalidArgument, "the buffer has no room for a text");
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
    return Registry::Run(0, [&](Registry& open) {
        TableCursor& cursor = open.Table(table);
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
    return Registry::Run(std::uint32_t{0},
                         [&](Registry& open) { return open.Table(table).Current(); });
}

}  // namespace cqsurvey
