#include "store/RecordFormat.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>

#include "platform/ByteOrder.h"
#include "store/Failure.h"

namespace cqsurvey {

namespace {

constexpr std::size_t kMostFields = 200;
constexpr std::size_t kMostNameLength = 60;
constexpr std::size_t kMostUnits = 4096;
constexpr std::uint64_t kUsualNan =
    std::bit_cast<std::uint64_t>(std::numeric_limits<double>::quiet_NaN());

std::string Ascii(const char16_t* text) {
    std::string result;
    for (; text != nullptr && *text != 0; ++text) {
        if (*text > 0x7E || result.size() > kMostNameLength) {
            return {};
        }
        result.push_back(static_cast<char>(*text));
    }
    return result;
}

std::string Lower(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

const char* ColumnType(RecordFormat::Type type) {
    switch (type) {
        case RecordFormat::Type::Double:
            return "ANY";
        case RecordFormat::Type::Text:
            return "TEXT NOT NULL";
        default:
            return "INTEGER NOT NULL";
    }
}

[[noreturn]] void ThrowMisfit(const RecordFormat::Item& item, const char* what) {
    throw StoreFailure(error::kDamaged, "field " + item.name + " " + what);
}

template <class T>
void ReadNumber(sqlite3_stmt* statement, int column, const RecordFormat::Item& item,
                std::byte* bytes) {
    if (sqlite3_column_type(statement, column) != SQLITE_INTEGER) {
        ThrowMisfit(item, "does not hold a whole number");
    }
    const std::int64_t value = sqlite3_column_int64(statement, column);
    if (value < std::int64_t{std::numeric_limits<T>::min()} ||
        value > std::int64_t{std::numeric_limits<T>::max()}) {
        ThrowMisfit(item, "holds a number that is out of range");
    }
    StoreLittle<T>(bytes, static_cast<T>(value));
}

void ReadDouble(sqlite3_stmt* statement, int column, const RecordFormat::Item& item,
                std::byte* bytes) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_FLOAT:
        case SQLITE_INTEGER:
            StoreLittle<double>(bytes, sqlite3_column_double(statement, column));
            return;
        case SQLITE_NULL:
            StoreLittle<std::uint64_t>(bytes, kUsualNan);
            return;
        case SQLITE_BLOB:
            if (sqlite3_column_bytes(statement, column) == sizeof(double)) {
                std::memcpy(bytes, sqlite3_column_blob(statement, column), sizeof(double));
                return;
            }
            [[fallthrough]];
        default:
            ThrowMisfit(item, "does not hold a number");
    }
}

void ReadText(sqlite3_stmt* statement, int column, const RecordFormat::Item& item,
              std::byte* bytes) {
    if (sqlite3_column_type(statement, column) != SQLITE_TEXT) {
        ThrowMisfit(item, "does not hold a text");
    }
    // The order matters: asking for the UTF-16 size first leaves the value as it is in the file,
    // UTF-16 little-endian; asking for the blob first might hand out another encoding.
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(statement, column));
    const void* text = sqlite3_column_blob(statement, column);
    if (size % sizeof(char16_t) != 0) {
        ThrowMisfit(item, "holds a text that ends in half a character");
    }
    if (size > item.width) {
        ThrowMisfit(item, "holds a text that is too long");
    }
    std::fill(bytes, bytes + item.width, std::byte{0});
    if (size != 0) {
        std::memcpy(bytes, text, size);
    }
}

void BindDouble(sqlite3_stmt* statement, int parameter, const std::byte* bytes) {
    const auto value = LoadLittle<double>(bytes);
    if (value == value) {
        sqlite3_bind_double(statement, parameter, value);
    } else if (LoadLittle<std::uint64_t>(bytes) == kUsualNan) {
        sqlite3_bind_null(statement, parameter);
    } else {
        sqlite3_bind_blob(statement, parameter, bytes, sizeof(double), SQLITE_STATIC);
    }
}

void BindText(sqlite3_stmt* statement, int parameter, const std::byte* bytes, std::size_t width) {
    std::size_t size = width;
    while (size != 0 && bytes[size - 1] == std::byte{0} && bytes[size - 2] == std::byte{0}) {
        size -= 2;
    }
    const auto mark = LoadLittle<std::uint16_t>(bytes);
    if (mark != 0xFEFF && mark != 0xFFFE) {
        sqlite3_bind_text64(statement, parameter, reinterpret_cast<const char*>(bytes), size,
                            SQLITE_STATIC, SQLITE_UTF16LE);
        return;
    }
    // SQLite removes a byte-order mark at the start. Of two it removes the first, so the text gets
    // one more.
    std::string marked("\xFF\xFE", 2);
    marked.append(reinterpret_cast<const char*>(bytes), size);
    sqlite3_bind_text64(statement, parameter, marked.data(), marked.size(), SQLITE_TRANSIENT,
                        SQLITE_UTF16LE);
}

}  // namespace

bool RecordFormat::IsName(std::string_view name) {
    const auto letter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    return !name.empty() && name.size() <= kMostNameLength && letter(name.front()) &&
           std::all_of(name.begin(), name.end(),
                       [&](char c) { return letter(c) || (c >= '0' && c <= '9'); });
}

void RecordFormat::Add(std::string name, std::string word) {
    const auto bad = [&](const char* why) {
        return StoreFailure(error::kBadTableDescription, "field \"" + name + "\": " + why);
    };
    if (!IsName(name)) {
        throw bad("this is not a valid field name");
    }
    const std::string lower = Lower(name);
    if (lower == "record" || std::any_of(m_items.begin(), m_items.end(), [&](const Item& item) {
            return Lower(item.name) == lower;
        })) {
        throw bad("this name is already taken");
    }
    Item item{std::move(name), std::move(word), Type::Word, m_width, 0};
    if (item.word == "DOUBLE") {
        item.type = Type::Double;
        item.width = sizeof(double);
    } else if (item.word == "DWORD") {
        item.type = Type::Dword;
        item.width = sizeof(std::uint32_t);
    } else if (item.word == "INTEGER") {
        item.type = Type::Integer;
        item.width = sizeof(std::int32_t);
    } else if (item.word == "WORD") {
        item.type = Type::Word;
        item.width = sizeof(std::uint16_t);
    } else if (item.word == "MEMO") {
        item.type = Type::Memo;
        item.width = sizeof(std::uint32_t);
        m_memos.push_back(item.offset);
    } else {
        std::size_t units = 0;
        const char* end = item.word.data() + item.word.size();
        const bool text = item.word.starts_with("TEXT");
        const auto parsed = std::from_chars(item.word.data() + (text ? 4 : 0), end, units);
        if (!text || parsed.ec != std::errc() || parsed.ptr != end || units < 2 ||
            units > kMostUnits || item.word != "TEXT" + std::to_string(units)) {
            throw StoreFailure(error::kBadTableDescription,
                               "field \"" + item.name + "\": there is no such type");
        }
        item.type = Type::Text;
        item.width = 2 * units;
    }
    m_width += item.width;
    m_items.push_back(std::move(item));
}

RecordFormat::RecordFormat(std::uint32_t fieldCount, const QrdbFieldDef* fields) {
    if (fieldCount == 0 || fieldCount > kMostFields || fields == nullptr) {
        throw StoreFailure(error::kBadTableDescription, "a table needs 1 to 200 fields");
    }
    for (std::uint32_t i = 0; i < fieldCount; ++i) {
        Add(Ascii(fields[i].name), Ascii(fields[i].type));
    }
}

RecordFormat::RecordFormat(const std::string& table, const std::string& sql) {
    const auto damaged = [&] {
        return StoreFailure(error::kDamaged,
                            "table \"" + table + "\" was not created by this library");
    };
    try {
        // Each column after the first reads  "Name" TYPE /* WORD */ .  This only picks names and
        // words out; whether the rest is right is seen by making the statement again.
        for (std::size_t at = sql.find(",\n"); at != std::string::npos;
             at = sql.find(",\n", at + 1)) {
            const std::size_t open = sql.find('"', at);
            const std::size_t close = open == std::string::npos ? open : sql.find('"', open + 1);
            const std::size_t word = close == std::string::npos ? close : sql.find("/* ", close);
            const std::size_t end = word == std::string::npos ? word : sql.find(" */", word);
            if (end == std::string::npos || m_items.size() == kMostFields) {
                throw damaged();
            }
            Add(sql.substr(open + 1, close - open - 1), sql.substr(word + 3, end - word - 3));
        }
    } catch (const StoreFailure&) {
        throw damaged();
    }
    if (m_items.empty() || CreateSql(table) != sql) {
        throw damaged();
    }
}

std::string RecordFormat::CreateSql(const std::string& table) const {
    std::string sql = "CREATE TABLE \"" + table + "\" (\n  Record INTEGER PRIMARY KEY";
    for (const Item& item : m_items) {
        sql += ",\n  \"" + item.name + "\" " + ColumnType(item.type) + " /* " + item.word + " */";
    }
    return sql + "\n) STRICT";
}

bool RecordFormat::operator==(const RecordFormat& other) const {
    return std::equal(
        m_items.begin(), m_items.end(), other.m_items.begin(), other.m_items.end(),
        [](const Item& a, const Item& b) { return a.name == b.name && a.word == b.word; });
}

void RecordFormat::Bind(sqlite3_stmt* statement, int first, std::uint32_t number,
                        const std::byte* record) const {
    if (number != 0) {
        sqlite3_bind_int64(statement, first, number);
    } else {
        sqlite3_bind_null(statement, first);
    }
    for (const Item& item : m_items) {
        const std::byte* bytes = record + item.offset;
        ++first;
        switch (item.type) {
            case Type::Double:
                BindDouble(statement, first, bytes);
                break;
            case Type::Dword:
            case Type::Memo:
                sqlite3_bind_int64(statement, first, LoadLittle<std::uint32_t>(bytes));
                break;
            case Type::Integer:
                sqlite3_bind_int64(statement, first, LoadLittle<std::int32_t>(bytes));
                break;
            case Type::Word:
                sqlite3_bind_int64(statement, first, LoadLittle<std::uint16_t>(bytes));
                break;
            case Type::Text:
                BindText(statement, first, bytes, item.width);
                break;
        }
    }
}

void RecordFormat::Read(sqlite3_stmt* statement, std::byte* record) const {
    int column = 0;
    for (const Item& item : m_items) {
        std::byte* bytes = record + item.offset;
        ++column;
        switch (item.type) {
            case Type::Double:
                ReadDouble(statement, column, item, bytes);
                break;
            case Type::Dword:
            case Type::Memo:
                ReadNumber<std::uint32_t>(statement, column, item, bytes);
                break;
            case Type::Integer:
                ReadNumber<std::int32_t>(statement, column, item, bytes);
                break;
            case Type::Word:
                ReadNumber<std::uint16_t>(statement, column, item, bytes);
                break;
            case Type::Text:
                ReadText(statement, column, item, bytes);
                break;
        }
    }
}

}  // namespace cqsurvey
