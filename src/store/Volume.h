#pragma once

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
class Volume {
 public:
    using Identity = VolumeDatabase::Identity;

    Volume(const std::string& path, Identity identity, bool readOnly);
    Volume(const Volume&) = delete;
    Volume& operator=(const Volume&) = delete;
    /// Undoes a step that is open and releases the file.
    ~Volume();

    [[nodiscard]] const Identity& GetIdentity() const { return m_identity; }
    /// From the root, as the database has it.
    [[nodiscard]] const std::string& GetPath() const { return m_path; }

    /// The file goes with the volume; whoever gives the volume up removes it then.
    void Discard() noexcept { m_discarded = true; }
    [[nodiscard]] bool IsDiscarded() const { return m_discarded; }

    void BeginStep();
    void CommitStep();
    void RollbackStep();
    [[nodiscard]] bool HasStep() const { return m_stepOpen; }

    /// Makes the open step one that can only be undone: changes and the commit fail with the code.
    void SpoilStep(std::int32_t code, const std::string& detail);

    /// Runs a change: as part of the open step, or as a step of its own. A change that fails
    /// halfway spoils the open step; one that is refused before it changed anything does not.
    /// `weight` tells roughly how many records' worth of memory it takes.
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

    /// How much waits in memory before it is handed to the database inside a long step, and how
    /// much may change before the volume looks whether it is so much.
    struct SpillLimits {
        std::size_t weight = 1024;
        std::size_t records = 65536;
        std::size_t blocks = 1024;
        std::size_t units = std::size_t{1} << 22;
    };
    static void SetSpillLimits(const SpillLimits& limits) { s_limits = limits; }

    /// Opens the database's transaction if the step has not done so yet: what changes rows at once
    /// calls it first.
    void BeginTransaction();

    /// Null when there is none.
    [[nodiscard]] std::shared_ptr<RecordTable> FindTable(std::string_view name);
    void CreateTable(const std::string& name, RecordFormat format);
    void CreateView(const std::string& name, const std::string& sql);

    [[nodiscard]] MemoStore& GetMemos() {
        RequireCertain();
        return m_memos;
    }

    /// Throws 0x30000005 when a failure left open what the file holds.
    void RequireCertain() const;

    /// Null when there is none.
    [[nodiscard]] std::shared_ptr<VolumeFile> FindFile(const CString& name);
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
    /// A file is written and lengthened by this much at a time.
    static constexpr std::uint32_t kFilePiece = 256 * VolumeFile::kBlock;

    static SpillLimits s_limits;

    void RequireWritable() const;
    void RequireInPlace() const;
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

    VolumeDatabase m_database;
    Identity m_identity;
    std::string m_path;
    /// The bytes of the file after the last step.
    std::uint64_t m_size = 0;
    bool m_discarded = false;
    bool m_stepOpen = false;
    bool m_transactionOpen = false;
    /// A failed sync left open whether the last step is on the medium, or a step could not be
    /// undone: nothing but mounting anew tells, and until then everything fails.
    bool m_inDoubt = false;
    /// Made at the mount, so that a step can be undone where no memory is left.
    SqlStatement m_begin;
    SqlStatement m_commit;
    SqlStatement m_rollback;
    /// Why the open step can only be undone.
    std::int32_t m_stepFailure = 0;
    std::string m_stepFailureDetail;
    std::size_t m_weight = 0;
    MemoStore m_memos;
    VolumeDirectory m_directory;
    std::map<std::string, std::shared_ptr<RecordTable>, std::less<>> m_tables;
    std::map<std::string, std::shared_ptr<RecordTable>, std::less<>> m_tablesOfStep;
};

}  // namespace cqsurvey
