#include "support/FaultVfs.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace cqsurvey {

namespace {

constexpr const char* kName = "cqsurvey-fault";
/// The object that stands for the default file system.
FaultVfs* s_current = nullptr;

struct ShimFile {
    sqlite3_file base;
    FaultVfs* owner;
    bool syncsFolder;  ///< with its next sync, as SQLite does for a new journal
    char* path;        ///< null for a temporary file; not taken by new, which a test may let fail
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

/// What is watched of a file, null for a temporary one and when nothing is.
PowerMedium* MediumOf(ShimFile* file) {
    return file->path == nullptr ? nullptr : file->owner->GetMedium();
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
    PowerMedium* medium = MediumOf(Shim(file));
    if (result == SQLITE_OK && medium != nullptr) {
        medium->Write(Shim(file)->path, bytes, count, at);
    }
    return result;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kTruncate)) {
        return *fault;
    }
    const int result = Real(file)->pMethods->xTruncate(Real(file), size);
    PowerMedium* medium = MediumOf(Shim(file));
    if (result == SQLITE_OK && medium != nullptr) {
        medium->Truncate(Shim(file)->path, size);
    }
    return result;
}

int Sync(sqlite3_file* file, int /*flags*/) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kSync)) {
        return *fault;
    }
    if (PowerMedium* medium = MediumOf(Shim(file))) {
        const std::string path = Shim(file)->path;
        medium->Sync(path);
        if (Shim(file)->syncsFolder) {
            medium->SyncFolder(path.substr(0, path.find_last_of('/')));
            Shim(file)->syncsFolder = false;
        }
    }
    return SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kFileSize)) {
        return *fault;
    }
    return Real(file)->pMethods->xFileSize(Real(file), size);
}

int Lock(sqlite3_file* file, int level) {
    if (const auto fault = Shim(file)->owner->Strike(FaultVfs::kLock)) {
        return *fault;
    }
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
    constexpr int kJournals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL;
    shim->syncsFolder = (flags & SQLITE_OPEN_CREATE) != 0 && (flags & kJournals) != 0;
    const int result = System()->xOpen(System(), path, shim->real, flags, outFlags);
    if (result == SQLITE_OK) {
        shim->base.pMethods = Methods();
        if (path != nullptr) {
            shim->path = ::strdup(path);
            if (PowerMedium* medium = shim->owner->GetMedium()) {
                medium->Open(path);
            }
        }
    }
    return result;
}

int Delete(sqlite3_vfs* vfs, const char* path, int syncFolder) {
    if (const auto fault = Owner(vfs)->Strike(FaultVfs::kDelete)) {
        return *fault;
    }
    const int result = System()->xDelete(System(), path, 0);
    PowerMedium* medium = Owner(vfs)->GetMedium();
    if (result == SQLITE_OK && medium != nullptr) {
        const std::string gone = path;
        medium->Remove(gone);
        if (syncFolder != 0) {
            medium->SyncFolder(gone.substr(0, gone.find_last_of('/')));
        }
    }
    return result;
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
    s_current = this;
}

FaultVfs::~FaultVfs() {
    s_current = nullptr;
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
    if (m_medium) {
        m_kept = std::move(m_medium);
        m_medium.reset();
    }
}

FaultVfs* FaultVfs::GetWatching() {
    return s_current != nullptr && s_current->m_medium ? s_current : nullptr;
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

}  // namespace cqsurvey
