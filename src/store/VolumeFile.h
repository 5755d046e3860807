#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "cqsurvey/Limits.h"
#include "store/Sql.h"

namespace cqsurvey {

/// One file inside a mounted volume.
///
/// The database keeps it in rows of one block each. A block is fetched when it is first touched,
/// changed in memory, and written back by Flush, so a file may be much larger than what of it is in
/// memory. Failures throw StoreFailure.
class VolumeFile {
 public:
    /// A block and its row's overhead fill one database page.
    static constexpr std::uint32_t kBlock = 4032;
    static constexpr std::uint32_t kMostBytes = limits::kFileBytes;

    VolumeFile(sqlite3* connection, std::int64_t id, std::uint32_t length);

    [[nodiscard]] std::int64_t GetId() const { return m_id; }
    [[nodiscard]] std::uint32_t GetLength() const { return m_length; }

    /// True when the file was deleted, or its creation undone, while handles to it are open.
    [[nodiscard]] bool IsGone() const { return m_gone; }
    void SetGone(bool gone) { m_gone = gone; }

    /// Looks whether the blocks that the length asks for are there; 0x30000007 if not.
    void CheckBlocks();

    /// Returns the number of bytes read, fewer than asked only at the end.
    std::uint32_t Read(std::uint32_t position, std::byte* buffer, std::uint32_t count);

    // The changes below must stand inside a step of the volume and leave no file of more than
    // kMostBytes. One that lengthens the file far takes memory for all of it until the next Flush.

    void Write(std::uint32_t position, const std::byte* bytes, std::uint32_t count);
    /// Cutting needs the database's transaction open.
    void SetLength(std::uint32_t length);

    /// Blocks that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const { return m_dirty; }
    void Flush();

    /// Whether the database has the blocks that are in memory.
    [[nodiscard]] bool DatabaseHoldsBlocks();

    /// Takes the file as the database has it after it undid a step.
    void Reload(std::uint32_t length) noexcept;

 private:
    struct Block {
        std::array<std::byte, kBlock> bytes{};
        bool dirty = false;
    };

    [[nodiscard]] static std::uint32_t BlockCount(std::uint32_t length) {
        return length / kBlock + (length % kBlock == 0 ? 0U : 1U);
    }
    [[nodiscard]] std::int64_t Position(std::uint32_t block) const {
        return m_id * (std::int64_t{1} << 32) + block;
    }
    [[nodiscard]] SqlStatement& Select();
    [[nodiscard]] Block& Fetch(std::uint32_t block);
    void MarkDirty(Block& block);
    void Grow(std::uint32_t length);
    void DropClean();

    static constexpr std::size_t kMostClean = 256;

    sqlite3* m_connection;
    std::int64_t m_id;
    std::uint32_t m_length;
    std::uint32_t m_savedLength;
    /// Blocks from here on are not in the database, whatever rows stand there.
    std::uint32_t m_savedBlocks;
    std::map<std::uint32_t, Block> m_blocks;
    std::size_t m_dirty = 0;
    bool m_gone = false;
    SqlStatement m_select;
    SqlStatement m_replace;
};

}  // namespace cqsurvey
