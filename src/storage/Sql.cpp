#include "storage/Sql.h"

#include "storage/StoreFailure.h"

namespace cqsurvey {

namespace {

std::int32_t CodeOf(int result) {
    switch (result & 0xFF) {
        case SQLITE_NOMEM:
            return error::kOutOfMemory;
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
        case SQLITE_CANTOPEN:
            return error::kAccessDenied;
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
            return error::kDamaged;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return error::kVolumeMounted;
        case SQLITE_TOOBIG:
        case SQLITE_RANGE:
            return error::kInvalidArgument;
        default:
            return error::kGeneralFailure;
    }
}

void Check(sqlite3_stmt* statement, int result) {
    if (result != SQLITE_OK) {
        ThrowSql(sqlite3_db_handle(statement), result);
    }
}

}  // namespace

void ThrowSql(sqlite3* connection, int result) {
    throw StoreFailure(CodeOf(result),
                       connection == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(connection));
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

bool SqlStatement::Step() {
    const int result = sqlite3_step(Get());
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result == SQLITE_DONE) {
        return false;
    }
    sqlite3* connection = sqlite3_db_handle(Get());
    const int extended = sqlite3_extended_errcode(connection);
    const StoreFailure failure(CodeOf(extended), sqlite3_errmsg(connection));
    Reset();
    throw failure;
}

void SqlStatement::Run() {
    while (Step()) {
    }
    Reset();
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
    if (!statement.Step()) {
        return {};
    }
    const unsigned char* text = sqlite3_column_text(statement.Get(), 0);
    return text == nullptr
               ? std::string()
               : std::string(reinterpret_cast<const char*>(text),
                             static_cast<std::size_t>(sqlite3_column_bytes(statement.Get(), 0)));
}

}  // namespace cqsurvey
