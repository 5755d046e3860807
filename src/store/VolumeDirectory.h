#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "cqsurvey/Types.h"
#include "store/Sql.h"
#include "store/VolumeFile.h"

namespace cqsurvey {

/// The files of a mounted volume by their names, and how they were before the open step changed
/// them. Failures throw StoreFailure.
class VolumeDirectory {
 public:
    explicit VolumeDirectory(sqlite3* connection) : m_connection(connection) {}

    /// Takes the files from the database; 0x30000007 when they are not such as the volume makes.
    void Load() { m_entries = ReadAll(); }

    /// Null when there is none.
    [[nodiscard]] std::shared_ptr<VolumeFile> Find(const CString& name) const;
    /// 0x30000013 when there is none.
    [[nodiscard]] std::shared_ptr<VolumeFile> Require(const CString& name) const;
    /// 0x30000015 when there is one, 0x30000002 for an empty name.
    void RequireNone(const CString& name) const;
    [[nodiscard]] std::uint16_t GetAttributes(const CString& name) const;

    // The changes below must stand inside a step of the volume.

    /// Keeps how the files are, before the step changes the content of one; the changes below do.
    void Touch();

    // These need the database's transaction open.

    std::shared_ptr<VolumeFile> Create(const CString& name);
    void Rename(const CString& from, const CString& to);
    void Delete(const CString& name);
    void SetAttributes(const CString& name, std::uint16_t attributes);

    /// Blocks that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const;
    void Flush();

    /// Whether the database has what the step left in memory.
    [[nodiscard]] bool DatabaseHoldsStep() const;

    /// The step was made durable.
    void KeepStep() noexcept;
    /// The database has undone the step.
    void UndoStep() noexcept;

 private:
    struct Entry {
        std::shared_ptr<VolumeFile> file;
        std::uint16_t attributes;
        std::uint32_t lengthAtStep = 0;
    };

    [[nodiscard]] std::map<CString, Entry> ReadAll() const;
    [[nodiscard]] const Entry& At(const CString& name) const;

    sqlite3* m_connection;
    bool m_touched = false;
    std::map<CString, Entry> m_entries;
    /// The files as they were before the open step changed one of them.
    std::map<CString, Entry> m_entriesAtStep;
};

}  // namespace cqsurvey
