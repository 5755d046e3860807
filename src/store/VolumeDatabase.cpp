#include "store/VolumeDatabase.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <string_view>
#include <system_error>

#include "platform/System.h"
#include "store/VolumePath.h"

namespace cqsurvey {

namespace {

/// "CqSv", in the database header, where tools such as `file` look for it.
constexpr std::uint32_t kApplicationId = 0x43715376;

/// A memo, the largest single value, may have this many bytes.
constexpr int kMostValueBytes = 64 << 20;

constexpr std::array<const char*, 4> kSystemTables{
    "CREATE TABLE Volume_File (\n"
    "  File INTEGER PRIMARY KEY,\n"
    "  Name TEXT NOT NULL UNIQUE,\n"
    "  Length INTEGER NOT NULL,\n"
    "  Attributes INTEGER NOT NULL\n"
    ") STRICT",
    "CREATE TABLE Volume_Block (\n"
    "  Position INTEGER PRIMARY KEY,\n"
    "  Bytes BLOB NOT NULL\n"
    ") STRICT",
    "CREATE TABLE Volume_Memo (\n"
    "  Reference INTEGER PRIMARY KEY,\n"
    "  Text TEXT NOT NULL\n"
    ") STRICT",
    "CREATE TABLE Volume_Number (\n"
    "  Name TEXT PRIMARY KEY,\n"
    "  Highest INTEGER NOT NULL\n"
    ") STRICT, WITHOUT ROWID"};

/// The index that keeps the file names unique.
constexpr std::array<const char*, 1> kSystemIndexes{"sqlite_autoindex_Volume_File_1"};
/// What AUTOINCREMENT and ANALYZE leave in a database.
constexpr std::array<const char*, 3> kHarmlessTables{"sqlite_sequence", "sqlite_stat1",
                                                     "sqlite_stat4"};

template <std::size_t N>
bool Contains(const std::array<const char*, N>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string SystemTableName(const std::string& sql) {
    const std::size_t from = std::strlen("CREATE TABLE ");
    return sql.substr(from, sql.find(' ', from) - from);
}

/// Reads the database header of a file that is not mounted, so that a file of another kind is never
/// opened as a database: SQLite might change it, by rolling back a journal that lies beside it.
/// Returns true when another tool has switched the file to a write-ahead log.
bool CheckHeader(const std::string& path) {
    constexpr std::size_t kHeader = 100;
    constexpr std::size_t kWriteVersion = 18;
    constexpr unsigned char kLogged = 2;
    constexpr std::size_t kUserVersion = 60;
    constexpr std::size_t kApplication = 68;
    std::error_code failure;
    system::Descriptor file(path, system::Descriptor::Mode::Read, failure);
    std::array<unsigned char, kHeader> header{};
    std::size_t size = 0;
    for (std::size_t got = 1; !failure && got > 0 && size < kHeader; size += got) {
        got = file.Read(header.data() + size, kHeader - size, failure);
    }
    if (failure) {
        ThrowSystem(failure, path);
    }
    const auto number = [&](std::size_t at) {
        return (std::uint32_t{header[at]} << 24) | (std::uint32_t{header[at + 1]} << 16) |
               (std::uint32_t{header[at + 2]} << 8) | std::uint32_t{header[at + 3]};
    };
    if (size < kHeader || std::memcmp(header.data(), "SQLite format 3", 16) != 0 ||
        number(kApplication) != kApplicationId || number(kUserVersion) == 0) {
        throw StoreFailure(error::kDamaged, path + " is not a job");
    }
    if (number(kUserVersion) > VolumeDatabase::kFormatVersion) {
        throw StoreFailure(error::kNewerVersion,
                           path + " has format version " + std::to_string(number(kUserVersion)));
    }
    return header[kWriteVersion] == kLogged || header[kWriteVersion + 1] == kLogged;
}

/// Runs `body` and puts the path before the text of what it throws. SQLite's own texts do not name
/// the file.
template <class Body>
auto NamingPath(const std::string& path, Body body) {
    try {
        return body();
    } catch (const StoreFailure& failure) {
        throw StoreFailure(failure.code, path + ": " + failure.detail);
    }
}

SqlConnection OpenDatabase(const std::string& name, int flags) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(
        name.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    SqlConnection connection(opened);
    if (result != SQLITE_OK) {
        ThrowSql(opened, result);
    }
    return connection;
}

/// Opens a file that another tool switched to a write-ahead log and that may only be read. SQLite
/// would have to create the log's files to read it, unless it is told that the file never changes.
/// That is true as long as the log holds nothing.
SqlConnection OpenUnchanging(const std::string& path) {
    std::error_code failure;
    const auto log = system::Identify(path + "-wal", failure);
    if (log && log->size != 0) {
        throw StoreFailure(error::kAccessDenied,
                           path +
                               ": another tool has left a log beside it; open the file once "
                               "where it can be written");
    }
    std::string name = "file:";
    for (const char c : system::AbsolutePath(path)) {
        switch (c) {
            case '%':
                name += "%25";
                break;
            case '?':
                name += "%3f";
                break;
            case '#':
                name += "%23";
                break;
            default:
                name += c;
                break;
        }
    }
    return OpenDatabase(name + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
}

/// Opens an existing database, for writing if the system allows that and `readOnly` is false.
SqlConnection OpenChecked(const std::string& path, bool readOnly) {
    RequireShortEnough(path);
    const bool logged = CheckHeader(path);
    SqlConnection connection = NamingPath(path, [&] {
        return OpenDatabase(system::AbsolutePath(path),
                            readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    });
    if (logged && sqlite3_db_readonly(connection.get(), "main") != 0) {
        connection = OpenUnchanging(path);
    }
    return connection;
}

/// Turns an empty file into an empty volume and makes it durable.
void FillNew(const std::string& path) {
    // An absolute path is never mistaken for a URI.
    const std::string absolute = system::AbsolutePath(path);
    SqlConnection connection = OpenDatabase(absolute, SQLITE_OPEN_READWRITE);
    std::string sql =
        "PRAGMA page_size=4096;"
        "PRAGMA encoding='UTF-16le';"
        "PRAGMA journal_mode=DELETE;"
        "PRAGMA synchronous=FULL;"
        "BEGIN;"
        "PRAGMA application_id=" +
        std::to_string(kApplicationId) +
        ";"
        "PRAGMA user_version=" +
        std::to_string(VolumeDatabase::kFormatVersion) + ";";
    for (const char* table : kSystemTables) {
        sql += table;
        sql += ";";
    }
    SqlRun(connection.get(), sql + "COMMIT;");
    connection.reset();
    system::SyncFolderOf(absolute);
}

/// Makes the file of an empty volume. Failures speak of `path`, under which people know it.
void MakeFile(const std::string& file, const std::string& path) {
    // The file is created by a call that fails if anything is there. SQLite has no such call: it
    // would open a file that appeared after the checks above.
    std::error_code failure;
    { const system::Descriptor made(file, system::Descriptor::Mode::CreateNew, failure); }
    if (failure) {
        ThrowSystem(failure, path);
    }
    try {
        NamingPath(path, [&] { FillNew(file); });
    } catch (...) {
        system::Remove(file);
        system::Remove(file + "-journal");
        throw;
    }
}

}  // namespace

void VolumeDatabase::Create(const std::string& path) {
    RequireShortEnough(path);
    RequireFree(path);
    RequireNoneBeside(path);
    MakeFile(path, path);
}

void VolumeDatabase::CreateDraft(const std::string& path) {
    RequireShortEnough(path);
    RequireFree(path);
    RequireNoneBeside(path);
    const std::string draft = VolumeDraftPath(path);
    if (system::IsTaken(draft)) {
        try {
            const SqlConnection left =
                OpenDatabase(system::AbsolutePath(draft), SQLITE_OPEN_READWRITE);
            SqlRun(left.get(), "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT;");
        } catch (const StoreFailure& failure) {
            if (failure.code == error::kVolumeMounted) {
                throw StoreFailure(failure.code, path + " is being created by another program");
            }
            // Whatever else it is, it is half a draft.
        }
        system::Remove(draft);
        system::Remove(draft + "-journal");
    }
    MakeFile(draft, path);
}

void VolumeDatabase::Publish(const std::string& path) {
    std::error_code failure;
    const std::string draft = VolumeDraftPath(path);
    // Its last step was committed, so a journal that could not be removed at the close is inert.
    system::Remove(draft + "-journal");
    system::RenameNew(draft, path, failure);
    if (failure) {
        system::Remove(draft);
        ThrowSystem(failure, path);
    }
    system::SyncFolderOf(system::AbsolutePath(path));
}

VolumeDatabase::Identity VolumeDatabase::Identify(const std::string& path) {
    RequireShortEnough(path);
    std::error_code failure;
    const auto status = system::Identify(path, failure);
    if (!status) {
        ThrowSystem(failure, path);
    }
    if (status->kind != system::FileStatus::Kind::File) {
        throw StoreFailure(error::kDamaged, path + " is not a file");
    }
    return status->identity;
}

VolumeDatabase::VolumeDatabase(const std::string& path, bool readOnly)
    : m_connection(OpenChecked(path, readOnly)), m_path(path) {
    // The switches come first, because they must hold whenever the database is read. The length
    // comes last, because it means something only when nobody else can change it.
    Examine([&] {
        Configure();
        Lock();
        CheckLength();
    });
}

std::string VolumeDatabase::GetPath() const {
    return sqlite3_db_filename(m_connection.get(), "main");
}

void VolumeDatabase::Remove(const std::string& path, const Identity& identity) noexcept {
    std::error_code failure;
    const auto status = system::IdentifyLink(path, failure);
    if (status && status->identity == identity) {
        system::Remove(path);
        system::Remove(path + "-journal");
    }
}

void VolumeDatabase::Configure() {
    sqlite3* connection = m_connection.get();
    constexpr std::array<std::pair<int, int>, 7> kSwitches{{
        {SQLITE_DBCONFIG_DEFENSIVE, 1},
        {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
        {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
        {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
        {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
        {SQLITE_DBCONFIG_DQS_DML, 0},
        {SQLITE_DBCONFIG_DQS_DDL, 0},
    }};
    for (const auto& [what, on] : kSwitches) {
        if (sqlite3_db_config(connection, what, on, nullptr) != SQLITE_OK) {
            throw StoreFailure(error::kGeneralFailure, "a safety switch of the database failed");
        }
    }
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, kMostValueBytes);
    sqlite3_limit(connection, SQLITE_LIMIT_SQL_LENGTH, 1 << 20);
    sqlite3_limit(connection, SQLITE_LIMIT_ATTACHED, 0);
    // Views are switched off, but SQLite parses those that people added with other tools when it
    // reads the schema. This limit lets any sensible one through.
    sqlite3_limit(connection, SQLITE_LIMIT_EXPR_DEPTH, 200);
    sqlite3_limit(connection, SQLITE_LIMIT_TRIGGER_DEPTH, 1);
    sqlite3_limit(connection, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100);
    SqlRun(connection,
           "PRAGMA locking_mode=EXCLUSIVE;"
           "PRAGMA mmap_size=0;"
           "PRAGMA cell_size_check=ON;"
           "PRAGMA foreign_keys=OFF;"
           "PRAGMA temp_store=MEMORY;"
           "PRAGMA cache_size=-8000;"
           "PRAGMA synchronous=FULL;");
}

void VolumeDatabase::Lock() {
    sqlite3* connection = m_connection.get();
    m_readOnly = sqlite3_db_readonly(connection, "main") != 0;
    if (m_readOnly) {
        // In exclusive locking mode the shared lock of this read is never released, and it keeps
        // every writer out.
        (void)SqlNumber(connection, "SELECT count(*) FROM sqlite_schema");
        return;
    }
    SqlRun(connection, "BEGIN EXCLUSIVE; COMMIT;");
    if (SqlText(connection, "PRAGMA journal_mode") != "delete") {
        // Another tool has switched the file to a write-ahead log. A job is one file: switch back.
        (void)SqlText(connection, "PRAGMA journal_mode=DELETE");
    }
    RemoveInertJournal();
}

/// Removes a journal without content, which is left when the medium failed at the very end of a
/// commit. The lock is held, so nobody else can be using it; a journal that this connection has
/// open is left to SQLite.
void VolumeDatabase::RemoveInertJournal() {
    sqlite3_file* journal = nullptr;
    if (sqlite3_file_control(m_connection.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER,
                             static_cast<void*>(&journal)) == SQLITE_OK &&
        journal != nullptr && journal->pMethods == nullptr) {
        system::Remove(sqlite3_filename_journal(sqlite3_db_filename(m_connection.get(), "main")));
    }
}

void VolumeDatabase::CheckLength() const {
    const std::int64_t expected = SqlNumber(m_connection.get(), "PRAGMA page_count") *
                                  SqlNumber(m_connection.get(), "PRAGMA page_size");
    std::error_code failure;
    const auto status = system::Identify(m_path, failure);
    if (!status) {
        ThrowSystem(failure, m_path);
    }
    if (static_cast<std::int64_t>(status->size) < expected) {
        throw StoreFailure(error::kDamaged, "the file has " + std::to_string(status->size) +
                                                " bytes and should have " +
                                                std::to_string(expected));
    }
}

std::vector<VolumeDatabase::Table> VolumeDatabase::ListTables() const {
    sqlite3* connection = m_connection.get();
    if (SqlText(connection, "PRAGMA encoding") != "UTF-16le") {
        throw StoreFailure(error::kDamaged, "the texts are not stored as UTF-16le");
    }
    std::vector<Table> tables;
    std::set<std::string> system;
    for (const char* sql : kSystemTables) {
        system.insert(sql);
    }
    std::set<std::string> indexes(kSystemIndexes.begin(), kSystemIndexes.end());
    // Two tables on the same pages would change each other's rows.
    std::set<std::int64_t> roots;
    SqlStatement rows(connection, "SELECT type, name, tbl_name, sql, rootpage FROM sqlite_schema");
    while (rows.Step()) {
        const std::string type = rows.GetUtf8(0);
        const std::string name = rows.GetUtf8(1);
        const std::string table = rows.GetUtf8(2);
        const std::string sql = rows.GetUtf8(3);
        if (type == "view" && sql.starts_with("CREATE VIEW ")) {
            continue;
        }
        const bool own = type == "index" && sql.empty() && indexes.erase(name) != 0;
        if (type != "table" && !own) {
            throw StoreFailure(error::kDamaged,
                               "the file holds a foreign " + type + " \"" + name + "\"");
        }
        const std::int64_t root = sqlite3_column_int64(rows.Get(), 4);
        if (root < 2 || !roots.insert(root).second) {
            throw StoreFailure(error::kDamaged,
                               type + " \"" + name + "\" begins at page " + std::to_string(root));
        }
        if (own) {
            continue;
        }
        if (Contains(kHarmlessTables, name)) {
            continue;
        }
        if (system.erase(sql) != 0 && name == SystemTableName(sql)) {
            continue;
        }
        if (!RecordFormat::IsName(name) || name != table) {
            throw StoreFailure(error::kDamaged, "the file holds a foreign table \"" + name + "\"");
        }
        tables.push_back({name, RecordFormat(name, sql)});
    }
    if (!system.empty()) {
        throw StoreFailure(error::kDamaged,
                           "table " + SystemTableName(*system.begin()) + " is missing");
    }
    if (!indexes.empty()) {
        throw StoreFailure(error::kDamaged, "index " + *indexes.begin() + " is missing");
    }
    return tables;
}

}  // namespace cqsurvey
