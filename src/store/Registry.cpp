#include "store/Registry.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "cqsurvey/Text.h"
#include "platform/HostFile.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "store/VolumePath.h"

namespace cqsurvey {

namespace {

/// It has no destructor, so that it can be used until the very end of the thread.
struct ThreadError {
    std::int32_t code;
    std::array<char, 1024> detail;
};

constinit thread_local ThreadError t_last{error::kNone, {}};

}  // namespace

std::string RequireHostPath(const CString& path) {
    // The system would cut the path at a zero, and then it would name another file.
    if (path.empty() || path.find(u'\0') != CString::npos) {
        throw StoreFailure(error::kInvalidArgument, "a volume needs a path");
    }
    return HostPath(path);
}

Registry& Registry::Get() {
    static auto* registry = new Registry;
    return *registry;
}

void Registry::SetLastError(std::int32_t code, const char* detail) noexcept {
    t_last.code = code;
    const std::size_t length = std::min(std::strlen(detail), t_last.detail.size() - 1);
    std::copy_n(detail, length, t_last.detail.begin());
    t_last.detail[length] = '\0';
}

std::int32_t Registry::GetLastError() noexcept {
    return t_last.code;
}

const char* Registry::GetLastErrorDetail() noexcept {
    return t_last.detail.data();
}

void Registry::Mount(const CString& path, const CString& mountName, bool readOnly) {
    if (mountName.empty() || mountName.find(u':') != CString::npos) {
        throw StoreFailure(error::kInvalidArgument,
                           "a mount name must not be empty or contain a colon");
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

void Registry::Unmount(const CString& mountName) {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_volumes.find(mountName);
    if (found == m_volumes.end()) {
        throw StoreFailure(error::kNoMount, ToUtf8(mountName));
    }
    const Volume* volume = found->second.get();
    m_tables.RemoveIf([&](const TableCursor& cursor) { return cursor.volume == volume; });
    m_files.RemoveIf([&](const FileCursor& cursor) { return cursor.volume == volume; });
    // The file can only be removed when the volume has released it, so what that takes is kept.
    const Volume::Identity identity = volume->GetIdentity();
    const std::string discarded = volume->IsDiscarded() ? volume->GetPath() : std::string();
    m_volumes.erase(found);
    if (!discarded.empty()) {
        VolumeDatabase::Remove(discarded, identity);
    }
}

bool Registry::IsMounted(const CString& hostPath) {
    Volume::Identity identity;
    try {
        identity = VolumeDatabase::Identify(RequireHostPath(hostPath));
    } catch (const StoreFailure&) {
        return false;
    }
    const std::scoped_lock lock(m_mutex);
    return std::any_of(m_volumes.begin(), m_volumes.end(),
                       [&](const auto& entry) { return entry.second->GetIdentity() == identity; });
}

bool Registry::IsBesideMounted(const CString& hostPath) {
    std::string path;
    try {
        path = RequireHostPath(hostPath);
    } catch (const StoreFailure&) {
        return false;
    }
    const std::scoped_lock lock(m_mutex);
    return std::any_of(m_volumes.begin(), m_volumes.end(), [&](const auto& entry) {
        return IsBesideVolume(path, entry.second->GetPath());
    });
}

Volume& Registry::Find(const CString& mountName) {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_volumes.find(mountName);
    if (found == m_volumes.end()) {
        throw StoreFailure(error::kNoMount, "\"" + ToUtf8(mountName) + "\"");
    }
    return *found->second;
}

std::pair<Volume*, CString> Registry::Resolve(const CString& path) {
    const std::size_t colon = path.find(u":/");
    if (colon == CString::npos) {
        throw StoreFailure(error::kNoMount, "\"" + ToUtf8(path) + "\" is not a path on a volume");
    }
    return {&Find(path.substr(0, colon)), path.substr(colon + 2)};
}

std::uint32_t Registry::AddTable(TableCursor cursor) {
    const std::uint32_t handle = m_tables.Add(std::move(cursor));
    if (handle == 0) {
        throw StoreFailure(error::kOutOfMemory, "too many open tables");
    }
    return handle;
}

TableCursor& Registry::Table(std::uint32_t handle) {
    TableCursor* cursor = m_tables.Find(handle);
    if (cursor == nullptr) {
        throw StoreFailure(error::kInvalidArgument, "no open table has this handle");
    }
    return *cursor;
}

void Registry::RemoveTable(std::uint32_t handle) {
    if (!m_tables.Remove(handle)) {
        throw StoreFailure(error::kInvalidArgument, "no open table has this handle");
    }
}

std::int32_t Registry::AddFile(FileCursor cursor) {
    const std::uint32_t handle = m_files.Add(std::move(cursor));
    if (handle == 0) {
        throw StoreFailure(error::kOutOfMemory, "too many open files");
    }
    return static_cast<std::int32_t>(handle);
}

FileCursor& Registry::File(std::int32_t handle) {
    FileCursor* cursor = handle <= 0 ? nullptr : m_files.Find(static_cast<std::uint32_t>(handle));
    if (cursor == nullptr) {
        throw StoreFailure(error::kInvalidArgument, "no open file has this handle");
    }
    cursor->volume->RequireCertain();
    if (cursor->file->IsGone()) {
        throw StoreFailure(error::kNoFile, "the open file was deleted");
    }
    return *cursor;
}

void Registry::RemoveFile(std::int32_t handle) {
    if (handle <= 0 || !m_files.Remove(static_cast<std::uint32_t>(handle))) {
        throw StoreFailure(error::kInvalidArgument, "no open file has this handle");
    }
}

std::int32_t QrfsGetLastError() {
    return Registry::GetLastError();
}

const char* StoreErrorDetail() {
    return Registry::GetLastErrorDetail();
}

}  // namespace cqsurvey
