#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "cqsurvey/Types.h"
#include "store/Sql.h"
#include "store/VolumeFile.h"

namespace cqsurvey {

/// The files of a mounted volume by their names, and how they were before the open step. Failures
/// throw StoreFailure.
///
/// The directory is small and always in memory. Names, attributes, new files and deletions go to
/// the database at once; the content of files waits in their blocks until Flush (VolumeFile).
///
/// For an undo the directory keeps a copy of itself from before the first change of a step. The
/// copy shares the VolumeFile objects, so a handle that an application has open stays true: a file
/// that comes back is the same object, and a file that goes is marked as gone.
class VolumeDirectory {
 public:
    explicit VolumeDirectory(sqlite3* connection) : m_connection(connection) {}

    /// Reads the files from the database. Throws error::kDamaged when a row is not one that a
    /// volume writes.
    void Load() { m_entries = ReadAll(); }

    /// Null when there is no such file.
    [[nodiscard]] std::shared_ptr<VolumeFile> Find(const CString& name) const;
    /// Throws error::kNoFile when there is no such file.
    [[nodiscard]] std::shared_ptr<VolumeFile> Require(const CString& name) const;
    /// Throws error::kFileExists when there is such a file, error::kInvalidArgument for an empty
    /// name.
    void RequireNone(const CString& name) const;
    [[nodiscard]] std::uint16_t GetAttributes(const CString& name) const;

    // The changes below must be made inside a step of the volume (Volume::Perform).

    /// Remembers how the files are now, if the step has not done so. To be called before the
    /// content of a file is changed; the functions below call it themselves.
    void Touch();

    // These write to the database, whose transaction must be open (Volume::BeginTransaction).

    std::shared_ptr<VolumeFile> Create(const CString& name);
    void Rename(const CString& from, const CString& to);
    void Delete(const CString& name);
    void SetAttributes(const CString& name, std::uint16_t attributes);

    /// The number of blocks that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const;
    /// Hands them to the database, inside its open transaction.
    void Flush();

    /// Whether the database has what the step left in memory.
    [[nodiscard]] bool DatabaseHoldsStep() const;

    /// To be called when the step is durable.
    void KeepStep() noexcept;
    /// To be called when the database has undone the step.
    void UndoStep() noexcept;

 private:
    struct Entry {
        std::shared_ptr<VolumeFile> file;
        std::uint16_t attributes;
        std::uint32_t lengthAtStep = 0;
    };

    [[nodiscard]] std::map<CString, Entry> ReadAll() const;
    [[nodiscard]] const Entry& At(const CString& name) const;
    /// Whether the database has blocks for a file of this number.
    [[nodiscard]] bool HasBlocks(std::int64_t id) const;

    sqlite3* m_connection;
    bool m_touched = false;
    std::map<CString, Entry> m_entries;
    /// The files before the first change of the open step; empty while there was none.
    std::map<CString, Entry> m_entriesAtStep;
};

}  // namespace cqsurvey
