#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "cqsurvey/Types.h"
#include "platform/System.h"

namespace cqsurvey {

/// Converts an application's path to the system's form: UTF-8, with "/" for every "\".
[[nodiscard]] std::string HostPath(const CString& path);

/// A file of the host's file system, opened by the path that an application uses. The destructor
/// closes it.
class HostFile {
 public:
    /// Whether anything has this path: a file, a folder, a device.
    [[nodiscard]] static bool Exists(const CString& path);

    // Both first close the file that is open. On failure they return false, and nothing is open.

    /// For a plain file only: a pipe or a device may never end, or never begin.
    [[nodiscard]] bool OpenToRead(const CString& path);
    /// Creates the file for writing, or empties the existing one.
    [[nodiscard]] bool Create(const CString& path);

    /// The bytes of the file that OpenToRead opened, at that moment.
    [[nodiscard]] std::uint64_t GetSize() const { return m_size; }

    /// Returns the number of bytes read, 0 only at the end; no value on failure or when no file is
    /// open.
    [[nodiscard]] std::optional<std::size_t> Read(void* buffer, std::size_t count);
    /// Returns whether all bytes were written.
    [[nodiscard]] bool Write(const void* buffer, std::size_t count);
    /// Returns false when something was not written, which the system may report only now.
    [[nodiscard]] bool Close();

 private:
    bool Open(const CString& path, system::Descriptor::Mode mode);

    system::Descriptor m_descriptor;
    std::uint64_t m_size = 0;
};

}  // namespace cqsurvey
