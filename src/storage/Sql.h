#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

namespace cqsurvey {

/// Throws StoreFailure with the store's code for a result code of SQLite.
[[noreturn]] void ThrowSql(sqlite3* connection, int result);

struct SqlClose {
    void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
};
using SqlConnection = std::unique_ptr<sqlite3, SqlClose>;

/// A prepared statement. Every failure throws StoreFailure.
class SqlStatement {
 public:
    SqlStatement() = default;
    SqlStatement(sqlite3* connection, const std::string& sql);

    [[nodiscard]] explicit operator bool() const { return m_statement != nullptr; }
    [[nodiscard]] sqlite3_stmt* Get() const { return m_statement.get(); }

    void BindInt(int parameter, std::int64_t value);
    void BindBlob(int parameter, const void* bytes, std::size_t size);
    /// The text must stay until the statement was run.
    void BindText(int parameter, const std::string& text);

    /// True while there is a row.
    [[nodiscard]] bool Step();

    /// Makes the statement ready for the next use; a failure was reported by Step already.
    void Reset() noexcept { sqlite3_reset(m_statement.get()); }

    /// Runs a statement that gives no row.
    void Run();

 private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };

    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

/// Resets a statement at the end of a scope.
class SqlUse {
 public:
    explicit SqlUse(SqlStatement& statement) : m_statement(statement) {}
    SqlUse(const SqlUse&) = delete;
    SqlUse& operator=(const SqlUse&) = delete;
    ~SqlUse() { m_statement.Reset(); }

 private:
    SqlStatement& m_statement;
};

/// Runs statements without a result.
void SqlRun(sqlite3* connection, const std::string& sql);

/// The first column of the first row of a query, 0 when there is none.
[[nodiscard]] std::int64_t SqlNumber(sqlite3* connection, const std::string& sql);

/// The same as text.
[[nodiscard]] std::string SqlText(sqlite3* connection, const std::string& sql);

}  // namespace cqsurvey
