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

/// An open table: where it is in its records.
struct TableCursor {
    /// The place after the last record.
    static constexpr std::uint64_t kAfterLast = std::uint64_t{1} << 32;

    Volume* volume;
    std::shared_ptr<RecordTable> table;
    std::uint64_t place = 0;  ///< a number, with or without a record, or kAfterLast
    bool valid = false;       ///< the place has a record, unless it was deleted meanwhile

    /// The number of the current record, 0 when there is none.
    [[nodiscard]] std::uint32_t Current() const {
        const auto number = static_cast<std::uint32_t>(place);
        return valid && table->Find(number) != nullptr ? number : 0;
    }
};

/// An open file.
struct FileCursor {
    Volume* volume;
    std::shared_ptr<VolumeFile> file;
    int mode;
    std::uint32_t position = 0;
};

/// A volume's path as the host takes it. Throws StoreFailure error::kInvalidArgument for one that
/// cannot be any.
[[nodiscard]] std::string RequireHostPath(const CString& path);

/// What is mounted and open in this process, and how the Qrfs and Qrdb functions work on it: each
/// runs its body with Run, finds what it was called with by name or by handle, and throws
/// StoreFailure where something is wrong. There is one Registry; it is never destroyed, so that job
/// objects of static storage may still close their jobs while the process ends.
class Registry {
 public:
    [[nodiscard]] static Registry& Get();

    /// Runs one operation of the store. A failure inside sets the thread's last error and gives
    /// `sign`.
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

    /// The thread's last error. A detail is kept up to a length that any message fits.
    static void SetLastError(std::int32_t code, const char* detail = "") noexcept;
    [[nodiscard]] static std::int32_t GetLastError() noexcept;
    [[nodiscard]] static const char* GetLastErrorDetail() noexcept;

    void Mount(const CString& path, const CString& mountName, bool readOnly);
    void Unmount(const CString& mountName);

    /// Whether a path of the host is the file of a mounted volume.
    [[nodiscard]] bool IsMounted(const CString& hostPath);

    /// Throws StoreFailure error::kNoMount when nothing is mounted under the name.
    [[nodiscard]] Volume& Find(const CString& mountName);

    /// A path's volume and the name after ":/". Throws as Find.
    [[nodiscard]] std::pair<Volume*, CString> Resolve(const CString& path);

    // An open handle's object, or a StoreFailure error::kInvalidArgument. 0 is no handle.

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
