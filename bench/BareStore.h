#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Survey.h"

namespace cqsurvey::bench {

/// A prepared statement; whatever fails ends the benchmark with std::runtime_error.
class Statement {
 public:
    Statement() = default;
    Statement(sqlite3* connection, const std::string& sql);

    void Bind(int parameter, std::int64_t value);
    void Bind(int parameter, double value);
    /// The text must stay until the statement was run.
    void Bind(int parameter, const CString& text);
    void Bind(int parameter, const std::string& bytes);
    [[nodiscard]] bool Step();
    void Run();
    void Reset() { sqlite3_reset(m_statement.get()); }
    [[nodiscard]] sqlite3_stmt* Get() const { return m_statement.get(); }

 private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

/// The rival: a program of nothing but SQLite, with the columns of the job tables in which points
/// are kept, under the journal mode, the synchronous level, the lock, the page size and the cache
/// of a job. It checks nothing, keeps nothing in memory and writes each record once where it can.
class BareStore {
 public:
    /// Rows a statement at which inserting is fastest.
    static constexpr int kRowsAStatement = 32;

    /// Opens the file, and creates it with its tables where nothing is.
    explicit BareStore(const std::filesystem::path& path);

    void Begin();
    void Commit();
    void Rollback();

    /// Two inserts and two updates: the point, its entity, the entity before it in the chain, and
    /// the chain's header. `number` counts the points of the file from 1.
    void Record(std::uint32_t number, const SurveyPoint& point);
    /// All points of an empty file, several rows a statement.
    void RecordAll(std::span<const SurveyPoint> points);

    /// Reads every column of both tables and sorts the names in natural order.
    [[nodiscard]] std::size_t ScanAndSort();
    /// Reads every point with its coordinates, in record order.
    [[nodiscard]] double Walk();
    /// Adds the index that FindByName needs.
    void IndexNames();
    /// Reads the point of that name with its coordinates.
    [[nodiscard]] double FindByName(const CString& name);
    void Edit(std::uint32_t number, const SurveyPoint& point);
    void Delete(std::uint32_t number);
    /// Counts the rows of both tables.
    [[nodiscard]] std::int64_t Count();

    /// Inserts polylines of `vertices` vertices each, several rows a statement.
    void AddPolylines(std::size_t count, std::span<const SurveyPoint> vertices);

    void Describe(std::uint32_t number, const std::string& text);
    [[nodiscard]] std::size_t Description(std::uint32_t number);
    [[nodiscard]] std::size_t ReadDescriptions();

 private:
    struct Close {
        void operator()(sqlite3* connection) const { sqlite3_close(connection); }
    };

    void Execute(const char* sql);
    Statement& Prepared(Statement& statement, const std::string& sql);

    std::unique_ptr<sqlite3, Close> m_connection;
    Statement m_begin;
    Statement m_commit;
    Statement m_insertPoint;
    Statement m_insertEntity;
    Statement m_setNext;
    Statement m_setPrev;
    Statement m_setTail;
    Statement m_find;
    Statement m_editPoint;
    Statement m_editEntity;
    Statement m_neighbours;
    Statement m_deletePoint;
    Statement m_deleteEntity;
    Statement m_describe;
    Statement m_description;
};

/// Points in the natural order of their names, as a program of its own would sort them.
struct SortedName {
    std::u16string prefix;
    std::int32_t number;
    std::uint32_t point;

    SortedName(std::u16string_view name, std::uint32_t handle);
    [[nodiscard]] bool operator<(const SortedName& other) const {
        const int order = prefix.compare(other.prefix);
        return order != 0 ? order < 0
                          : (number != other.number ? number < other.number : point > other.point);
    }
};

}  // namespace cqsurvey::bench
