#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "cqsurvey/Limits.h"
#include "store/Sql.h"

namespace cqsurvey {

/// One file inside a mounted volume. Failures throw StoreFailure.
///
/// The file is cut into blocks, and the database keeps each block in a row of its own. A block is
/// read when it is first touched, changed in memory, and written back by Flush; the whole file is
/// never in memory unless it is small.
///
///     block      0        1        2        3        4
///     row        saved    saved    saved    -        -          m_savedBlocks = 3
///     memory     clean    -        dirty    dirty    dirty      m_blocks
///
/// A block from m_savedBlocks on has no row and begins as zeros. Lengthening the file makes dirty
/// blocks in memory. Cutting it deletes rows at once, and so lowers m_savedBlocks: were the file
/// lengthened again, the old bytes must not come back. The row of the last block ends with the
/// file.
///
/// Clean blocks are a cache, which is dropped when it has grown large. An undo forgets all blocks,
/// since the database has what they were (Reload).
class VolumeFile {
 public:
    /// A block and its row's overhead fill one database page.
    static constexpr std::uint32_t kBlock = 4032;
    static constexpr std::uint32_t kMostBytes = limits::kFileBytes;

    VolumeFile(sqlite3* connection, std::int64_t id, std::uint32_t length);

    [[nodiscard]] std::int64_t GetId() const { return m_id; }
    [[nodiscard]] std::uint32_t GetLength() const { return m_length; }

    /// Whether the file was deleted, or its creation undone, while handles to it are open.
    [[nodiscard]] bool IsGone() const { return m_gone; }
    void SetGone(bool gone) { m_gone = gone; }

    /// Throws error::kDamaged when the database has more or fewer blocks than the length asks for.
    /// Called when a file is opened, so that damage shows then and not in the middle of reading.
    void CheckBlocks();

    /// Returns the number of bytes read, which is less than `count` only at the end of the file.
    /// Throws error::kDamaged when a block is missing or has the wrong size.
    std::uint32_t Read(std::uint32_t position, std::byte* buffer, std::uint32_t count);

    /// Whether the database has every block with its size, so that the whole file can be read.
    [[nodiscard]] bool IsSound();
    /// The bytes that the database has of a file that is not sound: its blocks in their order,
    /// whatever their number and sizes, up to `most` bytes.
    [[nodiscard]] std::vector<std::byte> Salvage(std::uint32_t most);

    // The changes below must be made inside a step of the volume and must not make the file longer
    // than kMostBytes. All that they add to its length is in memory until the next Flush, so Volume
    // calls them with pieces.

    /// Bytes between the old end and `position` become 0.
    void Write(std::uint32_t position, const std::byte* bytes, std::uint32_t count);
    /// Cuts the file or lengthens it by zeros. To cut it, the database's transaction must be open.
    void SetLength(std::uint32_t length);
    /// Cuts the file to nothing, even one that is not sound. The database's transaction must be
    /// open.
    void Erase();

    /// The number of blocks that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const { return m_dirty; }
    /// Hands them to the database, inside its open transaction.
    void Flush();

    /// Whether the database has the blocks that are in memory.
    [[nodiscard]] bool DatabaseHoldsBlocks();

    /// Forgets what is in memory. `length` is the file's length in the database, which has undone a
    /// step.
    void Reload(std::uint32_t length) noexcept;

 private:
    struct Block {
        std::array<std::byte, kBlock> bytes{};
        bool dirty = false;
    };

    [[nodiscard]] static std::uint32_t BlockCount(std::uint32_t length) {
        return length / kBlock + (length % kBlock == 0 ? 0U : 1U);
    }
    /// The key of a block's row. The file's number is in the upper half, so the blocks of a file
    /// stand together in the table.
    [[nodiscard]] std::int64_t Position(std::uint32_t block) const {
        return m_id * (std::int64_t{1} << 32) + block;
    }
    [[nodiscard]] SqlStatement& Select();
    void ReadBlock(std::uint32_t number, Block& block);
    [[nodiscard]] Block& Fetch(std::uint32_t number);
    void MarkDirty(Block& block);
    void Grow(std::uint32_t length);
    void DeleteRows(std::uint32_t firstBlock);
    void DropClean();

    /// This many clean blocks, about 1 MB, may stay in memory.
    static constexpr std::size_t kMostClean = 256;

    /// The last block that a key has room for. The key of the block after it would be the next
    /// file's, and of the last file there is no such number.
    static constexpr std::uint32_t kLastPossible = std::numeric_limits<std::uint32_t>::max();

    sqlite3* m_connection;
    std::int64_t m_id;
    std::uint32_t m_length;
    std::uint32_t m_savedLength;
    /// How many blocks, from the first, are in the database.
    std::uint32_t m_savedBlocks;
    std::map<std::uint32_t, Block> m_blocks;
    std::size_t m_dirty = 0;
    bool m_gone = false;
    SqlStatement m_select;
    SqlStatement m_replace;
};

}  // namespace cqsurvey
