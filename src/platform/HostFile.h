#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "cqsurvey/Types.h"
#include "platform/System.h"

namespace cqsurvey {

/// A path of the host's file system as the system takes it; "\" and "/" both separate folders.
[[nodiscard]] std::string HostPath(const CString& path);

/// A file of the host's file system, named as an application names it. It is closed with its
/// object.
class HostFile {
 public:
    /// Anything of that name: a file, a folder, a device.
    [[nodiscard]] static bool Exists(const CString& path);

    // Each closes what was open. Returns false, with nothing open, on failure.

    /// For a plain file only: a pipe or a device may never end, or never begin.
    [[nodiscard]] bool OpenToRead(const CString& path);
    /// Creates the file, or empties the one that is there.
    [[nodiscard]] bool Create(const CString& path);

    /// The bytes of the file that OpenToRead opened, at that moment.
    [[nodiscard]] std::uint64_t GetSize() const { return m_size; }

    /// The number of bytes read, 0 only at the end; nothing on failure and when nothing is open.
    [[nodiscard]] std::optional<std::size_t> Read(void* buffer, std::size_t count);
    /// Writes all of it, or returns false.
    [[nodiscard]] bool Write(const void* buffer, std::size_t count);
    /// False when the system reports only now that something was not written.
    [[nodiscard]] bool Close();

 private:
    bool Open(const CString& path, system::Descriptor::Mode mode);

    system::Descriptor m_descriptor;
    std::uint64_t m_size = 0;
};

}  // namespace cqsurvey
