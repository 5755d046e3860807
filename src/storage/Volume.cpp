#include "storage/Volume.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <set>

#include "cqsurvey/Text.h"
#include "storage/StoreFailure.h"

namespace cqsurvey {

namespace {

/// "CqSv", in the database header where every tool finds it.
constexpr std::uint32_t kApplicationId = 0x43715376;
constexpr std::uint32_t kFormatVersion = 1;

constexpr std::uint16_t kNormalFile = 0x80;
constexpr std::uint16_t kNoAttributes = 0xFFFF;

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

std::string LowerAscii(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
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
    if (number(kUserVersion) > kFormatVersion) {
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

/// What an operation answers before it changes anything.
bool IsRefusal(std::int32_t code) {
    switch (code) {
        case error::kInvalidArgument:
        case error::kNoFile:
        case error::kFileExists:
        case error::kNoTable:
        case error::kTableExists:
        case error::kNoRecord:
        case error::kBadTableDescription:
            return true;
        default:
            return false;
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

Volume::SpillLimits Volume::s_limits;

void Volume::Create(const std::string& path) {
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

Volume::Identity Volume::Identify(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        ThrowSystem(errno, path);
    }
    if (!S_ISREG(status.st_mode)) {
        throw StoreFailure(error::kDamaged, path + " is no file");
    }
    return {status.st_dev, status.st_ino};
}

Volume::Volume(const std::string& path, Identity identity, bool readOnly)
    : m_connection(OpenChecked(path, readOnly)), m_identity(identity), m_memos(m_connection.get()) {
    const SqlBudget budget(m_connection.get());
    try {
        Configure();
        Lock();
        CheckLength(path);
        CheckSchema();
        m_files = FilesInDatabase();
        m_begin = SqlStatement(m_connection.get(), "BEGIN");
        m_commit = SqlStatement(m_connection.get(), "COMMIT");
        m_rollback = SqlStatement(m_connection.get(), "ROLLBACK");
    } catch (const StoreFailure& failure) {
        // What SQLite finds no better word for is, before anything was asked of it, the file.
        throw StoreFailure(failure.code == error::kGeneralFailure ? error::kDamaged : failure.code,
                           path + ": " + failure.detail);
    }
}

Volume::~Volume() {
    if (m_transactionOpen) {
        sqlite3_step(m_rollback.Get());
    }
}

std::string Volume::GetPath() const {
    return sqlite3_db_filename(m_connection.get(), "main");
}

void Volume::Remove(const std::string& path, const Identity& identity) noexcept {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0 && Identity(status.st_dev, status.st_ino) == identity) {
        ::unlink(path.c_str());
        ::unlink((path + "-journal").c_str());
    }
}

void Volume::Configure() {
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

void Volume::Lock() {
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
void Volume::RemoveInertJournal() {
    sqlite3_file* journal = nullptr;
    if (sqlite3_file_control(m_connection.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER,
                             static_cast<void*>(&journal)) == SQLITE_OK &&
        journal != nullptr && journal->pMethods == nullptr) {
        ::unlink(sqlite3_filename_journal(sqlite3_db_filename(m_connection.get(), "main")));
    }
}

void Volume::CheckLength(const std::string& path) {
    const std::int64_t expected = SqlNumber(m_connection.get(), "PRAGMA page_count") *
                                  SqlNumber(m_connection.get(), "PRAGMA page_size");
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        ThrowSystem(errno, path);
    }
    if (status.st_size < expected) {
        throw StoreFailure(error::kDamaged, std::to_string(status.st_size) + " bytes are left of " +
                                                std::to_string(expected));
    }
}

void Volume::CheckSchema() {
    sqlite3* connection = m_connection.get();
    if (SqlText(connection, "PRAGMA encoding") != "UTF-16le") {
        throw StoreFailure(error::kDamaged, "the texts are not kept as UTF-16le");
    }
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
        m_tables.emplace(name, std::make_shared<RecordTable>(connection, m_memos, name,
                                                             RecordFormat(name, sql)));
    }
    if (!system.empty()) {
        throw StoreFailure(error::kDamaged,
                           "table " + SystemTableName(*system.begin()) + " is missing");
    }
    if (!indexes.empty()) {
        throw StoreFailure(error::kDamaged, "index " + *indexes.begin() + " is missing");
    }
}

std::map<CString, Volume::FileEntry> Volume::FilesInDatabase() const {
    std::map<CString, FileEntry> files;
    SqlStatement rows(m_connection.get(),
                      "SELECT File, Name, Length, Attributes FROM Volume_File ORDER BY File");
    std::int64_t last = 0;
    while (rows.Step()) {
        const std::int64_t id = sqlite3_column_int64(rows.Get(), 0);
        const std::int64_t length = sqlite3_column_int64(rows.Get(), 2);
        const std::int64_t attributes = sqlite3_column_int64(rows.Get(), 3);
        const auto misfit = [&](const std::string& what) {
            return StoreFailure(error::kDamaged, "file " + std::to_string(id) + " " + what);
        };
        if (id <= last || id > std::numeric_limits<std::int32_t>::max()) {
            throw misfit("stands behind " + std::to_string(last));
        }
        last = id;
        if (length < 0 || length > VolumeFile::kMostBytes) {
            throw misfit("has " + std::to_string(length) + " bytes");
        }
        if (attributes < 0 || attributes >= kNoAttributes) {
            throw misfit("has the attributes " + std::to_string(attributes));
        }
        if (sqlite3_column_type(rows.Get(), 1) != SQLITE_TEXT) {
            throw misfit("has no name");
        }
        const bool fresh =
            files
                .emplace(rows.GetText(1),
                         FileEntry{std::make_shared<VolumeFile>(m_connection.get(), id,
                                                                static_cast<std::uint32_t>(length)),
                                   static_cast<std::uint16_t>(attributes)})
                .second;
        if (!fresh) {
            throw misfit("has the name of another");
        }
    }
    return files;
}

void Volume::RequireWritable() const {
    if (m_readOnly) {
        throw StoreFailure(error::kAccessDenied, "the job is open for reading only");
    }
}

/// After some failures, of a read too, the database undoes its transaction by itself.
bool Volume::IsTransactionLost() const {
    return m_transactionOpen && sqlite3_get_autocommit(m_connection.get()) != 0;
}

void Volume::RequireSound() const {
    if (m_stepFailure != 0) {
        throw StoreFailure(m_stepFailure, m_stepFailureDetail);
    }
    if (IsTransactionLost()) {
        throw StoreFailure(error::kReadWriteFailed, "a failure has undone the step");
    }
}

void Volume::SpoilStep(std::int32_t code, const std::string& detail) {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    if (m_stepFailure == 0) {
        m_stepFailure = code;
        m_stepFailureDetail = detail;
    }
}

void Volume::EndFailed(bool own, const StoreFailure& failure) {
    if (own) {
        RollbackStep();
    } else if (!IsRefusal(failure.code) || IsTransactionLost()) {
        SpoilStep(failure.code, failure.detail);
    }
}

void Volume::RequireCertain() const {
    if (m_inDoubt) {
        throw StoreFailure(error::kReadWriteFailed,
                           "the last step may be on the medium or not: mount the volume anew");
    }
}

void Volume::BeginStep() {
    RequireCertain();
    if (m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "a step is open already");
    }
    m_stepOpen = true;
}

void Volume::BeginTransaction() {
    if (!m_transactionOpen) {
        m_begin.Run();
        m_transactionOpen = true;
    }
}

bool Volume::IsDirty() const {
    if (m_memos.GetDirty() != 0) {
        return true;
    }
    for (const auto& [name, table] : m_tables) {
        if (table->GetDirty() != 0) {
            return true;
        }
    }
    for (const auto& [name, entry] : m_files) {
        if (entry.file->GetDirty() != 0) {
            return true;
        }
    }
    return false;
}

void Volume::Flush() {
    BeginTransaction();
    for (const auto& [name, table] : m_tables) {
        table->Flush();
    }
    m_memos.Flush();
    for (const auto& [name, entry] : m_files) {
        entry.file->Flush();
    }
}

void Volume::SpillIfLarge() {
    m_weight = 0;
    std::size_t records = 0;
    for (const auto& [name, table] : m_tables) {
        records += table->GetDirty();
    }
    std::size_t blocks = 0;
    for (const auto& [name, entry] : m_files) {
        blocks += entry.file->GetDirty();
    }
    if (records > s_limits.records || blocks > s_limits.blocks ||
        m_memos.GetDirty() > s_limits.units) {
        Flush();
    }
}

bool Volume::DatabaseHoldsStep() {
    for (const auto& [name, table] : m_tables) {
        if (!table->DatabaseHoldsStep()) {
            return false;
        }
    }
    if (!m_memos.DatabaseHoldsStep()) {
        return false;
    }
    if (!m_filesTouched) {
        return true;
    }
    const std::map<CString, FileEntry> stored = FilesInDatabase();
    return std::equal(stored.begin(), stored.end(), m_files.begin(), m_files.end(),
                      [](const auto& a, const auto& b) {
                          return a.first == b.first && a.second.attributes == b.second.attributes &&
                                 a.second.file->GetId() == b.second.file->GetId() &&
                                 a.second.file->GetLength() == b.second.file->GetLength() &&
                                 b.second.file->DatabaseHoldsBlocks();
                      });
}

void Volume::Commit() {
    sqlite3* connection = m_connection.get();
    const int result = sqlite3_step(m_commit.Get());
    m_commit.Reset();
    if (result == SQLITE_DONE) {
        return;
    }
    if (result != SQLITE_IOERR_FSYNC || !IsTransactionLost()) {
        ThrowSql(connection, result);
    }
    // It was undone, or only the sync that ends it failed and it stands. Then it counts, once
    // something behind it could be made durable.
    m_inDoubt = true;
    const StoreFailure failure = SqlFailure(connection, result);
    try {
        if (DatabaseHoldsStep()) {
            SqlRun(connection, "PRAGMA user_version=" + std::to_string(kFormatVersion));
            m_inDoubt = false;
            return;
        }
        m_inDoubt = false;
    } catch (const StoreFailure&) {
        // The doubt stays.
    }
    throw failure;
}

void Volume::CommitStep() {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    try {
        RequireSound();
        if (m_transactionOpen || IsDirty()) {
            Flush();
            Commit();
        }
    } catch (...) {
        RollbackStep();
        throw;
    }
    m_transactionOpen = false;
    m_stepOpen = false;
    for (const auto& [name, table] : m_tables) {
        table->KeepStep();
    }
    m_memos.KeepStep();
    m_tablesOfStep.clear();
    m_filesAtStep.clear();
    m_filesTouched = false;
}

void Volume::RollbackStep() {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    if (m_transactionOpen && sqlite3_get_autocommit(m_connection.get()) == 0) {
        sqlite3_step(m_rollback.Get());
        m_rollback.Reset();
        m_inDoubt = m_inDoubt || sqlite3_get_autocommit(m_connection.get()) == 0;
    }
    m_transactionOpen = false;
    m_stepOpen = false;
    m_stepFailure = 0;
    m_stepFailureDetail.clear();
    UndoMemory();
}

void Volume::UndoMemory() noexcept {
    for (const auto& [name, table] : m_tablesOfStep) {
        m_tables.erase(name);
        table->Abandon(error::kNoTable);
    }
    m_tablesOfStep.clear();
    for (const auto& [name, table] : m_tables) {
        if (m_inDoubt) {
            table->Abandon(error::kReadWriteFailed);
        } else {
            table->UndoStep();
        }
    }
    m_memos.UndoStep();
    UndoFiles();
}

void Volume::TouchFiles() {
    if (m_filesTouched) {
        return;
    }
    for (auto& [name, entry] : m_files) {
        entry.lengthAtStep = entry.file->GetLength();
    }
    m_filesAtStep = m_files;
    m_filesTouched = true;
}

void Volume::UndoFiles() noexcept {
    if (!m_filesTouched) {
        return;
    }
    for (const auto& [name, entry] : m_files) {
        entry.file->Reload(0);
        entry.file->SetGone(true);
    }
    for (const auto& [name, entry] : m_filesAtStep) {
        entry.file->Reload(entry.lengthAtStep);
        entry.file->SetGone(false);
    }
    m_files.swap(m_filesAtStep);
    m_filesAtStep.clear();
    m_filesTouched = false;
}

std::shared_ptr<RecordTable> Volume::FindTable(std::string_view name) {
    RequireCertain();
    const auto found = m_tables.find(name);
    return found == m_tables.end() ? nullptr : found->second;
}

void Volume::RequireFreeName(const std::string& name) {
    const std::string lower = LowerAscii(name);
    if (!RecordFormat::IsName(name) || lower.starts_with("volume_") ||
        lower.starts_with("sqlite_")) {
        throw StoreFailure(error::kBadTableDescription,
                           "\"" + name + "\" is no name for a table or a view");
    }
    // Other names than ours compare without case in the database.
    SqlStatement taken(m_connection.get(),
                       "SELECT 1 FROM sqlite_schema WHERE name = ?1 COLLATE NOCASE");
    taken.BindText(1, name);
    if (taken.Step()) {
        throw StoreFailure(error::kTableExists, "table " + name);
    }
}

void Volume::CreateTable(const std::string& name, RecordFormat format) {
    RequireFreeName(name);
    BeginTransaction();
    SqlRun(m_connection.get(), format.CreateSql(name));
    auto table =
        std::make_shared<RecordTable>(m_connection.get(), m_memos, name, std::move(format));
    m_tables.emplace(name, table);
    m_tablesOfStep.emplace(name, std::move(table));
}

void Volume::CreateView(const std::string& name, const std::string& sql) {
    RequireFreeName(name);
    BeginTransaction();
    SqlRun(m_connection.get(), "CREATE VIEW \"" + name + "\" AS " + sql);
}

Volume::FileEntry& Volume::RequireFile(const CString& name) {
    RequireCertain();
    const auto found = m_files.find(name);
    if (found == m_files.end()) {
        throw StoreFailure(error::kNoFile, "file \"" + ToUtf8(name) + "\"");
    }
    return found->second;
}

void Volume::RequireNoFile(const CString& name) {
    if (name.empty()) {
        throw StoreFailure(error::kInvalidArgument, "a file needs a name");
    }
    if (m_files.contains(name)) {
        throw StoreFailure(error::kFileExists, "file \"" + ToUtf8(name) + "\"");
    }
}

std::shared_ptr<VolumeFile> Volume::FindFile(const CString& name) {
    RequireCertain();
    const auto found = m_files.find(name);
    return found == m_files.end() ? nullptr : found->second.file;
}

void Volume::CreateFile(const CString& name) {
    RequireNoFile(name);
    TouchFiles();
    BeginTransaction();
    std::int64_t id = 1;
    for (const auto* files : {&m_files, &m_filesAtStep}) {
        for (const auto& [other, entry] : *files) {
            id = std::max(id, entry.file->GetId() + 1);
        }
    }
    if (id > std::numeric_limits<std::int32_t>::max()) {
        throw StoreFailure(error::kVolumeFull, "the volume has no file number left");
    }
    SqlStatement insert(m_connection.get(), "INSERT INTO Volume_File VALUES(?1, ?2, 0, ?3)");
    insert.BindInt(1, id);
    insert.BindText(2, std::u16string_view(name));
    insert.BindInt(3, kNormalFile);
    insert.Run();
    m_files.emplace(
        name, FileEntry{std::make_shared<VolumeFile>(m_connection.get(), id, 0U), kNormalFile});
}

void Volume::CopyFile(const CString& source, const CString& target) {
    const FileEntry from = RequireFile(source);
    from.file->CheckBlocks();
    CreateFile(target);
    FileEntry& to = RequireFile(target);
    std::array<std::byte, VolumeFile::kBlock> bytes{};
    for (std::uint32_t at = 0; at < from.file->GetLength();) {
        const std::uint32_t got = from.file->Read(at, bytes.data(), VolumeFile::kBlock);
        to.file->Write(at, bytes.data(), got);
        at += got;
        if (at % kFilePiece == 0) {
            SpillIfLarge();
        }
    }
}

void Volume::RenameFile(const CString& from, const CString& to) {
    (void)RequireFile(from);
    RequireNoFile(to);
    TouchFiles();
    BeginTransaction();
    SqlStatement update(m_connection.get(), "UPDATE Volume_File SET Name = ?1 WHERE File = ?2");
    update.BindText(1, std::u16string_view(to));
    update.BindInt(2, RequireFile(from).file->GetId());
    update.Run();
    auto node = m_files.extract(from);
    node.key() = to;
    m_files.insert(std::move(node));
}

void Volume::DeleteFile(const CString& name) {
    const std::shared_ptr<VolumeFile> file = RequireFile(name).file;
    TouchFiles();
    BeginTransaction();
    file->SetLength(0);
    SqlStatement remove(m_connection.get(), "DELETE FROM Volume_File WHERE File = ?1");
    remove.BindInt(1, file->GetId());
    remove.Run();
    file->SetGone(true);
    m_files.erase(name);
}

void Volume::WriteFile(VolumeFile& file, std::uint32_t position, const std::byte* bytes,
                       std::uint32_t count) {
    if (count > VolumeFile::kMostBytes || position > VolumeFile::kMostBytes - count) {
        throw StoreFailure(error::kVolumeFull, "a file has at most 2147483647 bytes");
    }
    if (count == 0) {
        return;
    }
    TouchFiles();
    if (position > file.GetLength()) {
        SetFileLength(file, position);
    }
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t part = std::min(count - done, kFilePiece);
        file.Write(position + done, bytes + done, part);
        done += part;
        if (part == kFilePiece) {
            SpillIfLarge();
        }
    }
}

void Volume::SetFileLength(VolumeFile& file, std::uint32_t length) {
    if (length > VolumeFile::kMostBytes) {
        throw StoreFailure(error::kInvalidArgument, "a file has at most 2147483647 bytes");
    }
    TouchFiles();
    BeginTransaction();
    while (file.GetLength() < length && length - file.GetLength() > kFilePiece) {
        file.SetLength(file.GetLength() + kFilePiece);
        SpillIfLarge();
    }
    file.SetLength(length);
}

std::uint16_t Volume::GetAttributes(const CString& name) {
    return RequireFile(name).attributes;
}

void Volume::SetAttributes(const CString& name, std::uint16_t attributes) {
    FileEntry& entry = RequireFile(name);
    if (attributes == kNoAttributes) {
        throw StoreFailure(error::kInvalidArgument, "attributes 0xFFFF");
    }
    TouchFiles();
    BeginTransaction();
    SqlStatement update(m_connection.get(),
                        "UPDATE Volume_File SET Attributes = ?1 WHERE File = ?2");
    update.BindInt(1, attributes);
    update.BindInt(2, entry.file->GetId());
    update.Run();
    entry.attributes = attributes;
}

}  // namespace cqsurvey
