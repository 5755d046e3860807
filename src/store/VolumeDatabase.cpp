#include "store/VolumeDatabase.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <string_view>

namespace cqsurvey {

namespace {

/// "CqSv", in the database header where every tool finds it.
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

/// The index that keeps the file names unique, and what other tools may leave in any database.
constexpr std::array<const char*, 1> kSystemIndexes{"sqlite_autoindex_Volume_File_1"};
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

std::string AbsolutePath(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    return failure ? path : absolute.string();
}

[[noreturn]] void ThrowSystem(int number, const std::string& path) {
    std::int32_t code = error::kReadWriteFailed;
    if (number == EEXIST) {
        code = error::kFileExists;
    } else if (number == EACCES || number == EPERM || number == EROFS) {
        code = error::kAccessDenied;
    } else if (number == ENOSPC || number == EDQUOT) {
        code = error::kVolumeFull;
    } else if (number == ENOENT || number == ENOTDIR) {
        code = error::kNoVolume;
    } else if (number == ENAMETOOLONG || number == EINVAL || number == ELOOP) {
        code = error::kInvalidArgument;
    }
    throw StoreFailure(code, path + ": " + std::strerror(number));
}

class Descriptor {
 public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    [[nodiscard]] int Get() const { return m_descriptor; }

 private:
    int m_descriptor;
};

void SyncFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.Get() >= 0) {
        // A file system that cannot sync folders makes the entry durable in its own time.
        ::fsync(descriptor.Get());
    }
}

/// Looks at the database header of a file that is not mounted, so that a file of anything else is
/// never opened as a database.
/// Gives whether another tool has switched it to a log beside it.
bool CheckHeader(const std::string& path) {
    constexpr std::size_t kHeader = 100;
    constexpr std::size_t kWriteVersion = 18;
    constexpr unsigned char kLogged = 2;
    constexpr std::size_t kUserVersion = 60;
    constexpr std::size_t kApplication = 68;
    const Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (descriptor.Get() < 0) {
        ThrowSystem(errno, path);
    }
    std::array<unsigned char, kHeader> header{};
    std::size_t size = 0;
    while (size < kHeader) {
        const ssize_t got = ::read(descriptor.Get(), header.data() + size, kHeader - size);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            ThrowSystem(errno, path);
        }
        if (got == 0) {
            break;
        }
        size += static_cast<std::size_t>(got);
    }
    const auto number = [&](std::size_t at) {
        return (std::uint32_t{header[at]} << 24) | (std::uint32_t{header[at + 1]} << 16) |
               (std::uint32_t{header[at + 2]} << 8) | std::uint32_t{header[at + 3]};
    };
    if (size < kHeader || std::memcmp(header.data(), "SQLite format 3", 16) != 0 ||
        number(kApplication) != kApplicationId || number(kUserVersion) == 0) {
        throw StoreFailure(error::kDamaged, path + " is no job");
    }
    if (number(kUserVersion) > VolumeDatabase::kFormatVersion) {
        throw StoreFailure(error::kNewerVersion,
                           path + " has format version " + std::to_string(number(kUserVersion)));
    }
    return header[kWriteVersion] == kLogged || header[kWriteVersion + 1] == kLogged;
}

/// A path that the database can take, its own files' ends included.
void RequireShortEnough(const std::string& path) {
    const sqlite3_vfs* system = sqlite3_vfs_find(nullptr);
    if (system != nullptr &&
        AbsolutePath(path).size() + 10 > static_cast<std::size_t>(system->mxPathname)) {
        throw StoreFailure(error::kInvalidArgument, path + ": the path is too long");
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

SqlConnection OpenToWrite(const std::string& path) {
    RequireShortEnough(path);
    // An absolute path is never taken for a URI.
    return OpenDatabase(AbsolutePath(path), SQLITE_OPEN_READWRITE);
}

/// A file that was switched to a log cannot be read without one where nothing may be written, but
/// for a file that is told never to change.
SqlConnection OpenUnchanging(const std::string& path) {
    struct stat status {};
    if (::stat((path + "-wal").c_str(), &status) == 0 && status.st_size != 0) {
        throw StoreFailure(error::kAccessDenied,
                           path +
                               ": another tool has left a log beside it; the file must be "
                               "opened once where it can be written");
    }
    std::string name = "file:";
    for (const char c : AbsolutePath(path)) {
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

/// Opens a database that is there, to be written if it can be and `readOnly` does not forbid it.
SqlConnection OpenChecked(const std::string& path, bool readOnly) {
    const bool logged = CheckHeader(path);
    RequireShortEnough(path);
    SqlConnection connection =
        OpenDatabase(AbsolutePath(path), readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    if (logged && sqlite3_db_readonly(connection.get(), "main") != 0) {
        connection = OpenUnchanging(path);
    }
    return connection;
}

bool EndsWith(const std::string& text, const char* end) {
    return std::string_view(text).ends_with(end);
}

/// The database keeps unfinished work in files beside its own: whoever has such a name, or finds
/// such a file where a new volume is to be, would lose it.
void RequireNoneBeside(const std::string& path) {
    for (const char* end : {"-journal", "-wal", "-shm"}) {
        if (EndsWith(path, end)) {
            throw StoreFailure(error::kInvalidArgument,
                               path + ": a name that ends so belongs to the volume beside it");
        }
        struct stat status {};
        if (::lstat((path + end).c_str(), &status) == 0) {
            throw StoreFailure(error::kFileExists,
                               path + end + " is there and would be taken for a part of it");
        }
    }
}

}  // namespace

void VolumeDatabase::Create(const std::string& path) {
    RequireShortEnough(path);
    {
        struct stat status {};
        if (::lstat(path.c_str(), &status) == 0) {
            ThrowSystem(EEXIST, path);
        }
    }
    RequireNoneBeside(path);
    const std::string journal = path + "-journal";
    {
        const Descriptor made(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (made.Get() < 0) {
            ThrowSystem(errno, path);
        }
    }
    try {
        SqlConnection connection = OpenToWrite(path);
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
            std::to_string(kFormatVersion) + ";";
        for (const char* table : kSystemTables) {
            sql += table;
            sql += ";";
        }
        SqlRun(connection.get(), sql + "COMMIT;");
        connection.reset();
        SyncFolderOf(AbsolutePath(path));
    } catch (...) {
        ::unlink(path.c_str());
        ::unlink(journal.c_str());
        throw;
    }
}

VolumeDatabase::Identity VolumeDatabase::Identify(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        ThrowSystem(errno, path);
    }
    if (!S_ISREG(status.st_mode)) {
        throw StoreFailure(error::kDamaged, path + " is no file");
    }
    return {status.st_dev, status.st_ino};
}

VolumeDatabase::VolumeDatabase(const std::string& path, bool readOnly)
    : m_connection(OpenChecked(path, readOnly)), m_path(path) {
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
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0 && Identity(status.st_dev, status.st_ino) == identity) {
        ::unlink(path.c_str());
        ::unlink((path + "-journal").c_str());
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
    // The views that people add with other tools must still be read, though never used.
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
        // The shared lock that a read takes stays, and keeps every writer out.
        (void)SqlNumber(connection, "SELECT count(*) FROM sqlite_schema");
        return;
    }
    SqlRun(connection, "BEGIN EXCLUSIVE; COMMIT;");
    if (SqlText(connection, "PRAGMA journal_mode") != "delete") {
        // Another tool has switched the file to a log beside it.
        (void)SqlText(connection, "PRAGMA journal_mode=DELETE");
    }
    RemoveInertJournal();
}

/// A journal without content, left where the medium failed at the end, goes with the next holder of
/// the lock. One that the database has open is its own affair.
void VolumeDatabase::RemoveInertJournal() {
    sqlite3_file* journal = nullptr;
    if (sqlite3_file_control(m_connection.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER,
                             static_cast<void*>(&journal)) == SQLITE_OK &&
        journal != nullptr && journal->pMethods == nullptr) {
        ::unlink(sqlite3_filename_journal(sqlite3_db_filename(m_connection.get(), "main")));
    }
}

void VolumeDatabase::CheckLength() const {
    const std::int64_t expected = SqlNumber(m_connection.get(), "PRAGMA page_count") *
                                  SqlNumber(m_connection.get(), "PRAGMA page_size");
    struct stat status {};
    if (::stat(m_path.c_str(), &status) != 0) {
        ThrowSystem(errno, m_path);
    }
    if (status.st_size < expected) {
        throw StoreFailure(error::kDamaged, std::to_string(status.st_size) + " bytes are left of " +
                                                std::to_string(expected));
    }
}

std::vector<VolumeDatabase::Table> VolumeDatabase::ListTables() const {
    sqlite3* connection = m_connection.get();
    if (SqlText(connection, "PRAGMA encoding") != "UTF-16le") {
        throw StoreFailure(error::kDamaged, "the texts are not kept as UTF-16le");
    }
    std::vector<Table> tables;
    std::set<std::string> system;
    for (const char* sql : kSystemTables) {
        system.insert(sql);
    }
    std::set<std::string> indexes(kSystemIndexes.begin(), kSystemIndexes.end());
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
