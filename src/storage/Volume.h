#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "storage/MemoStore.h"
#include "storage/RecordTable.h"
#include "storage/Sql.h"
#include "storage/StoreFailure.h"
#include "storage/VolumeFile.h"

namespace cqsurvey {

/// One mounted volume: the database file with its tables, memos and files, and the step that is
/// open on it. Failures throw StoreFailure.
class Volume {
 public:
    /// Which file of the host a volume is, however its path was written.
    using Identity = std::pair<dev_t, ino_t>;

    /// Creates an empty volume; 0x30000015 when anything exists at the path.
    static void Create(const std::string& path);

    /// 0x30000009 when nothing is there, 0x30000007 when it is no plain file.
    [[nodiscard]] static Identity Identify(const std::string& path);

    Volume(const std::string& path, Identity identity, bool readOnly);
    Volume(const Volume&) = delete;
    Volume& operator=(const Volume&) = delete;
    /// Undoes a step that is open and releases the file.
    ~Volume();

    [[nodiscard]] const Identity& GetIdentity() const { return m_identity; }

    void BeginStep();
    void CommitStep();
    void RollbackStep();
    [[nodiscard]] bool HasStep() const { return m_stepOpen; }

    /// Runs a change: as part of the open step, or as a step of its own.
    /// `weight` tells roughly how many records' worth of memory it takes.
    template <class Change>
    void Perform(std::size_t weight, Change&& change) {
        RequireWritable();
        if (m_stepOpen) {
            RequireSound();
            try {
                change();
                m_weight += weight;
                if (m_weight >= kWeightToLook) {
                    SpillIfLarge();
                }
            } catch (const StoreFailure& failure) {
                NoteFailure(failure);
                throw;
            }
            return;
        }
        BeginStep();
        try {
            change();
        } catch (...) {
            RollbackStep();
            throw;
        }
        CommitStep();
    }

    /// Opens the database's transaction if the step has not done so yet: what changes rows at once
    /// calls it first.
    void BeginTransaction();

    /// Null when there is none.
    [[nodiscard]] std::shared_ptr<RecordTable> FindTable(std::string_view name);
    void CreateTable(const std::string& name, RecordFormat format);
    void CreateView(const std::string& name, const std::string& sql);

    /// Tells that a file is about to change.
    void TouchFiles() { m_filesTouched = true; }

    [[nodiscard]] MemoStore& GetMemos() { return m_memos; }

    /// Null when there is none.
    [[nodiscard]] std::shared_ptr<VolumeFile> FindFile(const CString& name);
    void CreateFile(const CString& name);
    void CopyFile(const CString& source, const CString& target);
    void RenameFile(const CString& from, const CString& to);
    void DeleteFile(const CString& name);
    [[nodiscard]] std::uint16_t GetAttributes(const CString& name);
    void SetAttributes(const CString& name, std::uint16_t attributes);

 private:
    struct FileEntry {
        std::shared_ptr<VolumeFile> file;
        std::uint16_t attributes;
    };

    /// How much may change before the volume looks whether memory should be handed on.
    static constexpr std::size_t kWeightToLook = 1024;

    void Configure();
    void Lock();
    void CheckSchema();
    void ReadFiles();
    [[nodiscard]] std::map<CString, FileEntry> FilesInDatabase() const;
    [[nodiscard]] FileEntry& RequireFile(const CString& name);
    void RequireNoFile(const CString& name);
    void RequireWritable() const;
    void RequireSound() const;
    void NoteFailure(const StoreFailure& failure);
    void Flush();
    void SpillIfLarge();
    [[nodiscard]] bool IsDirty() const;
    void UndoMemory() noexcept;

    SqlConnection m_connection;
    Identity m_identity;
    bool m_readOnly = false;
    bool m_stepOpen = false;
    bool m_transactionOpen = false;
    /// Why the open step can only be undone.
    std::int32_t m_stepFailure = 0;
    std::string m_stepFailureDetail;
    bool m_filesTouched = false;
    std::size_t m_weight = 0;
    MemoStore m_memos;
    std::map<std::string, std::shared_ptr<RecordTable>, std::less<>> m_tables;
    std::map<std::string, std::shared_ptr<RecordTable>, std::less<>> m_tablesOfStep;
    std::map<CString, FileEntry> m_files;
    /// Files deleted in the open step, for the handles that an undo brings back.
    std::map<std::int64_t, std::shared_ptr<VolumeFile>> m_filesDeleted;
};

}  // namespace cqsurvey
