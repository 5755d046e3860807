#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A path of the host's file system as the system takes it; "\" and "/" both separate folders.
[[nodiscard]] std::string HostPath(const CString& path);

/// A file of the host's file system; it is closed with its object.
class HostFile {
 public:
    HostFile() = default;
    HostFile(const HostFile&) = delete;
    HostFile& operator=(const HostFile&) = delete;
    ~HostFile();

    /// Anything of that name: a file, a folder, a device.
    [[nodiscard]] static bool Exists(const CString& path);

    /// Each closes what was open, and gives false, with nothing open, on failure.
    [[nodiscard]] bool OpenToRead(const CString& path);
    /// Creates the file, or empties the one that is there.
    [[nodiscard]] bool Create(const CString& path);

    /// The number of bytes read, 0 only at the end; nothing on failure and when nothing is open.
    [[nodiscard]] std::optional<std::size_t> Read(void* buffer, std::size_t count);
    /// Writes all of it, or gives false.
    [[nodiscard]] bool Write(const void* buffer, std::size_t count);
    /// False when the system reports only now that something was not written.
    [[nodiscard]] bool Close();

 private:
    bool Open(const CString& path, int flags);

    int m_descriptor = -1;
};

}  // namespace cqsurvey
