#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace cqsurvey {

/// One page of a table or index in a database file, read from its bytes alone, without SQLite: what
/// is left of a table can be read although other pages of it are damaged.
///
///     0                             start + 8 or 12                             usable   page size
///     | (page 1: file header, 100) | head | cell places, 2 bytes each | free | cells | reserved |
///
///     head        kind, first free block, number of cells, first byte of the cells, odd free
///                 bytes; of an inner page also its last child
///     cell        inner page: child page, key      leaf: payload size, row number, payload
///
/// The child of an inner cell has the rows up to the cell's key. A payload that is too long for a
/// page goes on in a chain of overflow pages, whose first one the cell names.
///
/// A page is either sound as a whole or refused. It is sound when every byte of its cell area
/// belongs to exactly one cell, free block or odd free byte, and its keys ascend. Bytes that came
/// there by accident do not pass that test, and so no length or place in a page is trusted further
/// than the page itself reaches. A page of zeros is refused, too.
class BtreePage {
 public:
    enum class Kind : std::uint8_t {
        InnerIndex = 0x02,
        InnerTable = 0x05,
        LeafIndex = 0x0A,
        LeafTable = 0x0D
    };

    struct Cell {
        std::uint32_t child = 0;             ///< of inner pages
        std::int64_t key = 0;                ///< the row number; of table pages
        std::uint64_t payload = 0;           ///< its whole size in bytes; not of inner table pages
        std::span<const std::byte> local{};  ///< the part of the payload in this page
        std::uint32_t overflow = 0;          ///< the page where the payload goes on, 0 for none
    };

    /// Reads a page. `usable` is the page size without the reserved bytes, at least 480, and
    /// `start` is 100 on the first page of a file, else 0. Nothing when the page is not sound.
    /// The result refers to `bytes`.
    [[nodiscard]] static std::optional<BtreePage> Read(std::span<const std::byte> bytes,
                                                       std::size_t usable, std::size_t start);

    [[nodiscard]] Kind GetKind() const { return m_kind; }
    [[nodiscard]] const std::vector<Cell>& GetCells() const { return m_cells; }
    /// The last child of an inner page.
    [[nodiscard]] std::uint32_t GetLastChild() const { return m_lastChild; }
    [[nodiscard]] bool IsInner() const {
        return m_kind == Kind::InnerIndex || m_kind == Kind::InnerTable;
    }

 private:
    Kind m_kind = Kind::LeafTable;
    std::uint32_t m_lastChild = 0;
    std::vector<Cell> m_cells;
};

/// Reads a number of 1 to 9 bytes, seven bits in each but the last, at `at`, and moves `at` behind
/// it. Nothing when the bytes end before the number does.
[[nodiscard]] std::optional<std::uint64_t> ReadVariable(std::span<const std::byte> bytes,
                                                        std::size_t& at);

/// Reads a big-endian number of `Size` bytes at `at`, which must be inside of `bytes`.
template <std::size_t Size>
[[nodiscard]] std::uint32_t ReadBig(std::span<const std::byte> bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (const std::byte byte : bytes.subspan(at, Size)) {
        value = (value << 8) | std::to_integer<std::uint32_t>(byte);
    }
    return value;
}

}  // namespace cqsurvey
