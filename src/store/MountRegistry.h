#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "cqsurvey/Types.h"
#include "store/HandleTable.h"
#include "store/Volume.h"

namespace cqsurvey {

/// An open table: where it is in its records.
struct TableCursor {
    Volume* volume;
    std::shared_ptr<RecordTable> table;
    std::uint64_t place = 0;  ///< a number, with or without a record; 2^32 behind the last record
    bool valid = false;       ///< the place has a record, unless it was deleted meanwhile
};

/// An open file.
struct FileCursor {
    Volume* volume;
    std::shared_ptr<VolumeFile> file;
    int mode;
    std::uint32_t position = 0;
};

/// A volume's path as the host takes it. Throws StoreFailure 0x30000002 for one that cannot be any.
[[nodiscard]] std::string RequireHostPath(const CString& path);

/// The volumes mounted in this process and what is open on them.
class MountRegistry {
 public:
    static MountRegistry& Get();

    void Mount(const CString& path, const CString& mountName, bool readOnly);
    void Unmount(const CString& mountName);

    /// Whether a path of the host is the file of a mounted volume.
    [[nodiscard]] bool IsMounted(const CString& hostPath);

    /// Throws StoreFailure 0x3000000E when nothing is mounted under the name.
    [[nodiscard]] Volume& Find(const CString& mountName);

    /// A path's volume and the name behind ":/". Throws as Find.
    [[nodiscard]] std::pair<Volume*, CString> Resolve(const CString& path);

    [[nodiscard]] HandleTable<TableCursor>& Tables() { return m_tables; }
    [[nodiscard]] HandleTable<FileCursor>& Files() { return m_files; }

 private:
    MountRegistry() = default;

    std::mutex m_mutex;
    std::map<CString, std::unique_ptr<Volume>> m_volumes;
    HandleTable<TableCursor> m_tables;
    HandleTable<FileCursor> m_files;
};

}  // namespace cqsurvey
