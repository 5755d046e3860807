#include "store/VolumeDatabase.h"

#include <array>
#include <system_error>

#include "platform/System.h"
#include "store/CheckedVfs.h"
#include "store/DatabasePage.h"
#include "store/ReadStart.h"
#include "store/VolumeJournal.h"
#include "store/VolumePath.h"
#include "store/VolumeSchema.h"

namespace cqsurvey {

namespace {

/// "CqSv", in the database header, where tools such as `file` look for it.
constexpr std::uint32_t kApplicationId = 0x43715376;

/// A memo, the largest single value, may have this many bytes.
constexpr int kMostValueBytes = 64 << 20;

/// Reads the database header of a file that is not mounted, so that a file of another kind is never
/// opened as a database: SQLite might change it, by rolling back a journal that lies beside it.
/// Returns true when another tool has switched the file to a write-ahead log.
bool CheckHeader(const std::string& path) {
    std::error_code failure;
    std::array<std::byte, DatabaseHeader::kSize> bytes{};
    const std::size_t size = ReadStart(path, bytes, failure);
    if (failure) {
        ThrowSystem(failure, path);
    }
    const DatabaseHeader header(bytes.data());
    if (size < bytes.size() || !header.IsDatabase() || header.GetApplication() != kApplicationId ||
        header.GetFormatVersion() == 0) {
        throw StoreFailure(error::kDamaged, path + " is not a job");
    }
    if (header.GetFormatVersion() > VolumeDatabase::kFormatVersion) {
        throw StoreFailure(error::kNewerVersion, path + " has format version " +
                                                     std::to_string(header.GetFormatVersion()));
    }
    return header.IsLogged();
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
    const int result =
        sqlite3_open_v2(name.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE,
                        CheckedVfs::GetName());
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

/// Lets pages that are written from now on have their sums.
void ReservePageSums(sqlite3* connection) {
    int bytes = kPageSumBytes;
    if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_RESERVE_BYTES, &bytes) != SQLITE_OK) {
        throw StoreFailure(error::kGeneralFailure, "pages have no room for their sums");
    }
    CheckedVfs::SetSums(connection, PageSums::Made);
}

void RequireDurableNames(const std::string& path) {
    std::error_code failure;
    system::SyncFolderOf(path, failure);
    if (failure) {
        ThrowSystem(failure, path);
    }
}

/// Turns an empty file into an empty volume and makes it durable.
void FillNew(const std::string& path) {
    // An absolute path is never mistaken for a URI.
    const std::string absolute = system::AbsolutePath(path);
    SqlConnection connection = OpenDatabase(absolute, SQLITE_OPEN_READWRITE);
    // SQLite may have been built with other defaults. The bytes of a job must not depend on them.
    if (sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_LEGACY_FILE_FORMAT, 0, nullptr) !=
        SQLITE_OK) {
        throw StoreFailure(error::kGeneralFailure, "the database's file format cannot be chosen");
    }
    SqlRun(connection.get(), "PRAGMA page_size=4096");
    ReservePageSums(connection.get());
    std::string sql =
        "PRAGMA auto_vacuum=NONE;"
        "PRAGMA secure_delete=ON;"
        "PRAGMA encoding='UTF-16le';"
        "PRAGMA journal_mode=DELETE;"
        "PRAGMA synchronous=FULL;"
        "BEGIN;"
        "PRAGMA application_id=" +
        std::to_string(kApplicationId) +
        ";"
        "PRAGMA user_version=" +
        std::to_string(VolumeDatabase::kFormatVersion) + ";";
    SqlRun(connection.get(), sql + VolumeSchema::CreateSql() + "COMMIT;");
    connection.reset();
    RequireDurableNames(absolute);
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
    // A loss of power must not bring the journal back when it has kept the new name.
    system::SyncFolderOf(system::AbsolutePath(path), failure);
    if (!failure) {
        system::RenameNew(draft, path, failure);
    }
    if (failure) {
        system::Remove(draft);
        ThrowSystem(failure, path);
    }
    system::SyncFolderOf(system::AbsolutePath(path), failure);
    if (failure) {
        system::Remove(path);
        ThrowSystem(failure, path);
    }
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
    Examine([&] {
        // Each of these first steps is safe before the next: the switches hold whenever the
        // database is read, the lock is the first to play a journal back, and pages are believed
        // only when it is known whether they have their sums. The length means something only when
        // nobody else can change it.
        Configure();
        RequireOwnJournal(Get());
        Lock();
        CheckPageSums();
        Tune();
        if (!m_readOnly) {
            EndLog();
            RemoveInertJournal();
        }
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
    SqlRun(connection, "PRAGMA locking_mode=EXCLUSIVE");
}

/// What needs the schema, whose pages are read for it.
void VolumeDatabase::Tune() {
    SqlRun(m_connection.get(),
           "PRAGMA mmap_size=0;"
           "PRAGMA cell_size_check=ON;"
           "PRAGMA foreign_keys=OFF;"
           "PRAGMA temp_store=MEMORY;"
           "PRAGMA secure_delete=ON;"
           "PRAGMA cache_size=-8000;"
           "PRAGMA synchronous=FULL;");
}

void VolumeDatabase::Lock() {
    sqlite3* connection = m_connection.get();
    m_readOnly = sqlite3_db_readonly(connection, "main") != 0;
    if (m_readOnly) {
        // In exclusive locking mode the shared lock of this read is never released, and it keeps
        // every writer out.
        (void)SqlNumber(connection, "PRAGMA user_version");
        return;
    }
    SqlRun(connection, "BEGIN EXCLUSIVE; COMMIT;");
}

/// Finds out whether the pages have their sums, which is known only when a crashed step has been
/// undone. Nothing but page 1 has been read then.
void VolumeDatabase::CheckPageSums() {
    sqlite3* connection = m_connection.get();
    const std::vector<std::byte> page = CheckedVfs::ReadFirstPage(connection);
    if (page.empty()) {
        throw StoreFailure(error::kDamaged, "the file ends in its first page");
    }
    const DatabaseHeader header(page.data());
    if (header.HasPageSums()) {
        if (!HasItsSum(page.data(), page.size())) {
            throw StoreFailure(error::kDamaged, "page 1 does not match its sum");
        }
        if (!header.IsStepWhole()) {
            throw StoreFailure(error::kDamaged,
                               "a change was cut short, and the file that would undo it is "
                               "missing. If the job was renamed or moved, give the file whose name "
                               "ends in \"-journal\" the name of the job and \"-journal\"");
        }
        CheckedVfs::SetSums(connection, PageSums::Kept);
        return;
    }
    m_writtenByOthers = header.GetFormatVersion() >= kFirstVersionWithSums;
}

void VolumeDatabase::CheckWritingOfOthers() const {
    if (m_writtenByOthers) {
        const std::string found = SqlText(m_connection.get(), "PRAGMA integrity_check(1)");
        if (found != "ok") {
            throw StoreFailure(error::kDamaged, found);
        }
    }
}

bool VolumeDatabase::MakePageSums() {
    sqlite3* connection = m_connection.get();
    if (CheckedVfs::GetSums(connection) == PageSums::Kept) {
        return false;
    }
    // SQLite writes the new file into a database that it attaches, and then page by page over the
    // old one, as one change. A file of strangers may hold tables without an end.
    const int attached = sqlite3_limit(connection, SQLITE_LIMIT_ATTACHED, 1);
    try {
        const SqlBudget budget(connection);
        ReservePageSums(connection);
        SqlRun(connection, "VACUUM");
        CheckedVfs::SetSums(connection, PageSums::Kept);
    } catch (...) {
        sqlite3_limit(connection, SQLITE_LIMIT_ATTACHED, attached);
        throw;
    }
    sqlite3_limit(connection, SQLITE_LIMIT_ATTACHED, attached);
    return true;
}

std::uint32_t VolumeDatabase::FindWrongPage(std::uint32_t after) const {
    return CheckedVfs::FindWrongPage(m_connection.get(), after);
}

/// A job is one file: when another tool has switched it to a write-ahead log, this switches back.
void VolumeDatabase::EndLog() {
    sqlite3* connection = m_connection.get();
    if (SqlText(connection, "PRAGMA journal_mode") != "delete") {
        (void)SqlText(connection, "PRAGMA journal_mode=DELETE");
    }
}

/// Removes a journal without content, which is left when the medium failed at the very end of a
/// commit. The lock is held, so nobody else can be using it; a journal that this connection has
/// open is left to SQLite.
void VolumeDatabase::RemoveInertJournal() {
    sqlite3_file* journal = nullptr;
    if (sqlite3_file_control(m_connection.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER,
                             static_cast<void*>(&journal)) == SQLITE_OK &&
        journal != nullptr && journal->pMethods == nullptr) {
        system::Remove(JournalOf(Get()));
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

}  // namespace cqsurvey
