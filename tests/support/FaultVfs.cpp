#include "support/FaultVfs.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace cqsurvey {

namespace {

constexpr const char* kName = "cqsurvey-fault";
constexpr std::size_t kSector = 512;

struct ShimFile {
    sqlite3_file base;
    FaultVfs* owner;
    char* path;  ///< null for a temporary file; not taken by new, which a test may let fail
    sqlite3_file* real;
};

ShimFile* Shim(sqlite3_file* file) {
    return reinterpret_cast<ShimFile*>(file);
}

sqlite3_file* Real(sqlite3_file* file) {
    return Shim(file)->real;
}

FaultVfs* Owner(sqlite3_vfs* vfs) {
    return static_cast<FaultVfs*>(vfs->pAppData);
}

sqlite3_vfs* System() {
    static sqlite3_vfs* const system = sqlite3_vfs_find("unix");
    return system;
}

int Close(sqlite3_file* file) {
    const int result = Real(file)->pMethods->xClose(Real(file));
    std::free(Shim(file)->path);
    return result;
}

int Read(sqlite3_file* file, void* buffer, int count, sqlite3_int64 at) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kRead)) {
        return *fault;
    }
    return Real(file)->pMethods->xRead(Real(file), buffer, count, at);
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kWrite)) {
        return *fault;
    }
    const int result = Real(file)->pMethods->xWrite(Real(file), bytes, count, at);
    if (result == SQLITE_OK && Shim(file)->path != nullptr) {
        Shim(file)->owner->NoteWritten(Shim(file)->path, bytes, count, at);
    }
    return result;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kTruncate)) {
        return *fault;
    }
    const int result = Real(file)->pMethods->xTruncate(Real(file), size);
    if (result == SQLITE_OK && Shim(file)->path != nullptr) {
        Shim(file)->owner->NoteTruncated(Shim(file)->path, size);
    }
    return result;
}

int Sync(sqlite3_file* file, int /*flags*/) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kSync)) {
        return *fault;
    }
    if (Shim(file)->path != nullptr) {
        Shim(file)->owner->NoteSynced(Shim(file)->path);
    }
    return SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    return Real(file)->pMethods->xFileSize(Real(file), size);
}

int Lock(sqlite3_file* file, int level) {
    return Real(file)->pMethods->xLock(Real(file), level);
}

int Unlock(sqlite3_file* file, int level) {
    return Real(file)->pMethods->xUnlock(Real(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* reserved) {
    return Real(file)->pMethods->xCheckReservedLock(Real(file), reserved);
}

int FileControl(sqlite3_file* file, int what, void* argument) {
    return Real(file)->pMethods->xFileControl(Real(file), what, argument);
}

int SectorSize(sqlite3_file* file) {
    return Real(file)->pMethods->xSectorSize(Real(file));
}

int DeviceCharacteristics(sqlite3_file* file) {
    return Real(file)->pMethods->xDeviceCharacteristics(Real(file));
}

const sqlite3_io_methods* Methods() {
    static const sqlite3_io_methods methods = [] {
        sqlite3_io_methods m{};
        m.iVersion = 1;
        m.xClose = Close;
        m.xRead = Read;
        m.xWrite = Write;
        m.xTruncate = Truncate;
        m.xSync = Sync;
        m.xFileSize = FileSize;
        m.xLock = Lock;
        m.xUnlock = Unlock;
        m.xCheckReservedLock = CheckReservedLock;
        m.xFileControl = FileControl;
        m.xSectorSize = SectorSize;
        m.xDeviceCharacteristics = DeviceCharacteristics;
        return m;
    }();
    return &methods;
}

int Open(sqlite3_vfs* vfs, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    ShimFile* shim = Shim(file);
    shim->base.pMethods = nullptr;
    if (const auto fault = Owner(vfs)->Strike(FaultVfs::kOpen)) {
        return *fault;
    }
    shim->owner = Owner(vfs);
    shim->path = nullptr;
    shim->real = reinterpret_cast<sqlite3_file*>(shim + 1);
    const bool existed = path != nullptr && ::access(path, F_OK) == 0;
    const int result = System()->xOpen(System(), path, shim->real, flags, outFlags);
    if (result == SQLITE_OK) {
        shim->base.pMethods = Methods();
        if (path != nullptr) {
            shim->path = ::strdup(path);
            shim->owner->NoteOpened(path, !existed);
        }
    }
    return result;
}

int Delete(sqlite3_vfs* vfs, const char* path, int /*syncFolder*/) {
    if (const auto fault = Owner(vfs)->Strike(FaultVfs::kDelete)) {
        return *fault;
    }
    const int result = System()->xDelete(System(), path, 0);
    if (result == SQLITE_OK) {
        Owner(vfs)->NoteDeleted(path);
    }
    return result;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

FaultVfs::FaultVfs() {
    const sqlite3_vfs* system = System();
    m_vfs = *system;
    m_vfs.szOsFile = static_cast<int>(sizeof(ShimFile)) + system->szOsFile;
    m_vfs.zName = kName;
    m_vfs.pNext = nullptr;
    m_vfs.pAppData = this;
    m_vfs.xOpen = Open;
    m_vfs.xDelete = Delete;
    if (sqlite3_vfs_register(&m_vfs, 1) != SQLITE_OK) {
        throw std::runtime_error("the file system was not registered");
    }
}

FaultVfs::~FaultVfs() {
    sqlite3_vfs_unregister(&m_vfs);
    sqlite3_vfs_register(System(), 1);
}

void FaultVfs::FailAt(unsigned calls, std::int64_t at, int result, bool stays) {
    m_calls = calls;
    m_left = at;
    m_result = result;
    m_stays = stays;
    m_struck = false;
}

void FaultVfs::Heal() {
    m_calls = 0;
    m_watching = false;
}

std::optional<int> FaultVfs::Strike(Call call) {
    if ((m_calls & call) == 0) {
        return std::nullopt;
    }
    if (m_left > 0) {
        --m_left;
    } else if (!m_stays) {
        return std::nullopt;
    }
    if (m_left > 0) {
        return std::nullopt;
    }
    m_struck = true;
    if (m_result == kPowerCut) {
        m_calls = kOpen | kRead | kChanging;
        m_stays = true;
    } else if (!m_stays) {
        m_calls = 0;
    }
    if (m_result != SQLITE_IOERR) {
        return m_result;
    }
    switch (call) {
        case kOpen:
            return SQLITE_CANTOPEN;
        case kRead:
            return SQLITE_IOERR_READ;
        case kWrite:
            return SQLITE_IOERR_WRITE;
        case kTruncate:
            return SQLITE_IOERR_TRUNCATE;
        case kSync:
            return SQLITE_IOERR_FSYNC;
        default:
            return SQLITE_IOERR_DELETE;
    }
}

void FaultVfs::WatchPower() {
    m_watching = true;
    m_media.clear();
}

void FaultVfs::NoteOpened(const char* path, bool created) {
    if (!m_watching) {
        return;
    }
    const auto [medium, fresh] = m_media.try_emplace(path);
    if (fresh) {
        medium->second.synced = ReadFile(path);
    }
    if (created) {
        medium->second = Medium();
        medium->second.entrySynced = false;
    }
}

void FaultVfs::NoteWritten(const char* path, const void* bytes, int count, sqlite3_int64 at) {
    if (m_watching) {
        m_media[path].pending.push_back(
            {false, at, std::string(static_cast<const char*>(bytes), static_cast<size_t>(count))});
    }
}

void FaultVfs::NoteTruncated(const char* path, sqlite3_int64 size) {
    if (m_watching) {
        m_media[path].pending.push_back({true, size, {}});
    }
}

void FaultVfs::NoteSynced(const char* path) {
    if (m_watching) {
        Medium& medium = m_media[path];
        for (const Change& change : medium.pending) {
            Apply(medium.synced, change);
        }
        medium.pending.clear();
        medium.entrySynced = true;
    }
}

void FaultVfs::NoteDeleted(const char* path) {
    if (m_watching) {
        m_media[path].deleted = true;
    }
}

void FaultVfs::Apply(std::string& content, const Change& change) {
    const auto at = static_cast<std::size_t>(change.at);
    if (change.truncate) {
        content.resize(std::min(content.size(), at));
        return;
    }
    content.resize(std::max(content.size(), at + change.bytes.size()));
    content.replace(at, change.bytes.size(), change.bytes);
}

void FaultVfs::WriteMedium(const std::string& folder, Unsynced unsynced,
                           std::mt19937& random) const {
    const auto keep = [&] {
        return unsynced == Unsynced::Kept || (unsynced == Unsynced::Mixed && random() % 2 == 0);
    };
    for (const auto& [path, medium] : m_media) {
        if ((medium.deleted && (unsynced != Unsynced::Mixed || random() % 2 == 0)) ||
            (!medium.entrySynced && !keep())) {
            continue;
        }
        std::string content = medium.synced;
        for (const Change& change : medium.pending) {
            if (change.truncate) {
                if (keep()) {
                    Apply(content, change);
                }
                continue;
            }
            // A sector is written whole or not at all.
            for (std::size_t from = 0; from < change.bytes.size();) {
                const auto at = static_cast<std::size_t>(change.at) + from;
                const std::size_t part =
                    std::min(kSector - at % kSector, change.bytes.size() - from);
                if (keep()) {
                    Apply(content,
                          {false, static_cast<sqlite3_int64>(at), change.bytes.substr(from, part)});
                }
                from += part;
            }
        }
        const std::string name = std::filesystem::path(path).filename().string();
        std::ofstream(folder + "/" + name, std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

}  // namespace cqsurvey
