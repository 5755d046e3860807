#include "store/Volume.h"

#include <array>
#include <chrono>

#include "store/Failure.h"
#include "store/VolumeSchema.h"

namespace cqsurvey {

namespace {

std::string LowerAscii(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

}  // namespace

Volume::SpillLimits Volume::s_limits;

Volume::Volume(const std::string& path, VolumeDatabase::Identity identity, bool readOnly)
    : m_database(path, readOnly),
      m_identity(identity),
      m_memos(m_database.Get()),
      m_directory(m_database.Get()) {
    m_database.Examine([&] {
        for (auto& [name, format] : VolumeSchema::ListTables(m_database.Get())) {
            m_tables.emplace(name, std::make_shared<RecordTable>(m_database.Get(), m_memos, name,
                                                                 std::move(format)));
        }
        m_database.CheckWritingOfOthers();
        m_directory.Load();
        m_begin = SqlStatement(m_database.Get(), "BEGIN");
        m_commit = SqlStatement(m_database.Get(), "COMMIT");
        m_rollback = SqlStatement(m_database.Get(), "ROLLBACK");
        m_touchFirstPage =
            SqlStatement(m_database.Get(),
                         "PRAGMA user_version=" + std::to_string(VolumeDatabase::kFormatVersion));
        m_pageCount = SqlStatement(m_database.Get(), "PRAGMA page_count");
        m_pageSize = static_cast<std::uint64_t>(SqlNumber(m_database.Get(), "PRAGMA page_size"));
        m_path = m_database.GetPath();
        NoteSize();
    });
}

Volume::~Volume() {
    if (m_transactionOpen) {
        sqlite3_step(m_rollback.Get());
    }
}

void Volume::RequireWritable() const {
    if (m_database.IsReadOnly()) {
        throw StoreFailure(error::kAccessDenied, "the job is open for reading only");
    }
}

/// After some failures, even of a read, the database rolls its transaction back without being
/// asked. The step is lost then, whatever the failed operation was.
bool Volume::IsTransactionLost() const {
    return m_transactionOpen && sqlite3_get_autocommit(m_database.Get()) != 0;
}

void Volume::RequireSound() const {
    if (m_stepFailure != 0) {
        throw StoreFailure(m_stepFailure, m_stepFailureDetail);
    }
    if (IsTransactionLost()) {
        throw StoreFailure(error::kReadWriteFailed, "an earlier failure undid the step");
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
    } else if (KindOf(failure.code) != FailureKind::Refusal || IsTransactionLost()) {
        SpoilStep(failure.code, failure.detail);
    }
}

void Volume::RequireCertain() const {
    if (m_inDoubt) {
        throw StoreFailure(error::kReadWriteFailed,
                           "it is not known whether the last step was saved: open the job anew");
    }
}

void Volume::BeginStep() {
    RequireCertain();
    if (m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "a step is already open");
    }
    m_stepOpen = true;
}

void Volume::BeginTransaction() {
    if (!m_transactionOpen) {
        if (m_database.MakePageSums()) {
            NoteSize();
        }
        m_begin.Run();
        m_transactionOpen = true;
        m_touchFirstPage.Run();
    }
}

bool Volume::IsDirty() const {
    if (m_memos.GetDirty() != 0 || m_directory.GetDirty() != 0) {
        return true;
    }
    for (const auto& [name, table] : m_tables) {
        if (table->GetDirty() != 0) {
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
    m_directory.Flush();
}

void Volume::SpillIfLarge() {
    m_weight = 0;
    std::size_t records = 0;
    for (const auto& [name, table] : m_tables) {
        records += table->GetDirty();
    }
    if (records > s_limits.records || m_directory.GetDirty() > s_limits.blocks ||
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
    return m_memos.DatabaseHoldsStep() && m_directory.DatabaseHoldsStep();
}

void Volume::Commit() {
    sqlite3* connection = m_database.Get();
    const int result = sqlite3_step(m_commit.Get());
    m_commit.Reset();
    if (result == SQLITE_DONE) {
        return;
    }
    if (result != SQLITE_IOERR_FSYNC || !IsTransactionLost()) {
        ThrowSql(connection, result);
    }
    // A sync failed and the transaction is over. Either the database rolled it back, or only the
    // last sync failed, after which the transaction stands in the file without being durable for
    // certain. The rows tell which. If the step is there, one more commit, of a value that does not
    // change, makes it durable: once that is synced, so is everything before it. The volume is in
    // doubt until this is settled.
    m_inDoubt = true;
    const StoreFailure failure = SqlFailure(connection, result);
    try {
        if (DatabaseHoldsStep()) {
            m_touchFirstPage.Run();
            m_inDoubt = false;
            return;
        }
        m_inDoubt = false;
    } catch (const StoreFailure&) {
        // The medium still fails, so the doubt stays.
    }
    throw failure;
}

/// What a step writes into a file that has no name any more, or another, is lost without a word
/// when the job is closed. So a step looks whether the path still leads to the open file, unless
/// one has looked a moment ago: to ask for a file that was just written takes some systems nearly
/// as long as to write it.
void Volume::RequireInPlace() {
    const auto now = std::chrono::steady_clock::now();
    if (now < m_nextLook) {
        return;
    }
    m_nextLook = now + kBetweenLooks;
    std::error_code failure;
    const auto status = system::Identify(m_path, failure);
    const char* what = !status                             ? "was removed or renamed"
                       : !(status->identity == m_identity) ? "was replaced by another file"
                       : status->size < m_size             ? "was cut off"
                                                           : nullptr;
    if (what != nullptr) {
        m_nextLook = {};
        throw StoreFailure(error::kReadWriteFailed,
                           m_path + " " + what +
                               " while the job was open; the change is not recorded. Put the file "
                               "back where it was and open the job again");
    }
}

void Volume::NoteSize() noexcept {
    const SqlUse use(m_pageCount);
    if (sqlite3_step(m_pageCount.Get()) == SQLITE_ROW) {
        m_size =
            static_cast<std::uint64_t>(sqlite3_column_int64(m_pageCount.Get(), 0)) * m_pageSize;
    }
}

void Volume::CommitStep() {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    try {
        RequireSound();
        // A step without changes must not cost an fsync.
        if (m_transactionOpen || IsDirty()) {
            RequireInPlace();
            Flush();
            Commit();
            NoteSize();
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
    m_directory.KeepStep();
}

void Volume::RollbackStep() {
    if (!m_stepOpen) {
        throw StoreFailure(error::kInvalidArgument, "no step is open");
    }
    if (m_transactionOpen && sqlite3_get_autocommit(m_database.Get()) == 0) {
        sqlite3_step(m_rollback.Get());
        m_rollback.Reset();
        m_inDoubt = m_inDoubt || sqlite3_get_autocommit(m_database.Get()) == 0;
    }
    m_transactionOpen = false;
    m_stepOpen = false;
    m_stepFailure = 0;
    m_stepFailureDetail.clear();
    // After the database: what the step touched is read from there.
    UndoMemory();
}

void Volume::UndoMemory() noexcept {
    // Open handles may still hold a table that the step created, so its object stays and refuses.
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
    m_directory.UndoStep();
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
                           "\"" + name + "\" is not a valid name for a table or view");
    }
    // The database's names do not differ by case alone, and its schema also holds views and indexes
    // that are not in m_tables.
    SqlStatement taken(m_database.Get(),
                       "SELECT 1 FROM sqlite_schema WHERE name = ?1 COLLATE NOCASE");
    taken.BindText(1, name);
    if (taken.Step()) {
        throw StoreFailure(error::kTableExists, "table " + name);
    }
}

void Volume::CreateTable(const std::string& name, RecordFormat format) {
    RequireFreeName(name);
    BeginTransaction();
    SqlRun(m_database.Get(), format.CreateSql(name));
    auto table = std::make_shared<RecordTable>(m_database.Get(), m_memos, name, std::move(format));
    m_tables.emplace(name, table);
    m_tablesOfStep.emplace(name, std::move(table));
}

void Volume::CreateView(const std::string& name, const std::string& sql) {
    RequireFreeName(name);
    BeginTransaction();
    SqlRun(m_database.Get(), "CREATE VIEW \"" + name + "\" AS " + sql);
}

std::shared_ptr<VolumeFile> Volume::FindFile(const CString& name) {
    RequireCertain();
    return m_directory.Find(name);
}

void Volume::CreateFile(const CString& name) {
    m_directory.RequireNone(name);
    BeginTransaction();
    m_directory.Create(name);
}

void Volume::CopyFile(const CString& source, const CString& target) {
    // Whatever can be refused is refused before the first change.
    const std::shared_ptr<VolumeFile> from = m_directory.Require(source);
    from->CheckBlocks();
    m_directory.RequireNone(target);
    BeginTransaction();
    const std::shared_ptr<VolumeFile> to = m_directory.Create(target);
    std::array<std::byte, VolumeFile::kBlock> bytes{};
    for (std::uint32_t at = 0; at < from->GetLength();) {
        const std::uint32_t got = from->Read(at, bytes.data(), VolumeFile::kBlock);
        to->Write(at, bytes.data(), got);
        at += got;
        if (at % kFilePiece == 0) {
            SpillIfLarge();
        }
    }
}

void Volume::RenameFile(const CString& from, const CString& to) {
    (void)m_directory.Require(from);
    m_directory.RequireNone(to);
    BeginTransaction();
    m_directory.Rename(from, to);
}

void Volume::DeleteFile(const CString& name) {
    (void)m_directory.Require(name);
    BeginTransaction();
    m_directory.Delete(name);
}

void Volume::WriteFile(VolumeFile& file, std::uint32_t position, const std::byte* bytes,
                       std::uint32_t count) {
    if (count > VolumeFile::kMostBytes || position > VolumeFile::kMostBytes - count) {
        throw StoreFailure(error::kVolumeFull, "a file has at most 2147483647 bytes");
    }
    if (count == 0) {
        return;
    }
    m_directory.Touch();
    // A gap before the position is filled with zeros first, piece by piece.
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
    m_directory.Touch();
    BeginTransaction();
    while (file.GetLength() < length && length - file.GetLength() > kFilePiece) {
        file.SetLength(file.GetLength() + kFilePiece);
        SpillIfLarge();
    }
    file.SetLength(length);
}

std::uint16_t Volume::GetAttributes(const CString& name) {
    RequireCertain();
    return m_directory.GetAttributes(name);
}

void Volume::SetAttributes(const CString& name, std::uint16_t attributes) {
    (void)m_directory.Require(name);
    BeginTransaction();
    m_directory.SetAttributes(name, attributes);
}

}  // namespace cqsurvey
