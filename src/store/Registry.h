#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "cqsurvey/Types.h"
#include "store/Failure.h"
#include "store/HandleTable.h"
#include "store/Volume.h"

namespace cqsurvey {

/// An open table: what a table handle stands for. The cursor is a place in record order, and the
/// place may be one where there is no record (any more).
struct TableCursor {
    /// The place after the last record, above every number.
    static constexpr std::uint64_t kAfterLast = std::uint64_t{1} << 32;

    Volume* volume;
    std::shared_ptr<RecordTable> table;
    std::uint64_t place = 0;  ///< a record number, 0 before the first, or kAfterLast
    bool valid = false;       ///< a move ended at a record here; another handle may have deleted it

    /// The number of the current record, 0 when there is none.
    [[nodiscard]] std::uint32_t Current() const {
        const auto number = static_cast<std::uint32_t>(place);
        return valid && table->Find(number) != nullptr ? number : 0;
    }
};

/// An open file: what a file handle stands for.
struct FileCursor {
    Volume* volume;
    std::shared_ptr<VolumeFile> file;
    int mode;  ///< 1 to read, 2 to write, 3 for both
    std::uint32_t position = 0;
};

/// A volume's path in the host's form. Throws error::kInvalidArgument for one that cannot name a
/// file.
[[nodiscard]] std::string RequireHostPath(const CString& path);

/// What this process has mounted and opened: volumes by mount name, tables and files by handle.
///
/// The Qrfs and Qrdb functions are written around it. Each runs its body with Run, finds its volume
/// by name or its table or file by handle, and throws StoreFailure when something is wrong. Run is
/// the one place where a failure becomes the thread's last error.
///
/// The registry owns the volumes and what is open on them; unmounting a volume closes the rest. It
/// is guarded for several threads, but a volume and its handles are used by one thread at a time.
/// There is one registry, and it is never destroyed, so that job objects of static storage can
/// still close their jobs while the process ends.
class Registry {
 public:
    [[nodiscard]] static Registry& Get();

    /// Runs one operation of the store and returns its result. A failure inside sets the thread's
    /// last error instead, and `sign` is returned.
    template <class Result, class Body>
    static Result Run(Result sign, Body&& body) noexcept {
        try {
            return static_cast<Result>(std::forward<Body>(body)(Get()));
        } catch (const StoreFailure& failure) {
            SetLastError(failure.code, failure.detail.c_str());
        } catch (const std::bad_alloc&) {
            SetLastError(error::kOutOfMemory);
        } catch (...) {
            SetLastError(error::kGeneralFailure);
        }
        return sign;
    }

    // The thread's last error. Its detail is kept up to 1023 bytes, without taking memory.

    static void SetLastError(std::int32_t code, const char* detail = "") noexcept;
    [[nodiscard]] static std::int32_t GetLastError() noexcept;
    [[nodiscard]] static const char* GetLastErrorDetail() noexcept;

    /// Throws error::kMountNameInUse for a name in use, error::kInvalidArgument for one that is
    /// empty or contains a colon, error::kVolumeMounted for a file that is mounted already, by
    /// whatever path; else as VolumeDatabase.
    void Mount(const CString& path, const CString& mountName, bool readOnly);
    /// Closes what is open on the volume and, if it was discarded, removes its file. Throws as
    /// Find.
    void Unmount(const CString& mountName);

    /// Whether a path of the host leads to the file of a mounted volume.
    [[nodiscard]] bool IsMounted(const CString& hostPath);
    /// Whether it leads to one that SQLite keeps beside a mounted volume, or would.
    [[nodiscard]] bool IsBesideMounted(const CString& hostPath);

    /// Throws error::kNoMount when nothing is mounted under the name.
    [[nodiscard]] Volume& Find(const CString& mountName);

    /// Splits a path such as "JOB1:/_Layer" into its volume and the name after ":/". Throws as
    /// Find.
    [[nodiscard]] std::pair<Volume*, CString> Resolve(const CString& path);

    // Tables and files by handle. A handle that is not open, such as 0, throws
    // error::kInvalidArgument; one of a file that was deleted meanwhile, error::kNoFile.

    [[nodiscard]] std::uint32_t AddTable(TableCursor cursor);
    [[nodiscard]] TableCursor& Table(std::uint32_t handle);
    void RemoveTable(std::uint32_t handle);

    [[nodiscard]] std::int32_t AddFile(FileCursor cursor);
    [[nodiscard]] FileCursor& File(std::int32_t handle);
    void RemoveFile(std::int32_t handle);

 private:
    Registry() = default;

    std::mutex m_mutex;
    std::map<CString, std::unique_ptr<Volume>> m_volumes;
    HandleTable<TableCursor> m_tables;
    HandleTable<FileCursor> m_files;
};

}  // namespace cqsurvey
