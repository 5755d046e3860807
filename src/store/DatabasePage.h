#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace cqsurvey {

// What the store itself keeps in the pages of a database file, and where. SQLite's own fields are
// described in https://sqlite.org/fileformat.html.
//
//     page 1                                    every page
//     +--------------------------------+        +--------------------------------+
//     | 20  bytes reserved on a page: 8|        |                                |
//     | 24  number of the step         |        |     content of SQLite          |
//     | 60  format version             |        |                                |
//     | 68  "CqSv"                     |        |                                |
//     | 92  number of the step again   |        |                                |
//     | 96  who wrote the page         |        +----------------+---------------+
//     |     content of SQLite          |                         | sum (8 bytes) |
//     +--------------------------------+                         +---------------+
//
// SQLite itself counts at 24 and 92 the changes of a file, and writes its own version at 96. The
// store writes versions there that no SQLite has: one while a step is on its way, another when it
// is whole. As long as one of the two is found, every page was written by the store and has its
// sum.

/// The bytes at the end of a page that SQLite leaves to us. They hold the page's sum.
constexpr std::size_t kPageSumBytes = 8;
constexpr std::size_t kSmallestPage = 512;
constexpr std::size_t kLargestPage = 65536;

using PageSum = std::array<std::byte, kPageSumBytes>;

/// Whether a read or write of so many bytes can be one of a whole page.
[[nodiscard]] constexpr bool IsPageSize(std::size_t size) noexcept {
    return size >= kSmallestPage && size <= kLargestPage && (size & (size - 1)) == 0;
}

/// The sum of a page as SQLite's extension "cksumvfs" computes it: a Fletcher sum over pairs of
/// 32-bit little-endian words (https://sqlite.org/cksumvfs.html). A page of zeros has the sum zero.
[[nodiscard]] PageSum ComputePageSum(const std::byte* page, std::size_t size) noexcept;

/// Writes the sum at the page's end.
void WritePageSum(std::byte* page, std::size_t size) noexcept;

/// Whether the sum at the page's end is that of the page.
[[nodiscard]] bool HasItsSum(const std::byte* page, std::size_t size) noexcept;

/// The header at the beginning of page 1. Does not own the bytes, of which there must be kSize.
class DatabaseHeader {
 public:
    static constexpr std::size_t kSize = 100;

    explicit DatabaseHeader(const std::byte* bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool IsDatabase() const noexcept;
    [[nodiscard]] std::uint32_t GetPageSize() const noexcept;
    /// Whether another tool has switched the file to a write-ahead log.
    [[nodiscard]] bool IsLogged() const noexcept;
    [[nodiscard]] std::uint32_t GetFormatVersion() const noexcept;
    [[nodiscard]] std::uint32_t GetApplication() const noexcept;
    /// 2 for the encoding of a job's texts.
    [[nodiscard]] std::uint32_t GetEncoding() const noexcept;

    /// The number of the step that wrote the page last.
    [[nodiscard]] std::uint32_t GetStep() const noexcept;
    /// Whether that step has written all of its pages.
    [[nodiscard]] bool IsStepWhole() const noexcept;
    /// Whether every page has its sum: the last to write was the store, and not another tool or an
    /// earlier version of the store.
    [[nodiscard]] bool HasPageSums() const noexcept;

    /// Writes into page 1 that step `step` is on its way, or whole, and then the page's sum.
    static void Stamp(std::byte* page, std::size_t size, std::uint32_t step, bool whole) noexcept;

 private:
    const std::byte* m_bytes;
};

/// What the store adds to the journal of a step, in the part of its first sector that SQLite leaves
/// unused: the state of the file that the journal leads back to. A journal that came to lie beside
/// another file, or another state of the file, is known by it.
struct JournalStamp {
    /// The bytes of a journal that hold its header and the stamp.
    static constexpr std::size_t kHeader = 64;

    std::uint32_t step;  ///< the number of the last step before
    PageSum sum;         ///< the sum of page 1 then

    /// `header` is the beginning of the journal, kHeader bytes.
    void Write(std::byte* header) const noexcept;

    /// No value for a journal that would not be played back, or that another tool wrote.
    [[nodiscard]] static std::optional<JournalStamp> Read(const std::byte* header) noexcept;

    /// Whether the journal belongs to a file with this page 1, of `size` bytes. A page that does
    /// not have its sum may be torn by the same crash, so any journal may belong to it.
    [[nodiscard]] bool Fits(const std::byte* page, std::size_t size) const noexcept;
};

}  // namespace cqsurvey
