#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace cqsurvey {

/// The pages of a database file that may be damaged, read only and without believing its header:
/// unless page 1 has its sum, the page size is the one with which most pages are sound.
///
/// While an object lives, no other program can change the file. Failures throw StoreFailure.
class PageFile {
 public:
    /// Throws error::kNoVolume when nothing is at the path, error::kDamaged when it is not a plain
    /// file or its header is that of something else than a job, error::kNewerVersion for a later
    /// format, and error::kVolumeMounted when another program holds the file.
    explicit PageFile(const std::string& path);
    PageFile(const PageFile&) = delete;
    PageFile& operator=(const PageFile&) = delete;
    ~PageFile();

    /// How many whole pages the file has. Pages count from 1.
    [[nodiscard]] std::uint32_t GetCount() const { return m_count; }
    /// How many pages the header says there are; 0 when it is gone.
    [[nodiscard]] std::uint32_t GetPromised() const { return m_promised; }
    /// The bytes of a page that are in use.
    [[nodiscard]] std::size_t GetUsable() const { return m_pageSize - m_reserved; }
    /// Where a page begins: the first one after the header of the file.
    [[nodiscard]] static std::size_t GetStart(std::uint32_t page) { return page == 1 ? 100 : 0; }
    [[nodiscard]] bool HasHeader() const { return m_promised != 0; }

    /// Reads a page; valid until the next call. Empty when there is no such page, when it holds
    /// nothing but zeros, and when the medium cannot read it.
    [[nodiscard]] std::span<const std::byte> Read(std::uint32_t page);
    /// Whether the page that was read last does not match its sum: the medium has changed it.
    [[nodiscard]] bool IsDoubtful() const { return m_isDoubtful; }

 private:
    struct FreeName {
        void operator()(char* name) const noexcept { sqlite3_free_filename(name); }
    };

    void Open(const std::string& path);
    void ReadHeader(const std::string& path);
    [[nodiscard]] bool HasFirstSum();
    void GuessPageSize();
    [[nodiscard]] bool ReadAt(std::uint64_t at, std::span<std::byte> bytes);
    /// How much of the file is in sound pages, if pages have this size.
    struct Census {
        std::uint64_t soundBytes = 0;
        std::uint64_t withSum = 0;
    };
    [[nodiscard]] Census Count(std::size_t pageSize, std::size_t reserved);

    std::unique_ptr<char, FreeName> m_name;
    std::unique_ptr<std::byte[]> m_file;
    std::uint64_t m_size = 0;
    std::size_t m_pageSize = 0;
    std::size_t m_reserved = 0;
    std::uint32_t m_count = 0;
    std::uint32_t m_promised = 0;
    bool m_hasSums = false;
    bool m_isDoubtful = false;
    std::vector<std::byte> m_page;
};

}  // namespace cqsurvey
