#include "store/salvage/PageFile.h"

#include <algorithm>
#include <array>
#include <limits>
#include <system_error>

#include "platform/System.h"
#include "store/DatabasePage.h"
#include "store/Failure.h"
#include "store/VolumeDatabase.h"
#include "store/VolumePath.h"
#include "store/salvage/BtreePage.h"

namespace cqsurvey {

namespace {

constexpr std::uint32_t kApplicationId = 0x43715376;
constexpr std::uint32_t kUtf16Little = 2;
constexpr std::size_t kLeastUsable = 480;
constexpr std::size_t kUsualPage = 4096;
/// How many pages are looked at to find out their size.
constexpr std::uint64_t kSample = 256;

/// Pages of the file may be half written while a journal says how they were.
void RequireNoJournal(const std::string& path) {
    const std::string journal = path + "-journal";
    std::error_code failure;
    system::Descriptor file(journal, system::Descriptor::Mode::Read, failure);
    std::byte first{};
    if (!failure && file.Read(&first, 1, failure) == 1 && first != std::byte{0}) {
        throw StoreFailure(error::kAccessDenied,
                           journal +
                               " holds a change that was cut short; open the job once for writing, "
                               "which undoes it");
    }
}

/// Refuses other people's databases.
void RequireJob(const DatabaseHeader& header, const std::string& path) {
    if (header.GetApplication() != kApplicationId || header.GetEncoding() != kUtf16Little) {
        throw StoreFailure(error::kDamaged, path + " is not a job");
    }
    if (header.GetFormatVersion() > VolumeDatabase::kFormatVersion) {
        throw StoreFailure(error::kNewerVersion, path + " has format version " +
                                                     std::to_string(header.GetFormatVersion()));
    }
}

sqlite3_file* AsFile(const std::unique_ptr<std::byte[]>& bytes) {
    return reinterpret_cast<sqlite3_file*>(bytes.get());
}

}  // namespace

PageFile::PageFile(const std::string& path) {
    RequireShortEnough(path);
    (void)VolumeDatabase::Identify(path);
    RequireNoJournal(path);
    Open(path);
    try {
        ReadHeader(path);
        m_count = static_cast<std::uint32_t>(std::min<std::uint64_t>(
            m_size / m_pageSize, std::numeric_limits<std::uint32_t>::max() - 1));
        m_page.resize(m_pageSize);
    } catch (...) {
        AsFile(m_file)->pMethods->xClose(AsFile(m_file));
        throw;
    }
}

PageFile::~PageFile() {
    AsFile(m_file)->pMethods->xClose(AsFile(m_file));
}

/// The file is opened and locked as SQLite does it, so that every program that uses SQLite sees the
/// lock, but below everything that would understand or change the file.
void PageFile::Open(const std::string& path) {
    sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
    const std::string absolute = system::AbsolutePath(path);
    m_name.reset(
        const_cast<char*>(sqlite3_create_filename(absolute.c_str(), (absolute + "-journal").c_str(),
                                                  (absolute + "-wal").c_str(), 0, nullptr)));
    if (vfs == nullptr || m_name == nullptr) {
        throw StoreFailure(error::kOutOfMemory);
    }
    m_file = std::make_unique<std::byte[]>(static_cast<std::size_t>(vfs->szOsFile));
    int flags = 0;
    const int opened = vfs->xOpen(vfs, m_name.get(), AsFile(m_file),
                                  SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, &flags);
    const sqlite3_io_methods* methods = AsFile(m_file)->pMethods;
    sqlite3_int64 size = 0;
    const auto fail = [&](std::int32_t code, const char* what) {
        if (methods != nullptr) {
            methods->xClose(AsFile(m_file));
        }
        throw StoreFailure(code, path + what);
    };
    if (opened != SQLITE_OK || methods == nullptr) {
        fail(error::kAccessDenied, ": cannot be opened");
    }
    if (methods->xLock(AsFile(m_file), SQLITE_LOCK_SHARED) != SQLITE_OK) {
        fail(error::kVolumeMounted, ": another program has it open");
    }
    if (methods->xFileSize(AsFile(m_file), &size) != SQLITE_OK) {
        fail(error::kReadWriteFailed, ": its size cannot be read");
    }
    m_size = static_cast<std::uint64_t>(size);
}

bool PageFile::ReadAt(std::uint64_t at, std::span<std::byte> bytes) {
    return AsFile(m_file)->pMethods->xRead(AsFile(m_file), bytes.data(),
                                           static_cast<int>(bytes.size()),
                                           static_cast<sqlite3_int64>(at)) == SQLITE_OK;
}

void PageFile::ReadHeader(const std::string& path) {
    std::array<std::byte, DatabaseHeader::kSize> bytes{};
    const DatabaseHeader header(bytes.data());
    if (!ReadAt(0, bytes) || !header.IsDatabase()) {
        GuessPageSize();
        return;
    }
    const std::size_t size = header.GetPageSize();
    const auto reserved = std::to_integer<std::size_t>(bytes[20]);
    const bool isPossible = IsPageSize(size) && size >= kLeastUsable + reserved;
    if (isPossible) {
        m_pageSize = size;
        m_reserved = reserved;
        m_hasSums = header.HasPageSums();
    }
    const bool isRight = m_hasSums && HasFirstSum();
    const bool isChanged = !isPossible || (m_hasSums && !isRight);
    if (!isChanged) {
        RequireJob(header, path);
    }
    m_promised = std::max<std::uint32_t>(ReadBig<4>(bytes, 28), 1);
    if (!isRight) {
        GuessPageSize();
    }
}

/// Whether page 1 has its sum.
bool PageFile::HasFirstSum() {
    std::vector<std::byte> page(m_pageSize);
    return ReadAt(0, page) && HasItsSum(page.data(), page.size());
}

PageFile::Census PageFile::Count(std::size_t pageSize, std::size_t reserved) {
    std::vector<std::byte> bytes(pageSize);
    Census census;
    const std::uint64_t pages = m_size / pageSize;
    // Evenly spread, so that no kind of page is left out.
    const std::uint64_t step = std::max<std::uint64_t>(1, pages / kSample);
    for (std::uint64_t page = 1; page < pages; page += step) {
        if (ReadAt(page * pageSize, bytes) && BtreePage::Read(bytes, pageSize - reserved, 0)) {
            census.soundBytes += step * pageSize;
            census.withSum += HasItsSum(bytes.data(), pageSize) ? step * pageSize : 0;
        }
    }
    return census;
}

/// Of the page size that the header gave, if any, and all others the one with which most of the
/// file is in sound pages.
void PageFile::GuessPageSize() {
    const bool isGiven = m_pageSize != 0;
    std::uint64_t most = isGiven ? Count(m_pageSize, m_reserved).soundBytes : 0;
    m_pageSize = isGiven ? m_pageSize : kUsualPage;
    for (std::size_t size = kSmallestPage; size <= kLargestPage; size *= 2) {
        for (const std::size_t reserved : {std::size_t{0}, kPageSumBytes}) {
            const Census census = Count(size, reserved);
            if (census.soundBytes > most) {
                most = census.soundBytes;
                m_pageSize = size;
                m_reserved = reserved;
                // A few may be damaged.
                m_hasSums = reserved == kPageSumBytes && 2 * census.withSum > census.soundBytes;
            }
        }
    }
}

std::span<const std::byte> PageFile::Read(std::uint32_t page) {
    if (page == 0 || page > m_count || !ReadAt(std::uint64_t{page - 1} * m_pageSize, m_page) ||
        std::all_of(m_page.begin(), m_page.end(),
                    [](std::byte byte) { return byte == std::byte{0}; })) {
        return {};
    }
    m_isDoubtful = m_hasSums && !HasItsSum(m_page.data(), m_page.size());
    return m_page;
}

}  // namespace cqsurvey
