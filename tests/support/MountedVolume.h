#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cqsurvey/Types.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "support/TempDir.h"

namespace cqsurvey {

/// A new volume, mounted while the object lives.
class MountedVolume {
 public:
    explicit MountedVolume(CString mountName = u"TEST") : m_mountName(std::move(mountName)) {
        Require(QrfsCreateVolume(HostPath()) != 0 && QrfsMount(HostPath(), m_mountName) != 0);
    }
    MountedVolume(const MountedVolume&) = delete;
    MountedVolume& operator=(const MountedVolume&) = delete;
    ~MountedVolume() { QrfsUnmount(m_mountName); }

    [[nodiscard]] CString HostPath() const { return m_folder.Path(u"volume"); }
    [[nodiscard]] const CString& MountName() const { return m_mountName; }
    /// The path of a file on the volume.
    [[nodiscard]] CString File(const CString& name) const { return m_mountName + u":/" + name; }

    /// Unmounts the volume and mounts it again.
    void Remount() {
        Require(QrfsUnmount(m_mountName) != 0 && QrfsMount(HostPath(), m_mountName) != 0);
    }
    void RemountReadOnly() {
        Require(QrfsUnmount(m_mountName) != 0 && StoreMountReadOnly(HostPath(), m_mountName) != 0);
    }

 private:
    static void Require(bool good) {
        if (!good) {
            throw std::runtime_error("the volume store failed");
        }
    }

    TempDir m_folder;
    CString m_mountName;
};

/// The bytes of a file on a volume.
inline std::string VolumeFileBytes(const CString& path) {
    const std::int32_t file = QrfsOpenFile(path, 1);
    if (file == -1) {
        throw std::runtime_error("no file on the volume");
    }
    std::string bytes(static_cast<std::size_t>(QrfsGetLength(file)), '\0');
    std::uint32_t count = 0;
    QrfsRead(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), count);
    QrfsCloseFile(file);
    bytes.resize(count);
    return bytes;
}

/// Makes a file on a volume, or replaces what it holds.
inline void PutVolumeFile(const CString& path, std::string_view bytes) {
    QrfsCreateFile(path, 0);
    const std::int32_t file = QrfsOpenFile(path, 2);
    std::uint32_t count = 0;
    if (file == -1 || QrfsSetLength(file, 0) == 0 ||
        QrfsWrite(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), count) == 0) {
        throw std::runtime_error("the file on the volume cannot be written");
    }
    QrfsCloseFile(file);
}

}  // namespace cqsurvey
