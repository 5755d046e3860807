#include "store/MountRegistry.h"

#include <sys/stat.h>

#include <algorithm>

#include "cqsurvey/Text.h"
#include "platform/HostFile.h"
#include "store/StoreFailure.h"

namespace cqsurvey {

std::string RequireHostPath(const CString& path) {
    // Cut at a zero, it would name another file.
    if (path.empty() || path.find(u'\0') != CString::npos) {
        throw StoreFailure(error::kInvalidArgument, "a volume needs a path");
    }
    return HostPath(path);
}

MountRegistry& MountRegistry::Get() {
    static MountRegistry registry;
    return registry;
}

void MountRegistry::Mount(const CString& path, const CString& mountName, bool readOnly) {
    if (mountName.empty() || mountName.find(u':') != CString::npos) {
        throw StoreFailure(error::kInvalidArgument, "a mount needs a name without colon");
    }
    const std::string hostPath = RequireHostPath(path);
    const std::scoped_lock lock(m_mutex);
    if (m_volumes.contains(mountName)) {
        throw StoreFailure(error::kMountNameInUse, ToUtf8(mountName));
    }
    const Volume::Identity identity = VolumeDatabase::Identify(hostPath);
    for (const auto& [name, volume] : m_volumes) {
        if (volume->GetIdentity() == identity) {
            throw StoreFailure(error::kVolumeMounted, hostPath);
        }
    }
    m_volumes.emplace(mountName, std::make_unique<Volume>(hostPath, identity, readOnly));
}

void MountRegistry::Unmount(const CString& mountName) {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_volumes.find(mountName);
    if (found == m_volumes.end()) {
        throw StoreFailure(error::kNoMount, ToUtf8(mountName));
    }
    const Volume* volume = found->second.get();
    m_tables.RemoveIf([&](const TableCursor& cursor) { return cursor.volume == volume; });
    m_files.RemoveIf([&](const FileCursor& cursor) { return cursor.volume == volume; });
    const Volume::Identity identity = volume->GetIdentity();
    const std::string discarded = volume->IsDiscarded() ? volume->GetPath() : std::string();
    m_volumes.erase(found);
    if (!discarded.empty()) {
        VolumeDatabase::Remove(discarded, identity);
    }
}

bool MountRegistry::IsMounted(const CString& hostPath) {
    struct stat status {};
    if (stat(HostPath(hostPath).c_str(), &status) != 0) {
        return false;
    }
    const Volume::Identity identity{status.st_dev, status.st_ino};
    const std::scoped_lock lock(m_mutex);
    return std::any_of(m_volumes.begin(), m_volumes.end(),
                       [&](const auto& entry) { return entry.second->GetIdentity() == identity; });
}

Volume& MountRegistry::Find(const CString& mountName) {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_volumes.find(mountName);
    if (found == m_volumes.end()) {
        throw StoreFailure(error::kNoMount, "\"" + ToUtf8(mountName) + "\"");
    }
    return *found->second;
}

std::pair<Volume*, CString> MountRegistry::Resolve(const CString& path) {
    const std::size_t colon = path.find(u":/");
    if (colon == CString::npos) {
        throw StoreFailure(error::kNoMount, "\"" + ToUtf8(path) + "\" names no volume");
    }
    return {&Find(path.substr(0, colon)), path.substr(colon + 2)};
}

}  // namespace cqsurvey
