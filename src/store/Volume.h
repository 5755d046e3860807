#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "store/Failure.h"
#include "store/MemoStore.h"
#include "store/RecordTable.h"
#include "store/Sql.h"
#include "store/VolumeDatabase.h"
#include "store/VolumeDirectory.h"
#include "store/VolumeFile.h"

namespace cqsurvey {

/// One mounted volume: the database file with its tables, memos and files, and the step that is
/// open on it. Failures throw StoreFailure.
///
/// Every change belongs to a *step*: when the step is committed all of its changes are durable, and
/// otherwise none is. A change marks records and blocks in memory. The database gets them late and
/// in bulk, and only the commit waits for the disk:
///
///     BeginStep      the file is not touched
///     Perform        changes memory; may *spill* when too much waits there
///     Perform ...
///     CommitStep     hands over what still waits, COMMIT, fsync
///     RollbackStep   ROLLBACK; what the step touched in memory is read from the database again
///
/// The database's *transaction* is shorter than the step. It begins when rows are first written: at
/// the commit, at a spill, or at a change that writes rows at once because they are few (a new
/// table, a renamed file). A spill bounds the memory of a long step: what waited is handed over
/// into the open transaction.
///
/// A change that fails halfway *spoils* the step: it can only be undone then. A refusal before
/// anything was changed does not spoil it (KindOf).
///
/// The volume is in *doubt* when the fsync at the end of a commit failed and it could not be found
/// out whether the step is on the medium, or when a step could not be undone. From then on every
/// operation fails with error::kReadWriteFailed; mounting the volume again, which lets the database
/// recover, ends the doubt.
class Volume {
 public:
    using Identity = VolumeDatabase::Identity;

    Volume(const std::string& path, Identity identity, bool readOnly);
    Volume(const Volume&) = delete;
    Volume& operator=(const Volume&) = delete;
    /// Undoes the open step, if there is one, and releases the file.
    ~Volume();

    [[nodiscard]] const Identity& GetIdentity() const { return m_identity; }
    /// From the root, as the database has it.
    [[nodiscard]] const std::string& GetPath() const { return m_path; }
    /// For reading the file as a whole (VolumeCopy.h).
    [[nodiscard]] sqlite3* GetConnection() const { return m_database.Get(); }

    /// Asks for the file to be removed with the volume. The volume only remembers it: Registry
    /// removes the file once the volume is unmounted.
    void Discard() noexcept { m_discarded = true; }
    [[nodiscard]] bool IsDiscarded() const { return m_discarded; }

    // Each throws error::kInvalidArgument when a step is open already, or when none is open.

    void BeginStep();
    /// On failure the step is undone before the failure is thrown.
    void CommitStep();
    void RollbackStep();
    [[nodiscard]] bool HasStep() const { return m_stepOpen; }

    /// Makes the open step one that can only be undone: from now on changes and the commit fail
    /// with `code`. The first reason counts.
    void SpoilStep(std::int32_t code, const std::string& detail);

    /// Runs a change as part of the open step or, when none is open, as a step of its own. A change
    /// that fails halfway spoils the open step; a refusal does not. `weight` says roughly how many
    /// records' worth of memory the change takes. Throws error::kAccessDenied on a volume that can
    /// only be read.
    template <class Change>
    void Perform(std::size_t weight, Change&& change) {
        RequireWritable();
        const bool own = !m_stepOpen;
        if (own) {
            BeginStep();
        } else {
            RequireSound();
        }
        try {
            change();
            m_weight += weight;
            if (m_weight >= s_limits.weight) {
                SpillIfLarge();
            }
        } catch (const StoreFailure& failure) {
            EndFailed(own, failure);
            throw;
        } catch (...) {
            EndFailed(own, StoreFailure(error::kOutOfMemory));
            throw;
        }
        if (own) {
            CommitStep();
        }
    }

    /// When a long step spills: as soon as more records, blocks of files or code units of memos
    /// than this wait in memory. Counting them takes a look at every table, so they are counted
    /// only after changes of `weight` in all. Tests set smaller limits.
    struct SpillLimits {
        std::size_t weight = 1024;
        std::size_t records = 65536;
        std::size_t blocks = 1024;
        std::size_t units = std::size_t{1} << 22;
    };
    static void SetSpillLimits(const SpillLimits& limits) { s_limits = limits; }

    /// Opens the database's transaction if the step has not done so yet. Every change that writes
    /// rows at once must call this first.
    void BeginTransaction();

    /// Null when there is no such table.
    [[nodiscard]] std::shared_ptr<RecordTable> FindTable(std::string_view name);
    /// Throw error::kTableExists for a name that is taken, without regard to case, and
    /// error::kBadTableDescription for one that is not valid. Call them inside Perform.
    void CreateTable(const std::string& name, RecordFormat format);
    void CreateView(const std::string& name, const std::string& sql);

    /// As VolumeDatabase::FindWrongPage.
    [[nodiscard]] std::uint32_t FindWrongPage(std::uint32_t after) const {
        return m_database.FindWrongPage(after);
    }

    [[nodiscard]] MemoStore& GetMemos() {
        RequireCertain();
        return m_memos;
    }

    /// Throws error::kReadWriteFailed while the volume is in doubt.
    void RequireCertain() const;

    /// Null when there is no such file.
    [[nodiscard]] std::shared_ptr<VolumeFile> FindFile(const CString& name);

    // Files by name. The changes must be called inside Perform. They throw error::kNoFile for a
    // file that does not exist, error::kFileExists for a new name that is taken, and for a file
    // that would have more than VolumeFile::kMostBytes: WriteFile error::kVolumeFull, SetFileLength
    // error::kInvalidArgument.

    void CreateFile(const CString& name);
    void CopyFile(const CString& source, const CString& target);
    void RenameFile(const CString& from, const CString& to);
    void DeleteFile(const CString& name);
    void WriteFile(VolumeFile& file, std::uint32_t position, const std::byte* bytes,
                   std::uint32_t count);
    void SetFileLength(VolumeFile& file, std::uint32_t length);
    [[nodiscard]] std::uint16_t GetAttributes(const CString& name);
    void SetAttributes(const CString& name, std::uint16_t attributes);

 private:
    /// Files are written and lengthened in pieces of this size, with a chance to spill after each,
    /// so that one large write does not need memory for all of it.
    static constexpr std::uint32_t kFilePiece = 256 * VolumeFile::kBlock;

    static SpillLimits s_limits;

    void RequireWritable() const;
    static constexpr std::chrono::milliseconds kBetweenLooks{200};
    void RequireInPlace();
    void NoteSize() noexcept;
    void RequireFreeName(const std::string& name);
    [[nodiscard]] bool IsTransactionLost() const;
    void RequireSound() const;
    void EndFailed(bool own, const StoreFailure& failure);
    void Flush();
    void SpillIfLarge();
    [[nodiscard]] bool IsDirty() const;
    void Commit();
    [[nodiscard]] bool DatabaseHoldsStep();
    void UndoMemory() noexcept;

    // The database comes first, because the members below use its connection and must be destroyed
    // before it.
    VolumeDatabase m_database;
    Identity m_identity;
    std::string m_path;
    /// The bytes of the file after the last step.
    std::uint64_t m_size = 0;
    std::uint64_t m_pageSize = 0;
    /// Until then no step looks whether the file is still in its place.
    std::chrono::steady_clock::time_point m_nextLook;
    bool m_discarded = false;
    bool m_stepOpen = false;
    bool m_transactionOpen = false;
    bool m_inDoubt = false;
    /// Prepared when the volume is mounted, so that a step can be undone when memory has run out.
    SqlStatement m_begin;
    SqlStatement m_commit;
    SqlStatement m_rollback;
    /// Writes the format version into page 1, which must be the first page that a step changes
    /// (CheckedVfs). It also raises the version of a file of an earlier one.
    SqlStatement m_touchFirstPage;
    SqlStatement m_pageCount;
    /// Why the open step can only be undone; 0 while it can be committed.
    std::int32_t m_stepFailure = 0;
    std::string m_stepFailureDetail;
    /// The weight of the changes since the volume last looked whether to spill.
    std::size_t m_weight = 0;
    MemoStore m_memos;
    VolumeDirectory m_directory;
    std::map<std::string, std::shared_ptr<RecordTable>, std::less<>> m_tables;
    /// The tables that the open step created.
    std::map<std::string, std::shared_ptr<RecordTable>, std::less<>> m_tablesOfStep;
};

}  // namespace cqsurvey
