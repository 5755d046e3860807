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

/// What waits in memory before it is handed to the database inside a long step.
constexpr std::size_t kMostDirtyRecords = 65536;
constexpr std::size_t kMostDirtyBlocks = 1024;
constexpr std::size_t kMostDirtyUnits = 1U << 22;

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
void CheckHeader(const std::string& path) {
    constexpr std::size_t kHeader = 100;
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
}

SqlConnection OpenDatabase(const std::string& path, bool readOnly) {
    sqlite3* opened = nullptr;
    const int flags = (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE) |
                      SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    // An absolute path is never taken for a URI.
    const int result = sqlite3_open_v2(AbsolutePath(path).c_str(), &opened, flags, nullptr);
    SqlConnection connection(opened);
    if (result != SQLITE_OK) {
        ThrowSql(opened, result);
    }
    return connection;
}

CString TextOf(sqlite3_stmt* row, int column) {
    const void* text = sqlite3_column_text16(row, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(row, column));
    return text == nullptr ? CString() : CString(static_cast<const char16_t*>(text), size / 2);
}

void BindName(SqlStatement& statement, int parameter, const CString& name) {
    const int result =
        sqlite3_bind_text64(statement.Get(), parameter, reinterpret_cast<const char*>(name.data()),
                            name.size() * 2, SQLITE_STATIC, SQLITE_UTF16);
    if (result != SQLITE_OK) {
        ThrowSql(sqlite3_db_handle(statement.Get()), result);
    }
}

}  // namespace

void Volume::Create(const std::string& path) {
    {
        const Descriptor made(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (made.Get() < 0) {
            ThrowSystem(errno, path);
        }
    }
    try {
        const SqlConnection connection = OpenDatabase(path, false);
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
    } catch (...) {
        ::unlink(path.c_str());
        throw;
    }
    SyncFolderOf(AbsolutePath(path));
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
    : m_connection((CheckHeader(path), OpenDatabase(path, readOnly))),
      m_identity(identity),
      m_memos(m_connection.get()) {
    Configure();
    Lock();
    CheckSchema();
    ReadFiles();
}

Volume::~Volume() {
    if (m_transactionOpen) {
        sqlite3_exec(m_connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
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
    sqlite3_limit(connection, SQLITE_LIMIT_EXPR_DEPTH, 20);
    sqlite3_limit(connection, SQLITE_LIMIT_FUNCTION_ARG, 8);
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
    SqlStatement rows(connection, "SELECT type, name, tbl_name, sql FROM sqlite_schema");
    while (rows.Step()) {
        std::array<std::string, 4> row;
        for (int i = 0; i < 4; ++i) {
            const auto* text = sqlite3_column_text(rows.Get(), i);
            row[static_cast<std::size_t>(i)] =
                text == nullptr ? "" : reinterpret_cast<const char*>(text);
        }
        const auto& [type, name, table, sql] = row;
        if (type == "view" || name.starts_with("sqlite_")) {
            continue;
        }
        if (type != "table") {
            throw StoreFailure(error::kDamaged,
                               "the file holds a foreign " + type + " \"" + name + "\"");
        }
        if (system.erase(sql) != 0 && name == SystemTableName(sql)) {
            continue;
        }
        if (!RecordFormat::IsName(name) || name != table) {
            throw StoreFailure(error::kDamaged, "the file holds a foreign table");
        }
        m_tables.emplace(name, std::make_shared<RecordTable>(connection, m_memos, name,
                                                             RecordFormat(name, sql)));
    }
    if (!system.empty()) {
        throw StoreFailure(error::kDamaged,
                           "table " + SystemTableName(*system.begin()) + " is missing");
    }
}

std::map<CString, Volume::FileEntry> Volume::FilesInDatabase() const {
    std::map<CString, FileEntry> files;
    SqlStatement rows(m_connection.get(), "SELECT File, Name, Length, Attributes FROM Volume_File");
    while (rows.Step()) {
        const std::int64_t id = sqlite3_column_int64(rows.Get(), 0);
        const std::int64_t length = sqlite3_column_int64(rows.Get(), 2);
        const std::int64_t attributes = sqlite3_column_int64(rows.Get(), 3);
        CString name = TextOf(rows.Get(), 1);
        if (id < 1 || id > std::numeric_limits<std::int32_t>::max() || length < 0 ||
            length > VolumeFile::kMostBytes || attributes < 0 || attributes > 0xFFFE) {
            throw StoreFailure(error::kDamaged,
                               "file \"" + ToUtf8(name) + "\" is not as it must be");
        }
        files.emplace(std::move(name),
                      FileEntry{std::make_shared<VolumeFile>(m_connection.get(), id,
                                                             static_cast<std::uint32_t>(length)),
                                static_cast<std::uint16_t>(attributes)});
    }
    return files;
}

void Volume::ReadFiles() {
    m_files = FilesInDatabase();
}

void Volume::RequireWritable() const {
    if (m_readOnly) {
        throw StoreFailure(error::kAccessDenied, "the job is open for reading only");
    }
}

void Volume::RequireSound() const {
    if (m_stepFailure != 0) {
        throw StoreFailure(m_stepFailure, m_stepFailureDetail);
    }
}

void Volume::NoteFailure(const StoreFailure& failure) {
    const bool lost = m_transactionOpen && sqlite3_get_autocommit(m_connection.get()) != 0;
    if (lost || failure.code == error::kReadWriteFailed || failure.code == error::kVolumeFull ||
        failure.code == error::kDamaged || failure.code == error::kOutOfMemory) {
        m_stepFailure = failure.code;
        m_stepFailureDetail = failure.detail;
    }
}

void Volume::BeginStep() {
    if (m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "a step is open already");
    }
    m_stepOpen = true;
}

void Volume::BeginTransaction() {
    if (!m_transactionOpen) {
        SqlRun(m_connection.get(), "BEGIN");
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
    if (records > kMostDirtyRecords || blocks > kMostDirtyBlocks ||
        m_memos.GetDirty() > kMostDirtyUnits) {
        Flush();
    }
}

void Volume::CommitStep() {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    try {
        RequireSound();
        if (m_transactionOpen || IsDirty()) {
            Flush();
            SqlRun(m_connection.get(), "COMMIT");
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
    m_filesDeleted.clear();
    m_filesTouched = false;
}

void Volume::RollbackStep() {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    if (m_transactionOpen && sqlite3_get_autocommit(m_connection.get()) == 0) {
        sqlite3_exec(m_connection.get(), "ROLLBACK", nullptr, nullptr, nullptr);
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
    }
    m_tablesOfStep.clear();
    for (const auto& [name, table] : m_tables) {
        table->UndoStep();
    }
    m_memos.UndoStep();
    if (!m_filesTouched) {
        return;
    }
    try {
        std::map<std::int64_t, std::shared_ptr<VolumeFile>> known = std::move(m_filesDeleted);
        for (const auto& [name, entry] : m_files) {
            known.emplace(entry.file->GetId(), entry.file);
        }
        m_files = FilesInDatabase();
        for (auto& [name, entry] : m_files) {
            const auto old = known.find(entry.file->GetId());
            if (old != known.end()) {
                old->second->Reload(entry.file->GetLength());
                old->second->SetGone(false);
                entry.file = old->second;
                known.erase(old);
            }
        }
        for (const auto& [id, file] : known) {
            file->Reload(0);
            file->SetGone(true);
        }
    } catch (...) {
        m_files.clear();
    }
    m_filesDeleted.clear();
    m_filesTouched = false;
}

std::shared_ptr<RecordTable> Volume::FindTable(std::string_view name) {
    const auto found = m_tables.find(name);
    return found == m_tables.end() ? nullptr : found->second;
}

void Volume::CreateTable(const std::string& name, RecordFormat format) {
    if (!RecordFormat::IsName(name) || name.starts_with("Volume_") || name.starts_with("sqlite_")) {
        throw StoreFailure(error::kBadTableDescription, "\"" + name + "\" is no name for a table");
    }
    if (m_tables.contains(name)) {
        throw StoreFailure(error::kTableExists, "table " + name);
    }
    BeginTransaction();
    SqlRun(m_connection.get(), format.CreateSql(name));
    auto table =
        std::make_shared<RecordTable>(m_connection.get(), m_memos, name, std::move(format));
    m_tables.emplace(name, table);
    m_tablesOfStep.emplace(name, std::move(table));
}

void Volume::CreateView(const std::string& name, const std::string& sql) {
    if (!RecordFormat::IsName(name)) {
        throw StoreFailure(error::kBadTableDescription, "\"" + name + "\" is no name for a view");
    }
    BeginTransaction();
    SqlRun(m_connection.get(), "CREATE VIEW \"" + name + "\" AS " + sql);
}

Volume::FileEntry& Volume::RequireFile(const CString& name) {
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
    const auto found = m_files.find(name);
    return found == m_files.end() ? nullptr : found->second.file;
}

void Volume::CreateFile(const CString& name) {
    RequireNoFile(name);
    BeginTransaction();
    m_filesTouched = true;
    std::int64_t id = 1;
    for (const auto& [other, entry] : m_files) {
        id = std::max(id, entry.file->GetId() + 1);
    }
    for (const auto& [other, file] : m_filesDeleted) {
        id = std::max(id, other + 1);
    }
    if (id > std::numeric_limits<std::int32_t>::max()) {
        throw StoreFailure(error::kVolumeFull, "the volume has no file number left");
    }
    SqlStatement insert(m_connection.get(), "INSERT INTO Volume_File VALUES(?1, ?2, 0, ?3)");
    insert.BindInt(1, id);
    BindName(insert, 2, name);
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
        SpillIfLarge();
    }
}

void Volume::RenameFile(const CString& from, const CString& to) {
    (void)RequireFile(from);
    RequireNoFile(to);
    BeginTransaction();
    m_filesTouched = true;
    SqlStatement update(m_connection.get(), "UPDATE Volume_File SET Name = ?1 WHERE File = ?2");
    BindName(update, 1, to);
    update.BindInt(2, RequireFile(from).file->GetId());
    update.Run();
    auto node = m_files.extract(from);
    node.key() = to;
    m_files.insert(std::move(node));
}

void Volume::DeleteFile(const CString& name) {
    const std::shared_ptr<VolumeFile> file = RequireFile(name).file;
    BeginTransaction();
    m_filesTouched = true;
    file->SetLength(0);
    SqlStatement remove(m_connection.get(), "DELETE FROM Volume_File WHERE File = ?1");
    remove.BindInt(1, file->GetId());
    remove.Run();
    file->SetGone(true);
    m_filesDeleted.emplace(file->GetId(), file);
    m_files.erase(name);
}

std::uint16_t Volume::GetAttributes(const CString& name) {
    return RequireFile(name).attributes;
}

void Volume::SetAttributes(const CString& name, std::uint16_t attributes) {
    FileEntry& entry = RequireFile(name);
    if (attributes == 0xFFFF) {
        throw StoreFailure(error::kInvalidArgument, "attributes 0xFFFF");
    }
    BeginTransaction();
    m_filesTouched = true;
    SqlStatement update(m_connection.get(),
                        "UPDATE Volume_File SET Attributes = ?1 WHERE File = ?2");
    update.BindInt(1, attributes);
    update.BindInt(2, entry.file->GetId());
    update.Run();
    entry.attributes = attributes;
}

}  // namespace cqsurvey
