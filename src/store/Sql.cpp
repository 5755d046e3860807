#include "store/Sql.h"

#include <system_error>

#include "platform/System.h"
#include "store/CheckedVfs.h"

namespace cqsurvey {

namespace {

constexpr int kStepsATick = 1000;
constexpr std::int64_t kTicksInAnyCase = 1000;

/// The system's error when SQLite could not open a file; no error if the system was not asked.
std::error_code SystemFailure(sqlite3* connection) {
    return {connection == nullptr ? 0 : sqlite3_system_errno(connection), std::system_category()};
}

/// Why a file, perhaps the journal, could not be opened or created. SQLite does not say, so the
/// system's error decides. Apart from want of room and of file handles it counts as a want of
/// permission.
std::int32_t CodeOfCantOpen(sqlite3* connection) {
    const std::error_code failure = SystemFailure(connection);
    const std::int32_t code = system::ErrorCode(failure);
    const bool itself = code == error::kVolumeFull || system::IsOutOfHandles(failure);
    return itself ? code : error::kAccessDenied;
}

std::int32_t CodeOf(sqlite3* connection, int result) {
    if (result == SQLITE_IOERR_DATA) {
        return error::kDamaged;
    }
    if (result == SQLITE_IOERR_NOMEM) {
        return error::kOutOfMemory;
    }
    switch (result & 0xFF) {
        case SQLITE_NOMEM:
            return error::kOutOfMemory;
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return error::kAccessDenied;
        case SQLITE_CANTOPEN:
            return CodeOfCantOpen(connection);
        case SQLITE_IOERR:
            return error::kReadWriteFailed;
        case SQLITE_FULL:
            return error::kVolumeFull;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_FORMAT:
        case SQLITE_MISMATCH:
        case SQLITE_CONSTRAINT:
        case SQLITE_SCHEMA:
        case SQLITE_TOOBIG:
        case SQLITE_INTERRUPT:
            return error::kDamaged;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return error::kVolumeMounted;
        default:
            return error::kGeneralFailure;
    }
}

std::string DetailOf(sqlite3* connection, int result) {
    if (result == SQLITE_READONLY_ROLLBACK || result == SQLITE_READONLY_RECOVERY) {
        return "a change was cut short; open the file once where it can be written";
    }
    if (result == SQLITE_IOERR_DATA && connection != nullptr) {
        return "page " + std::to_string(CheckedVfs::GetWrongPage(connection)) +
               " does not match its sum: the medium has changed it";
    }
    if ((result & 0xFF) == SQLITE_INTERRUPT) {
        return "the pages of the database name each other in a circle";
    }
    const std::string text =
        connection == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(connection);
    const std::error_code failure = SystemFailure(connection);
    return failure && (result & 0xFF) == SQLITE_CANTOPEN ? text + ": " + failure.message() : text;
}

void Check(sqlite3_stmt* statement, int result) {
    if (result != SQLITE_OK) {
        ThrowSql(sqlite3_db_handle(statement), result);
    }
}

}  // namespace

StoreFailure SqlFailure(sqlite3* connection, int result) {
    return StoreFailure(CodeOf(connection, result), DetailOf(connection, result));
}

void ThrowSql(sqlite3* connection, int result) {
    throw SqlFailure(connection, result);
}

SqlStatement::SqlStatement(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v3(connection, sql.data(), static_cast<int>(sql.size()),
                                          SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (result != SQLITE_OK) {
        ThrowSql(connection, result);
    }
    m_statement.reset(statement);
}

void SqlStatement::BindInt(int parameter, std::int64_t value) {
    Check(Get(), sqlite3_bind_int64(Get(), parameter, value));
}

void SqlStatement::BindBlob(int parameter, const void* bytes, std::size_t size) {
    Check(Get(), sqlite3_bind_blob64(Get(), parameter, bytes, size, SQLITE_STATIC));
}

void SqlStatement::BindText(int parameter, const std::string& text) {
    Check(Get(), sqlite3_bind_text64(Get(), parameter, text.data(), text.size(), SQLITE_STATIC,
                                     SQLITE_UTF8));
}

void SqlStatement::BindText(int parameter, std::u16string_view text) {
    // SQLite removes a byte-order mark at the start. Of two it removes the first, so the text gets
    // one more.
    const bool marked = !text.empty() && (text.front() == 0xFEFF || text.front() == 0xFFFE);
    const CString twice = marked ? u'\xFEFF' + CString(text) : CString();
    const std::u16string_view bound = marked ? twice : text;
    Check(Get(),
          sqlite3_bind_text64(Get(), parameter,
                              bound.empty() ? "" : reinterpret_cast<const char*>(bound.data()),
                              bound.size() * sizeof(char16_t),
                              marked ? SQLITE_TRANSIENT : SQLITE_STATIC, SQLITE_UTF16));
}

bool SqlStatement::Step() {
    const int result = sqlite3_step(Get());
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result == SQLITE_DONE) {
        return false;
    }
    // By a guard, because making the failure may itself run out of memory, and a statement that is
    // not reset takes no new values.
    const SqlUse reset(*this);
    sqlite3* connection = sqlite3_db_handle(Get());
    ThrowSql(connection, sqlite3_extended_errcode(connection));
}

void SqlStatement::Run() {
    while (Step()) {
    }
    Reset();
}

CString SqlStatement::GetText(int column) const {
    if (sqlite3_column_type(Get(), column) != SQLITE_TEXT) {
        throw StoreFailure(error::kDamaged,
                           "a column that should hold a text holds something else");
    }
    // In this order: asking for the text converts the value, and the size is that of the result.
    const void* text = sqlite3_column_text16(Get(), column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(Get(), column));
    if (text == nullptr) {
        throw StoreFailure(error::kOutOfMemory, "a text");
    }
    if (size % sizeof(char16_t) != 0) {
        throw StoreFailure(error::kDamaged, "a text ends in half a character");
    }
    return {static_cast<const char16_t*>(text), size / sizeof(char16_t)};
}

std::string SqlStatement::GetUtf8(int column) const {
    if (sqlite3_column_type(Get(), column) == SQLITE_NULL) {
        return {};
    }
    const unsigned char* text = sqlite3_column_text(Get(), column);
    if (text == nullptr) {
        throw StoreFailure(error::kOutOfMemory, "a text");
    }
    return {reinterpret_cast<const char*>(text),
            static_cast<std::size_t>(sqlite3_column_bytes(Get(), column))};
}

SqlBudget::SqlBudget(sqlite3* connection) : m_connection(connection) {
    sqlite3_int64 bytes = 0;
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER,
                             static_cast<void*>(&file)) == SQLITE_OK &&
        file != nullptr && file->pMethods != nullptr) {
        file->pMethods->xFileSize(file, &bytes);
    }
    m_ticks = kTicksInAnyCase + bytes / kStepsATick;
    sqlite3_progress_handler(
        connection, kStepsATick,
        [](void* ticks) { return --*static_cast<std::int64_t*>(ticks) < 0 ? 1 : 0; }, &m_ticks);
}

SqlBudget::~SqlBudget() {
    sqlite3_progress_handler(m_connection, 0, nullptr, nullptr);
}

void SqlRun(sqlite3* connection, const std::string& sql) {
    const int result = sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) {
        ThrowSql(connection, sqlite3_extended_errcode(connection));
    }
}

std::int64_t SqlNumber(sqlite3* connection, const std::string& sql) {
    SqlStatement statement(connection, sql);
    return statement.Step() ? sqlite3_column_int64(statement.Get(), 0) : 0;
}

std::string SqlText(sqlite3* connection, const std::string& sql) {
    SqlStatement statement(connection, sql);
    return statement.Step() ? statement.GetUtf8(0) : std::string();
}

}  // namespace cqsurvey
