#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "cqsurvey/Types.h"
#include "store/Failure.h"

namespace cqsurvey {

// A thin C++ layer over SQLite: owners for connections and statements, and one place where its
// result codes become failures of the store.

/// Translates a result code of SQLite into a failure with the store's code and SQLite's text.
[[nodiscard]] StoreFailure SqlFailure(sqlite3* connection, int result);
/// Throws SqlFailure.
[[noreturn]] void ThrowSql(sqlite3* connection, int result);

struct SqlClose {
    void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
};
using SqlConnection = std::unique_ptr<sqlite3, SqlClose>;

/// A prepared statement, to be used once or kept and used again. Every failure throws StoreFailure.
///
/// A statement that has begun and is not reset holds a read lock and takes no new values. Run
/// resets it, and so does Step on failure; after Step has returned a row, Reset or SqlUse must do
/// it, unless the object is destroyed.
class SqlStatement {
 public:
    SqlStatement() = default;
    SqlStatement(sqlite3* connection, const std::string& sql);

    [[nodiscard]] explicit operator bool() const { return m_statement != nullptr; }
    [[nodiscard]] sqlite3_stmt* Get() const { return m_statement.get(); }

    // Parameters count from 1. Bytes and texts are not copied: they must stay where they are until
    // the statement has run.

    void BindInt(int parameter, std::int64_t value);
    void BindBlob(int parameter, const void* bytes, std::size_t size);
    void BindText(int parameter, const std::string& text);
    /// Keeps every code unit, even a byte-order mark at the start.
    void BindText(int parameter, std::u16string_view text);

    /// Goes to the first or next row. False when there is none.
    [[nodiscard]] bool Step();

    /// Makes the statement ready for its next use. The result is ignored, since Step has reported
    /// any failure.
    void Reset() noexcept { sqlite3_reset(m_statement.get()); }

    /// Runs the statement to its end, ignores any rows, and resets it.
    void Run();

    // Columns count from 0.

    /// A column of the current row. Throws error::kDamaged when it does not hold a text, or one
    /// that ends in half a code unit.
    [[nodiscard]] CString GetText(int column) const;
    /// A column of the current row as UTF-8, empty for NULL.
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

/// Limits the work of SQLite in a scope to what the file can justify.
///
/// In a damaged file, or one made with intent, pages can name each other in a circle, and a
/// statement that follows them never ends. An honest statement over the whole file needs fewer
/// steps of SQLite's machine than the file has bytes. So that is the budget, plus a million steps
/// for small files; a statement that needs more fails with error::kDamaged. The check costs next to
/// nothing, since SQLite asks only every 1000 steps.
///
/// A connection has one budget at a time: do not nest them.
class SqlBudget {
 public:
    explicit SqlBudget(sqlite3* connection);
    SqlBudget(const SqlBudget&) = delete;
    SqlBudget& operator=(const SqlBudget&) = delete;
    ~SqlBudget();

 private:
    sqlite3* m_connection;
    std::int64_t m_ticks;  ///< thousands of steps that are left
};

/// Runs statements without a result.
void SqlRun(sqlite3* connection, const std::string& sql);

/// The first column of the first row of a query, 0 when there is no row.
[[nodiscard]] std::int64_t SqlNumber(sqlite3* connection, const std::string& sql);

/// The same as text, empty when there is no row.
[[nodiscard]] std::string SqlText(sqlite3* connection, const std::string& sql);

}  // namespace cqsurvey
