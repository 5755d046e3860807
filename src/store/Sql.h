#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "cqsurvey/Types.h"
#include "store/Failure.h"

namespace cqsurvey {

/// The failure, with the store's code, that a result code of SQLite stands for.
[[nodiscard]] StoreFailure SqlFailure(sqlite3* connection, int result);
/// Throws it.
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
    /// Keeps every code unit, a byte order mark at the start too. The text must stay as above.
    void BindText(int parameter, std::u16string_view text);

    /// True while there is a row.
    [[nodiscard]] bool Step();

    /// Makes the statement ready for the next use; a failure was reported by Step already.
    void Reset() noexcept { sqlite3_reset(m_statement.get()); }

    /// Runs a statement to its end, past any rows.
    void Run();

    /// A column of the row. Throws 0x30000007 when it holds no text of whole code units.
    [[nodiscard]] CString GetText(int column) const;
    /// A column of the row as UTF-8, empty for NULL.
    [[nodiscard]] std::string GetUtf8(int column) const;

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

/// Ends what SQLite does in a scope with 0x30000007 once it took more steps than the file has
/// bytes: a damaged file whose pages name each other would keep it busy for ever.
class SqlBudget {
 public:
    explicit SqlBudget(sqlite3* connection);
    SqlBudget(const SqlBudget&) = delete;
    SqlBudget& operator=(const SqlBudget&) = delete;
    ~SqlBudget();

 private:
    sqlite3* m_connection;
    std::int64_t m_ticks;
};

/// Runs statements without a result.
void SqlRun(sqlite3* connection, const std::string& sql);

/// The first column of the first row of a query, 0 when there is none.
[[nodiscard]] std::int64_t SqlNumber(sqlite3* connection, const std::string& sql);

/// The same as text.
[[nodiscard]] std::string SqlText(sqlite3* connection, const std::string& sql);

}  // namespace cqsurvey
