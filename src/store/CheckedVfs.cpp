#include "store/CheckedVfs.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "store/DatabasePage.h"
#include "store/Sql.h"

namespace cqsurvey {

namespace {

using Sums = CheckedVfs::Sums;

// SQLite leaves the codes from 100 on to such layers.
constexpr int kSetSums = 0x43710001;
constexpr int kGetSums = 0x43710002;
constexpr int kGetWrongPage = 0x43710003;

/// What is known about the main file of a database. Nothing here throws: SQLite is C.
class MainFile {
 public:
    explicit MainFile(sqlite3_file* real) : m_real(real) {}

    [[nodiscard]] int SetSums(Sums sums);
    [[nodiscard]] Sums GetSums() const { return m_sums; }
    [[nodiscard]] std::uint32_t GetWrongPage() const { return m_wrongPage; }

    [[nodiscard]] int Read(void* buffer, int count, sqlite3_int64 at);
    [[nodiscard]] int Write(const void* bytes, int count, sqlite3_int64 at);
    /// To be called when the pages of a step are written and before they are synced.
    [[nodiscard]] int EndStep();

    /// To be called before the first sector of the journal is written, which may be changed.
    void BeginJournal(std::byte* header);
    /// To be called when a page is read from the journal, which only an undo does.
    void NoteUndo() {
        if (m_sums == Sums::Made) {
            m_sums = Sums::Ignored;
        }
    }

 private:
    [[nodiscard]] int WriteReal(const std::byte* bytes, std::size_t count, sqlite3_int64 at) {
        return m_real->pMethods->xWrite(m_real, bytes, static_cast<int>(count), at);
    }
    [[nodiscard]] int WriteMark();
    [[nodiscard]] int KeepFirstPage(const std::byte* bytes, std::size_t count);

    sqlite3_file* m_real;
    Sums m_sums = Sums::Ignored;
    bool m_stepOpen = false;
    std::uint32_t m_stepBefore = 0;  ///< to which the journal leads back
    std::uint32_t m_step = 0;        ///< the last one that was whole
    std::uint32_t m_wrongPage = 0;
    /// Page 1 as it is when the open step is whole, and the same with its mark.
    std::vector<std::byte> m_firstPage;
    std::vector<std::byte> m_marked;
};

int MainFile::KeepFirstPage(const std::byte* bytes, std::size_t count) {
    try {
        m_marked.resize(count);
        m_firstPage.resize(count);
    } catch (const std::bad_alloc&) {
        return SQLITE_IOERR_NOMEM;
    }
    std::copy_n(bytes, count, m_firstPage.begin());
    return SQLITE_OK;
}

int MainFile::SetSums(Sums sums) {
    m_stepOpen = false;
    if (sums == Sums::Ignored) {
        m_sums = sums;
        return SQLITE_OK;
    }
    std::array<std::byte, DatabaseHeader::kSize> start{};
    int result = m_real->pMethods->xRead(m_real, start.data(), static_cast<int>(start.size()), 0);
    if (result != SQLITE_OK && result != SQLITE_IOERR_SHORT_READ) {
        return result;
    }
    const DatabaseHeader header(start.data());
    const bool isNew = result == SQLITE_IOERR_SHORT_READ;
    m_step = isNew ? 0 : header.GetStep();
    m_stepBefore = m_step;
    m_firstPage.clear();
    if (sums == Sums::Kept) {
        const std::size_t size = header.GetPageSize();
        if (isNew || !IsPageSize(size)) {
            return SQLITE_NOTADB;
        }
        std::vector<std::byte> page;
        try {
            page.resize(size);
        } catch (const std::bad_alloc&) {
            return SQLITE_NOMEM;
        }
        result = m_real->pMethods->xRead(m_real, page.data(), static_cast<int>(size), 0);
        if (result == SQLITE_OK) {
            result = KeepFirstPage(page.data(), size);
        }
        if (result != SQLITE_OK) {
            return result;
        }
    }
    m_sums = sums;
    return SQLITE_OK;
}

int MainFile::Read(void* buffer, int count, sqlite3_int64 at) {
    const int result = m_real->pMethods->xRead(m_real, buffer, count, at);
    const auto size = static_cast<std::size_t>(count);
    if (result != SQLITE_OK || m_sums != Sums::Kept || !IsPageSize(size)) {
        return result;
    }
    auto* page = static_cast<std::byte*>(buffer);
    if (!HasItsSum(page, size)) {
        m_wrongPage = static_cast<std::uint32_t>(at / count) + 1;
        return SQLITE_IOERR_DATA;
    }
    if (at == 0 && m_stepOpen && size == m_firstPage.size()) {
        // The page cache, and with it the next journal, must never see the mark.
        std::copy(m_firstPage.begin(), m_firstPage.end(), page);
    }
    return SQLITE_OK;
}

int MainFile::WriteMark() {
    m_marked = m_firstPage;
    DatabaseHeader::Stamp(m_marked.data(), m_marked.size(), m_stepBefore + 1, false);
    DatabaseHeader::Stamp(m_firstPage.data(), m_firstPage.size(), m_stepBefore + 1, true);
    m_stepOpen = true;
    return WriteReal(m_marked.data(), m_marked.size(), 0);
}

int MainFile::Write(const void* bytes, int count, sqlite3_int64 at) {
    const auto size = static_cast<std::size_t>(count);
    if (m_sums == Sums::Ignored || !IsPageSize(size)) {
        return m_real->pMethods->xWrite(m_real, bytes, count, at);
    }
    // The bytes are a page of SQLite's cache, or a buffer that it is about to copy there. The sum
    // is written into them, so that the cache holds what the file does.
    auto* page = static_cast<std::byte*>(const_cast<void*>(bytes));
    if (at == 0) {
        DatabaseHeader::Stamp(page, size, m_stepBefore + 1, true);
        const int result = KeepFirstPage(page, size);
        return result == SQLITE_OK ? WriteMark() : result;
    }
    if (!m_stepOpen && !m_firstPage.empty()) {
        if (const int result = WriteMark(); result != SQLITE_OK) {
            return result;
        }
    }
    WritePageSum(page, size);
    return WriteReal(page, size, at);
}

int MainFile::EndStep() {
    if (!m_stepOpen || m_sums == Sums::Ignored) {
        return SQLITE_OK;
    }
    const int result = WriteReal(m_firstPage.data(), m_firstPage.size(), 0);
    if (result == SQLITE_OK) {
        m_step = m_stepBefore + 1;
        m_stepOpen = false;
    }
    return result;
}

void MainFile::BeginJournal(std::byte* header) {
    m_stepBefore = m_step;
    if (m_sums == Sums::Kept && !m_stepOpen) {
        JournalStamp stamp{m_step, {}};
        std::copy(m_firstPage.end() - kPageSumBytes, m_firstPage.end(), stamp.sum.begin());
        stamp.Write(header);
    }
}

/// An open file of the layer. Only a database and its journal are looked at.
struct File {
    sqlite3_file base;
    sqlite3_file* real;
    MainFile* main;  ///< of the database to which this file belongs, or null
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

int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    if (IsMain(file)) {
        return Of(file).main->Write(bytes, count, at);
    }
    if (Of(file).isJournal && at == 0 && count >= static_cast<int>(JournalStamp::kHeader)) {
        // A buffer of SQLite's that it fills anew for each use.
        Of(file).main->BeginJournal(static_cast<std::byte*>(const_cast<void*>(bytes)));
    }
    return Methods(file).xWrite(Real(file), bytes, count, at);
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
        MainFile& main = *Of(file).main;
        switch (what) {
            case kSetSums:
                return main.SetSums(*static_cast<Sums*>(argument));
            case kGetSums:
                *static_cast<Sums*>(argument) = main.GetSums();
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

// Shared memory, which SQLite uses for the log of a file that another tool has switched to one.

int ShmMap(sqlite3_file* file, int region, int size, int extend, void volatile** memory) {
    return Methods(file).xShmMap(Real(file), region, size, extend, memory);
}

int ShmLock(sqlite3_file* file, int offset, int count, int flags) {
    return Methods(file).xShmLock(Real(file), offset, count, flags);
}

void ShmBarrier(sqlite3_file* file) {
    Methods(file).xShmBarrier(Real(file));
}

int ShmUnmap(sqlite3_file* file, int remove) {
    return Methods(file).xShmUnmap(Real(file), remove);
}

/// `version` is that of the file below, at most 2: the third one is for memory maps, which would
/// pass by this layer.
sqlite3_io_methods MakeMethods(int version) {
    sqlite3_io_methods methods{};
    methods.iVersion = version;
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
    if (version >= 2) {
        methods.xShmMap = ShmMap;
        methods.xShmLock = ShmLock;
        methods.xShmBarrier = ShmBarrier;
        methods.xShmUnmap = ShmUnmap;
    }
    return methods;
}

sqlite3_vfs* Below() {
    return sqlite3_vfs_find(nullptr);
}

int Open(sqlite3_vfs* /*vfs*/, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    static const sqlite3_io_methods plain = MakeMethods(1);
    static const sqlite3_io_methods shared = MakeMethods(2);
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
        opened.main = new (std::nothrow) MainFile(opened.real);
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
        opened.base.pMethods = opened.real->pMethods->iVersion >= 2 ? &shared : &plain;
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
sqlite3_file* RealMainFile(sqlite3* connection) {
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

void CheckedVfs::SetSums(sqlite3* connection, Sums sums) {
    const int result = Control(connection, kSetSums, &sums);
    if (result != SQLITE_OK) {
        throw SqlFailure(nullptr, result);
    }
}

CheckedVfs::Sums CheckedVfs::GetSums(sqlite3* connection) noexcept {
    Sums sums = Sums::Ignored;
    (void)Control(connection, kGetSums, &sums);
    return sums;
}

std::uint32_t CheckedVfs::GetWrongPage(sqlite3* connection) noexcept {
    std::uint32_t page = 0;
    (void)Control(connection, kGetWrongPage, &page);
    return page;
}

std::uint32_t CheckedVfs::FindWrongPage(sqlite3* connection, std::uint32_t after) {
    if (GetSums(connection) != Sums::Kept) {
        return 0;
    }
    sqlite3_file* real = RealMainFile(connection);
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
    sqlite3_file* real = RealMainFile(connection);
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
