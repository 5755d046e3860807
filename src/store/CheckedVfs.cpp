#include "store/CheckedVfs.h"

#include <cstring>
#include <new>
#include <system_error>

#include "cqsurvey/ErrorCodes.h"
#include "platform/System.h"
#include "store/DatabasePage.h"
#include "store/Sql.h"

namespace cqsurvey {

namespace {

// SQLite leaves the codes from 100 on to such layers.
constexpr int kSetSums = 0x43710001;
constexpr int kGetSums = 0x43710002;
constexpr int kGetWrongPage = 0x43710003;

/// An open file of the layer. Only a database and its journal are looked at.
struct File {
    sqlite3_file base;
    sqlite3_file* real;
    CheckedFile* main;  ///< of the database to which this file belongs, or null
    bool isJournal;
};

File& Of(sqlite3_file* file) {
    return *reinterpret_cast<File*>(file);
}

sqlite3_file* Real(sqlite3_file* file) {
    return Of(file).real;
}

const sqlite3_io_methods& Methods(sqlite3_file* file) {
    return *Real(file)->pMethods;
}

bool IsMain(sqlite3_file* file) {
    return Of(file).main != nullptr && !Of(file).isJournal;
}

int Close(sqlite3_file* file) {
    const int result = Methods(file).xClose(Real(file));
    if (IsMain(file)) {
        delete Of(file).main;
    }
    sqlite3_free(Real(file));
    return result;
}

int Read(sqlite3_file* file, void* buffer, int count, sqlite3_int64 at) {
    if (IsMain(file)) {
        return Of(file).main->Read(buffer, count, at);
    }
    if (Of(file).isJournal && IsPageSize(static_cast<std::size_t>(count))) {
        Of(file).main->NoteUndo();
    }
    return Methods(file).xRead(Real(file), buffer, count, at);
}

/// SQLite knows one error of the system that means a full disk. A quota and a limit for the size of
/// files mean it, too.
int FullOr(sqlite3_file* file, int result) {
    if ((result & 0xFF) != SQLITE_IOERR) {
        return result;
    }
    int number = 0;
    const int told = Methods(file).xFileControl(Real(file), SQLITE_FCNTL_LAST_ERRNO, &number);
    const std::error_code failure(number, std::system_category());
    return told == SQLITE_OK && system::ErrorCode(failure) == error::kVolumeFull ? SQLITE_FULL
                                                                                 : result;
}

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    if (IsMain(file)) {
        return FullOr(file, Of(file).main->Write(bytes, count, at));
    }
    if (Of(file).isJournal && at == 0 && count >= static_cast<int>(JournalStamp::kHeader)) {
        // A buffer of SQLite's that it fills anew for each use.
        Of(file).main->BeginJournal(static_cast<std::byte*>(const_cast<void*>(bytes)));
    }
    return FullOr(file, Methods(file).xWrite(Real(file), bytes, count, at));
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    return Methods(file).xTruncate(Real(file), size);
}

int Sync(sqlite3_file* file, int flags) {
    if (IsMain(file)) {
        if (const int result = Of(file).main->EndStep(); result != SQLITE_OK) {
            return result;
        }
    }
    return Methods(file).xSync(Real(file), flags);
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    return Methods(file).xFileSize(Real(file), size);
}

int Lock(sqlite3_file* file, int level) {
    return Methods(file).xLock(Real(file), level);
}

int Unlock(sqlite3_file* file, int level) {
    return Methods(file).xUnlock(Real(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* reserved) {
    return Methods(file).xCheckReservedLock(Real(file), reserved);
}

int FileControl(sqlite3_file* file, int what, void* argument) {
    if (IsMain(file)) {
        CheckedFile& main = *Of(file).main;
        switch (what) {
            case kSetSums:
                return main.SetSums(*static_cast<PageSums*>(argument));
            case kGetSums:
                *static_cast<PageSums*>(argument) = main.GetSums();
                return SQLITE_OK;
            case kGetWrongPage:
                *static_cast<std::uint32_t*>(argument) = main.GetWrongPage();
                return SQLITE_OK;
            case SQLITE_FCNTL_SYNC:
                // SQLite announces every sync in this way, even one that it leaves out.
                if (const int result = main.EndStep(); result != SQLITE_OK) {
                    return result;
                }
                break;
            default:
                break;
        }
    }
    return Methods(file).xFileControl(Real(file), what, argument);
}

int SectorSize(sqlite3_file* file) {
    return Methods(file).xSectorSize(Real(file));
}

int DeviceCharacteristics(sqlite3_file* file) {
    // What SQLite does on a device that writes several pages at once, or that reads parts of pages,
    // passes by this layer.
    constexpr int kKnown = SQLITE_IOCAP_SAFE_APPEND | SQLITE_IOCAP_SEQUENTIAL |
                           SQLITE_IOCAP_UNDELETABLE_WHEN_OPEN | SQLITE_IOCAP_POWERSAFE_OVERWRITE |
                           SQLITE_IOCAP_IMMUTABLE;
    return Methods(file).xDeviceCharacteristics(Real(file)) & kKnown;
}

/// Of the first version: the second is for shared memory, which SQLite does without in exclusive
/// locking mode, and the third for memory maps, which would pass by this layer.
sqlite3_io_methods MakeMethods() {
    sqlite3_io_methods methods{};
    methods.iVersion = 1;
    methods.xClose = Close;
    methods.xRead = Read;
    methods.xWrite = Write;
    methods.xTruncate = Truncate;
    methods.xSync = Sync;
    methods.xFileSize = FileSize;
    methods.xLock = Lock;
    methods.xUnlock = Unlock;
    methods.xCheckReservedLock = CheckReservedLock;
    methods.xFileControl = FileControl;
    methods.xSectorSize = SectorSize;
    methods.xDeviceCharacteristics = DeviceCharacteristics;
    return methods;
}

sqlite3_vfs* Below() {
    return sqlite3_vfs_find(nullptr);
}

int Open(sqlite3_vfs* /*vfs*/, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    static const sqlite3_io_methods methods = MakeMethods();
    file->pMethods = nullptr;
    sqlite3_vfs* below = Below();
    File opened{};
    opened.real =
        static_cast<sqlite3_file*>(sqlite3_malloc64(static_cast<sqlite3_uint64>(below->szOsFile)));
    if (opened.real == nullptr) {
        return SQLITE_NOMEM;
    }
    std::memset(opened.real, 0, static_cast<std::size_t>(below->szOsFile));
    if (path != nullptr && (flags & SQLITE_OPEN_MAIN_DB) != 0) {
        opened.main = new (std::nothrow) CheckedFile(opened.real);
        if (opened.main == nullptr) {
            sqlite3_free(opened.real);
            return SQLITE_NOMEM;
        }
    } else if (path != nullptr && (flags & SQLITE_OPEN_MAIN_JOURNAL) != 0) {
        sqlite3_file* main = sqlite3_database_file_object(path);
        opened.main = Of(main).main;
        opened.isJournal = opened.main != nullptr;
    }
    const int result = below->xOpen(below, path, opened.real, flags, outFlags);
    if (opened.real->pMethods != nullptr) {
        // Even after a failure SQLite closes a file that has methods.
        opened.base.pMethods = &methods;
        Of(file) = opened;
    } else {
        if (!opened.isJournal) {
            delete opened.main;
        }
        sqlite3_free(opened.real);
    }
    return result;
}

int Delete(sqlite3_vfs* /*vfs*/, const char* path, int syncFolder) {
    return Below()->xDelete(Below(), path, syncFolder);
}

int Access(sqlite3_vfs* /*vfs*/, const char* path, int flags, int* result) {
    return Below()->xAccess(Below(), path, flags, result);
}

int FullPathname(sqlite3_vfs* /*vfs*/, const char* path, int size, char* full) {
    return Below()->xFullPathname(Below(), path, size, full);
}

int Randomness(sqlite3_vfs* /*vfs*/, int size, char* bytes) {
    return Below()->xRandomness(Below(), size, bytes);
}

int Sleep(sqlite3_vfs* /*vfs*/, int microseconds) {
    return Below()->xSleep(Below(), microseconds);
}

int CurrentTime(sqlite3_vfs* /*vfs*/, double* julianDay) {
    return Below()->xCurrentTime(Below(), julianDay);
}

int GetSystemError(sqlite3_vfs* /*vfs*/, int size, char* text) {
    return Below()->xGetLastError(Below(), size, text);
}

int Register() {
    static sqlite3_vfs vfs{};
    vfs.iVersion = 1;
    vfs.szOsFile = sizeof(File);
    vfs.mxPathname = Below()->mxPathname;
    vfs.zName = "cqsurvey";
    vfs.xOpen = Open;
    vfs.xDelete = Delete;
    vfs.xAccess = Access;
    vfs.xFullPathname = FullPathname;
    vfs.xRandomness = Randomness;
    vfs.xSleep = Sleep;
    vfs.xCurrentTime = CurrentTime;
    vfs.xGetLastError = GetSystemError;
    return sqlite3_vfs_register(&vfs, 0);
}

int Control(sqlite3* connection, int what, void* argument) {
    return sqlite3_file_control(connection, "main", what, argument);
}

/// The file below the main file of a connection.
sqlite3_file* RealCheckedFile(sqlite3* connection) {
    sqlite3_file* file = nullptr;
    const int result = Control(connection, SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file));
    if (result != SQLITE_OK || file == nullptr || file->pMethods == nullptr) {
        throw SqlFailure(nullptr, result == SQLITE_OK ? SQLITE_IOERR : result);
    }
    return Real(file);
}

}  // namespace

const char* CheckedVfs::GetName() {
    if (sqlite3_initialize() != SQLITE_OK || Below() == nullptr) {
        throw StoreFailure(error::kGeneralFailure, "SQLite has no files on this system");
    }
    static const int result = Register();
    if (result != SQLITE_OK) {
        ThrowSql(nullptr, result);
    }
    return "cqsurvey";
}

void CheckedVfs::SetSums(sqlite3* connection, PageSums sums) {
    const int result = Control(connection, kSetSums, &sums);
    if (result != SQLITE_OK) {
        throw SqlFailure(nullptr, result);
    }
}

PageSums CheckedVfs::GetSums(sqlite3* connection) noexcept {
    PageSums sums = PageSums::Ignored;
    (void)Control(connection, kGetSums, &sums);
    return sums;
}

std::uint32_t CheckedVfs::GetWrongPage(sqlite3* connection) noexcept {
    std::uint32_t page = 0;
    (void)Control(connection, kGetWrongPage, &page);
    return page;
}

std::uint32_t CheckedVfs::FindWrongPage(sqlite3* connection, std::uint32_t after) {
    if (GetSums(connection) != PageSums::Kept) {
        return 0;
    }
    sqlite3_file* real = RealCheckedFile(connection);
    std::vector<std::byte> page = ReadFirstPage(connection);
    if (page.empty()) {
        return 1;
    }
    const auto size = static_cast<int>(page.size());
    for (std::uint32_t number = after + 1;; ++number) {
        const int result =
            real->pMethods->xRead(real, page.data(), size, sqlite3_int64{number - 1} * size);
        if (result == SQLITE_IOERR_SHORT_READ) {
            return 0;
        }
        if (result != SQLITE_OK) {
            throw SqlFailure(nullptr, result);
        }
        if (!HasItsSum(page.data(), page.size())) {
            return number;
        }
    }
}

std::vector<std::byte> CheckedVfs::ReadFirstPage(sqlite3* connection) {
    sqlite3_file* real = RealCheckedFile(connection);
    std::vector<std::byte> page(DatabaseHeader::kSize);
    const auto read = [&] {
        const int result =
            real->pMethods->xRead(real, page.data(), static_cast<int>(page.size()), 0);
        if (result != SQLITE_OK && result != SQLITE_IOERR_SHORT_READ) {
            throw SqlFailure(nullptr, result);
        }
        return result == SQLITE_OK;
    };
    const DatabaseHeader header(page.data());
    if (!read() || !header.IsDatabase() || !IsPageSize(header.GetPageSize())) {
        return {};
    }
    page.resize(header.GetPageSize());
    return read() ? page : std::vector<std::byte>{};
}

}  // namespace cqsurvey
