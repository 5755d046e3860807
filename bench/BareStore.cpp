#include "BareStore.h"

#include <algorithm>
#include <stdexcept>

namespace cqsurvey::bench {

namespace {

constexpr int kPointColumns = 9;
constexpr int kEntityColumns = 10;
constexpr int kVertexColumns = 3;
constexpr std::int64_t kRecordedAt = 1718600000;
constexpr std::int64_t kOrigin = 1;
constexpr std::int64_t kLayer = 1;
constexpr std::int64_t kColor = 256;
constexpr std::int64_t kVertexType = 2;

constexpr const char* kTables =
    "CREATE TABLE _PointData (Record INTEGER PRIMARY KEY,"
    " PointNumber INTEGER NOT NULL, PointName TEXT NOT NULL, FeatureFlags INTEGER NOT NULL,"
    " FeatureCode INTEGER NOT NULL, RecTime INTEGER NOT NULL, DataOrigin INTEGER NOT NULL,"
    " EntityIndex INTEGER NOT NULL, GroupIndex INTEGER NOT NULL) STRICT;"
    "CREATE TABLE _EntityData (Record INTEGER PRIMARY KEY,"
    " ObjectType INTEGER NOT NULL, ObjectIndex INTEGER NOT NULL, LayerIndex INTEGER NOT NULL,"
    " ColorID INTEGER NOT NULL, N ANY, E ANY, Z ANY, PrevEntityIndex INTEGER NOT NULL,"
    " NextEntityIndex INTEGER NOT NULL) STRICT;"
    "CREATE TABLE _PlineData (Record INTEGER PRIMARY KEY,"
    " FeatureCode INTEGER NOT NULL, LineID INTEGER NOT NULL, minX ANY, minY ANY, maxX ANY,"
    " maxY ANY, VertexIndex INTEGER NOT NULL) STRICT;"
    "CREATE TABLE _VertexData (Record INTEGER PRIMARY KEY,"
    " Bulge ANY, PlineIndex INTEGER NOT NULL) STRICT;"
    "CREATE TABLE Description (Record INTEGER PRIMARY KEY, Text BLOB NOT NULL) STRICT;"
    "INSERT INTO _EntityData VALUES(1,0,0,0,0,0.0,0.0,0.0,0,0);";

void Check(int result) {
    if (result != SQLITE_OK) {
        throw std::runtime_error(std::string("the bare store: ") + sqlite3_errstr(result));
    }
}

std::string Insert(const std::string& table, int columns, int rows) {
    std::string row = "(?";
    for (int i = 1; i < columns; ++i) {
        row += ",?";
    }
    row += ")";
    std::string sql = "INSERT INTO " + table + " VALUES" + row;
    for (int i = 1; i < rows; ++i) {
        sql += "," + row;
    }
    return sql;
}

void BindPoint(Statement& insert, int first, std::uint32_t number, const SurveyPoint& point) {
    insert.Bind(first, std::int64_t{number});
    insert.Bind(first + 1, std::int64_t{number});
    insert.Bind(first + 2, point.name);
    insert.Bind(first + 3, std::int64_t{0});
    insert.Bind(first + 4, std::int64_t{point.code});
    insert.Bind(first + 5, kRecordedAt);
    insert.Bind(first + 6, kOrigin);
    insert.Bind(first + 7, std::int64_t{number} + 1);
    insert.Bind(first + 8, std::int64_t{0});
}

void BindEntity(Statement& insert, int first, std::uint32_t number, std::int64_t type,
                std::uint32_t object, const SurveyPoint& point, std::uint32_t next) {
    insert.Bind(first, std::int64_t{number});
    insert.Bind(first + 1, type);
    insert.Bind(first + 2, std::int64_t{object});
    insert.Bind(first + 3, kLayer);
    insert.Bind(first + 4, kColor);
    insert.Bind(first + 5, point.coords[1]);
    insert.Bind(first + 6, point.coords[0]);
    insert.Bind(first + 7, point.coords[2]);
    insert.Bind(first + 8, number == 2 ? std::int64_t{0} : std::int64_t{number} - 1);
    insert.Bind(first + 9, std::int64_t{next});
}

/// Runs `bind(statement, first parameter, row)` and inserts, several rows a statement.
template <class BindRow>
void InsertRows(sqlite3* connection, const std::string& table, int columns, std::size_t count,
                BindRow&& bind) {
    constexpr std::size_t kRows = BareStore::kRowsAStatement;
    Statement many(connection, Insert(table, columns, BareStore::kRowsAStatement));
    std::size_t row = 0;
    for (; row + kRows <= count; row += kRows) {
        for (std::size_t i = 0; i < kRows; ++i) {
            bind(many, static_cast<int>(i) * columns + 1, row + i);
        }
        many.Run();
    }
    Statement one(connection, Insert(table, columns, 1));
    for (; row < count; ++row) {
        bind(one, 1, row);
        one.Run();
    }
}

/// Reads every column of every row.
template <class Take>
void Scan(sqlite3* connection, const std::string& sql, Take&& take) {
    Statement rows(connection, sql);
    const int columns = sqlite3_column_count(rows.Get());
    std::int64_t numbers = 0;
    double reals = 0;
    while (rows.Step()) {
        for (int i = 0; i < columns; ++i) {
            switch (sqlite3_column_type(rows.Get(), i)) {
                case SQLITE_INTEGER:
                    numbers += sqlite3_column_int64(rows.Get(), i);
                    break;
                case SQLITE_FLOAT:
                    reals += sqlite3_column_double(rows.Get(), i);
                    break;
                default: {
                    const int size = sqlite3_column_bytes16(rows.Get(), i);
                    const void* text = sqlite3_column_text16(rows.Get(), i);
                    take(std::u16string_view(static_cast<const char16_t*>(text),
                                             static_cast<std::size_t>(size) / 2),
                         static_cast<std::uint32_t>(sqlite3_column_int64(rows.Get(), 0)));
                }
            }
        }
    }
    if (numbers == 0 || reals == -1.0) {
        throw std::runtime_error("the bare store: nothing was read");
    }
}

}  // namespace

Statement::Statement(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v3(connection, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement,
                             nullptr));
    m_statement.reset(statement);
}

void Statement::Bind(int parameter, std::int64_t value) {
    sqlite3_bind_int64(Get(), parameter, value);
}

void Statement::Bind(int parameter, double value) {
    sqlite3_bind_double(Get(), parameter, value);
}

void Statement::Bind(int parameter, const CString& text) {
    sqlite3_bind_text16(Get(), parameter, text.data(), static_cast<int>(text.size() * 2),
                        SQLITE_STATIC);
}

void Statement::Bind(int parameter, const std::string& bytes) {
    sqlite3_bind_blob64(Get(), parameter, bytes.data(), bytes.size(), SQLITE_STATIC);
}

bool Statement::Step() {
    const int result = sqlite3_step(Get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        Check(result);
    }
    return result == SQLITE_ROW;
}

void Statement::Run() {
    while (Step()) {
    }
    Reset();
}

BareStore::BareStore(const std::filesystem::path& path) {
    sqlite3* opened = nullptr;
    const bool fresh = !std::filesystem::exists(path);
    Check(sqlite3_open_v2(path.c_str(), &opened,
                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                          nullptr));
    m_connection.reset(opened);
    Execute(
        "PRAGMA page_size=4096; PRAGMA encoding='UTF-16le'; PRAGMA locking_mode=EXCLUSIVE;"
        "PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL; PRAGMA cache_size=-8000;"
        "PRAGMA temp_store=MEMORY; BEGIN EXCLUSIVE; COMMIT;");
    if (fresh) {
        Begin();
        Execute(kTables);
        Commit();
    }
}

void BareStore::Execute(const char* sql) {
    Check(sqlite3_exec(m_connection.get(), sql, nullptr, nullptr, nullptr));
}

Statement& BareStore::Prepared(Statement& statement, const std::string& sql) {
    if (statement.Get() == nullptr) {
        statement = Statement(m_connection.get(), sql);
    }
    return statement;
}

void BareStore::Begin() {
    Prepared(m_begin, "BEGIN").Run();
}

void BareStore::Commit() {
    Prepared(m_commit, "COMMIT").Run();
}

void BareStore::Rollback() {
    Execute("ROLLBACK");
}

void BareStore::Record(std::uint32_t number, const SurveyPoint& point) {
    Statement& insertPoint = Prepared(m_insertPoint, Insert("_PointData", kPointColumns, 1));
    BindPoint(insertPoint, 1, number, point);
    insertPoint.Run();
    Statement& insertEntity = Prepared(m_insertEntity, Insert("_EntityData", kEntityColumns, 1));
    BindEntity(insertEntity, 1, number + 1, 0, number, point, 0);
    insertEntity.Run();
    Statement& setNext =
        Prepared(m_setNext, "UPDATE _EntityData SET NextEntityIndex=?1 WHERE Record=?2");
    setNext.Bind(1, std::int64_t{number} + 1);
    setNext.Bind(2, std::int64_t{number});
    setNext.Run();
    Statement& setTail =
        Prepared(m_setTail, "UPDATE _EntityData SET PrevEntityIndex=?1 WHERE Record=1");
    setTail.Bind(1, std::int64_t{number} + 1);
    setTail.Run();
}

void BareStore::RecordAll(std::span<const SurveyPoint> points) {
    Begin();
    InsertRows(m_connection.get(), "_PointData", kPointColumns, points.size(),
               [&](Statement& insert, int first, std::size_t row) {
                   BindPoint(insert, first, static_cast<std::uint32_t>(row + 1), points[row]);
               });
    InsertRows(m_connection.get(), "_EntityData", kEntityColumns, points.size(),
               [&](Statement& insert, int first, std::size_t row) {
                   const auto number = static_cast<std::uint32_t>(row + 1);
                   BindEntity(insert, first, number + 1, 0, number, points[row],
                              number < points.size() ? number + 2 : 0);
               });
    Statement header(m_connection.get(),
                     "UPDATE _EntityData SET PrevEntityIndex=?1, NextEntityIndex=2 WHERE Record=1");
    header.Bind(1, static_cast<std::int64_t>(points.size()) + 1);
    header.Run();
    Commit();
}

SortedName::SortedName(std::u16string_view name, std::uint32_t handle) : number(-1), point(handle) {
    std::size_t digits = name.size();
    while (digits > 0 && name[digits - 1] >= u'0' && name[digits - 1] <= u'9') {
        --digits;
    }
    if (digits < name.size()) {
        number = 0;
        for (const char16_t digit : name.substr(digits)) {
            number = number * 10 + (digit - u'0');
        }
    }
    prefix = name.substr(0, digits);
}

std::size_t BareStore::ScanAndSort() {
    std::vector<SortedName> names;
    Scan(m_connection.get(), "SELECT * FROM _PointData",
         [&](std::u16string_view name, std::uint32_t point) { names.emplace_back(name, point); });
    Scan(m_connection.get(), "SELECT * FROM _EntityData", [](auto, auto) {});
    std::sort(names.begin(), names.end());
    return names.size();
}

double BareStore::Walk() {
    Statement rows(m_connection.get(),
                   "SELECT p.PointName, p.FeatureCode, p.DataOrigin, p.GroupIndex, p.FeatureFlags,"
                   " p.RecTime, e.E, e.N, e.Z FROM _PointData p JOIN _EntityData e"
                   " ON e.Record = p.EntityIndex ORDER BY p.Record");
    double sum = 0;
    while (rows.Step()) {
        sum += sqlite3_column_text16(rows.Get(), 0) != nullptr ? 1 : 0;
        for (int i = 1; i < 6; ++i) {
            sum += static_cast<double>(sqlite3_column_int64(rows.Get(), i));
        }
        for (int i = 6; i < 9; ++i) {
            sum += sqlite3_column_double(rows.Get(), i);
        }
    }
    return sum;
}

void BareStore::IndexNames() {
    Execute("CREATE UNIQUE INDEX Names ON _PointData(PointName)");
}

double BareStore::FindByName(const CString& name) {
    Statement& find = Prepared(m_find, "SELECT Record FROM _PointData WHERE PointName=?1");
    find.Bind(1, name);
    const double found =
        find.Step() ? static_cast<double>(sqlite3_column_int64(find.Get(), 0)) : 0.0;
    find.Reset();
    return found;
}

void BareStore::Edit(std::uint32_t number, const SurveyPoint& point) {
    Statement& entity =
        Prepared(m_editEntity, "UPDATE _EntityData SET N=?1, E=?2, Z=?3 WHERE Record=?4");
    entity.Bind(1, point.coords[1]);
    entity.Bind(2, point.coords[0]);
    entity.Bind(3, point.coords[2]);
    entity.Bind(4, std::int64_t{number} + 1);
    entity.Run();
    Statement& code = Prepared(m_editPoint, "UPDATE _PointData SET FeatureCode=?1 WHERE Record=?2");
    code.Bind(1, std::int64_t{point.code});
    code.Bind(2, std::int64_t{number});
    code.Run();
}

void BareStore::Delete(std::uint32_t number) {
    Statement& neighbours = Prepared(
        m_neighbours, "SELECT PrevEntityIndex, NextEntityIndex FROM _EntityData WHERE Record=?1");
    neighbours.Bind(1, std::int64_t{number} + 1);
    const bool found = neighbours.Step();
    const std::int64_t prev = found ? sqlite3_column_int64(neighbours.Get(), 0) : 0;
    const std::int64_t next = found ? sqlite3_column_int64(neighbours.Get(), 1) : 0;
    neighbours.Reset();
    Statement& point = Prepared(m_deletePoint, "DELETE FROM _PointData WHERE Record=?1");
    point.Bind(1, std::int64_t{number});
    point.Run();
    Statement& entity = Prepared(m_deleteEntity, "DELETE FROM _EntityData WHERE Record=?1");
    entity.Bind(1, std::int64_t{number} + 1);
    entity.Run();
    Statement& setNext =
        Prepared(m_setNext, "UPDATE _EntityData SET NextEntityIndex=?1 WHERE Record=?2");
    setNext.Bind(1, next);
    setNext.Bind(2, prev == 0 ? 1 : prev);
    setNext.Run();
    Statement& setPrev =
        Prepared(m_setPrev, "UPDATE _EntityData SET PrevEntityIndex=?1 WHERE Record=?2");
    setPrev.Bind(1, prev);
    setPrev.Bind(2, next == 0 ? 1 : next);
    setPrev.Run();
}

std::int64_t BareStore::Count() {
    Statement count(
        m_connection.get(),
        "SELECT (SELECT count(*) FROM _PointData) + (SELECT count(*) FROM _EntityData)");
    return count.Step() ? sqlite3_column_int64(count.Get(), 0) : 0;
}

void BareStore::AddPolylines(std::size_t count, std::span<const SurveyPoint> vertices) {
    Begin();
    const std::size_t each = vertices.size() + 1;
    Statement pline(m_connection.get(), Insert("_PlineData", 8, 1));
    for (std::size_t i = 0; i < count; ++i) {
        pline.Bind(1, static_cast<std::int64_t>(i + 1));
        pline.Bind(2, std::int64_t{7});
        pline.Bind(3, kColor);
        for (int column = 4; column < 8; ++column) {
            pline.Bind(column, vertices[0].coords[0]);
        }
        pline.Bind(8, std::int64_t{0});
        pline.Run();
    }
    InsertRows(m_connection.get(), "_VertexData", kVertexColumns, count * vertices.size(),
               [&](Statement& insert, int first, std::size_t row) {
                   insert.Bind(first, static_cast<std::int64_t>(row + 1));
                   insert.Bind(first + 1, 0.25);
                   insert.Bind(first + 2,
                               static_cast<std::int64_t>(row / vertices.size() * each + 2));
               });
    InsertRows(m_connection.get(), "_EntityData", kEntityColumns, count * each,
               [&](Statement& insert, int first, std::size_t row) {
                   const auto number = static_cast<std::uint32_t>(row + 2);
                   const std::size_t vertex = row % each;
                   BindEntity(insert, first, number, vertex == 0 ? 1 : kVertexType, number,
                              vertices[vertex == 0 ? 0 : vertex - 1], number + 1);
               });
    Commit();
}

void BareStore::Describe(std::uint32_t number, const std::string& text) {
    Statement& describe = Prepared(m_describe, Insert("Description", 2, 1));
    describe.Bind(1, std::int64_t{number});
    describe.Bind(2, text);
    describe.Run();
}

std::size_t BareStore::Description(std::uint32_t number) {
    Statement& read = Prepared(m_description, "SELECT Text FROM Description WHERE Record=?1");
    read.Bind(1, std::int64_t{number});
    const auto size =
        read.Step() ? static_cast<std::size_t>(sqlite3_column_bytes(read.Get(), 0)) : 0U;
    read.Reset();
    return size;
}

std::size_t BareStore::ReadDescriptions() {
    Statement rows(m_connection.get(), "SELECT Record, Text FROM Description");
    std::size_t bytes = 0;
    while (rows.Step()) {
        bytes += sqlite3_column_blob(rows.Get(), 1) != nullptr
                     ? static_cast<std::size_t>(sqlite3_column_bytes(rows.Get(), 1))
                     : 0U;
    }
    return bytes;
}

}  // namespace cqsurvey::bench
