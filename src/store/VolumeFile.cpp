#include "store/VolumeFile.h"

#include <algorithm>
#include <cstring>

#include "store/Failure.h"

namespace cqsurvey {

VolumeFile::VolumeFile(sqlite3* connection, std::int64_t id, std::uint32_t length)
    : m_connection(connection),
      m_id(id),
      m_length(length),
      m_savedLength(length),
      m_savedBlocks(BlockCount(length)) {}

void VolumeFile::CheckBlocks() {
    const SqlBudget budget(m_connection);
    SqlStatement count(m_connection,
                       "SELECT count(*) FROM Volume_Block WHERE Position BETWEEN ?1 AND ?2");
    count.BindInt(1, Position(0));
    count.BindInt(2, Position(kLastPossible));
    const std::int64_t found = count.Step() ? sqlite3_column_int64(count.Get(), 0) : 0;
    if (found != m_savedBlocks) {
        throw StoreFailure(error::kDamaged, "file " + std::to_string(m_id) + " of " +
                                                std::to_string(m_savedLength) + " bytes has " +
                                                std::to_string(found) + " blocks");
    }
}

bool VolumeFile::IsSound() {
    const SqlBudget budget(m_connection);
    SqlStatement rows(m_connection,
                      "SELECT count(*), total(length(Bytes) = min(?3, ?4 - (Position - ?1) * ?3)) "
                      "FROM Volume_Block WHERE Position BETWEEN ?1 AND ?2");
    rows.BindInt(1, Position(0));
    rows.BindInt(2, Position(kLastPossible));
    rows.BindInt(3, kBlock);
    rows.BindInt(4, m_savedLength);
    return rows.Step() && sqlite3_column_int64(rows.Get(), 0) == m_savedBlocks &&
           sqlite3_column_int64(rows.Get(), 1) == m_savedBlocks;
}

std::vector<std::byte> VolumeFile::Salvage(std::uint32_t most) {
    const SqlBudget budget(m_connection);
    SqlStatement rows(m_connection,
                      "SELECT Bytes FROM Volume_Block WHERE Position BETWEEN ?1 AND ?2 "
                      "ORDER BY Position");
    rows.BindInt(1, Position(0));
    rows.BindInt(2, Position(kLastPossible));
    std::vector<std::byte> bytes;
    while (bytes.size() < most && rows.Step()) {
        const auto* block = static_cast<const std::byte*>(sqlite3_column_blob(rows.Get(), 0));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(rows.Get(), 0));
        bytes.insert(bytes.end(), block, block + std::min(size, most - bytes.size()));
    }
    return bytes;
}

void VolumeFile::DropClean() {
    if (m_blocks.size() - m_dirty <= kMostClean) {
        return;
    }
    std::erase_if(m_blocks, [](const auto& entry) { return !entry.second.dirty; });
}

SqlStatement& VolumeFile::Select() {
    if (!m_select) {
        m_select = SqlStatement(m_connection, "SELECT Bytes FROM Volume_Block WHERE Position = ?1");
    }
    return m_select;
}

bool VolumeFile::DatabaseHoldsBlocks() {
    return std::all_of(m_blocks.begin(), m_blocks.end(), [&](const auto& entry) {
        SqlStatement& select = Select();
        const SqlUse use(select);
        select.BindInt(1, Position(entry.first));
        const std::uint32_t size = std::min(kBlock, m_length - entry.first * kBlock);
        return select.Step() && sqlite3_column_bytes(select.Get(), 0) == static_cast<int>(size) &&
               std::memcmp(sqlite3_column_blob(select.Get(), 0), entry.second.bytes.data(), size) ==
                   0;
    });
}

void VolumeFile::ReadBlock(std::uint32_t number, Block& block) {
    SqlStatement& select = Select();
    const SqlUse use(select);
    select.BindInt(1, Position(number));
    const std::uint32_t expected = std::min(kBlock, m_savedLength - number * kBlock);
    if (!select.Step() || sqlite3_column_bytes(select.Get(), 0) != static_cast<int>(expected)) {
        throw StoreFailure(error::kDamaged, "file " + std::to_string(m_id) + ": block " +
                                                std::to_string(number) +
                                                " is missing or has the wrong size");
    }
    std::memcpy(block.bytes.data(), sqlite3_column_blob(select.Get(), 0), expected);
}

VolumeFile::Block& VolumeFile::Fetch(std::uint32_t number) {
    const auto found = m_blocks.find(number);
    if (found != m_blocks.end()) {
        return found->second;
    }
    // Before the new block is added, which is clean and would be dropped itself.
    DropClean();
    const auto added = m_blocks.try_emplace(number).first;
    if (number < m_savedBlocks) {
        try {
            ReadBlock(number, added->second);
        } catch (...) {
            m_blocks.erase(added);
            throw;
        }
    }
    return added->second;
}

void VolumeFile::MarkDirty(Block& block) {
    if (!block.dirty) {
        block.dirty = true;
        ++m_dirty;
    }
}

std::uint32_t VolumeFile::Read(std::uint32_t position, std::byte* buffer, std::uint32_t count) {
    if (position >= m_length) {
        return 0;
    }
    count = std::min(count, m_length - position);
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t at = (position + done) % kBlock;
        const std::uint32_t part = std::min(count - done, kBlock - at);
        std::memcpy(buffer + done, Fetch((position + done) / kBlock).bytes.data() + at, part);
        done += part;
    }
    return count;
}

void VolumeFile::Grow(std::uint32_t length) {
    if (length <= m_length) {
        return;
    }
    // The row of the last block ends with the file, so it must be written again, longer.
    if (m_length % kBlock != 0) {
        MarkDirty(Fetch(m_length / kBlock));
    }
    for (std::uint32_t block = BlockCount(m_length); block < BlockCount(length); ++block) {
        MarkDirty(Fetch(block));
    }
    m_length = length;
}

void VolumeFile::Write(std::uint32_t position, const std::byte* bytes, std::uint32_t count) {
    if (count == 0) {
        return;
    }
    Grow(position + count);
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t at = (position + done) % kBlock;
        const std::uint32_t part = std::min(count - done, kBlock - at);
        Block& block = Fetch((position + done) / kBlock);
        MarkDirty(block);
        std::memcpy(block.bytes.data() + at, bytes + done, part);
        done += part;
    }
}

void VolumeFile::SetLength(std::uint32_t length) {
    if (length >= m_length) {
        Grow(length);
        return;
    }
    // The bytes that are cut off must be zeros if the file is lengthened again.
    if (length % kBlock != 0) {
        Block& last = Fetch(length / kBlock);
        MarkDirty(last);
        std::fill(last.bytes.begin() + length % kBlock, last.bytes.end(), std::byte{0});
    }
    const std::uint32_t blocks = BlockCount(length);
    for (auto entry = m_blocks.lower_bound(blocks); entry != m_blocks.end();) {
        m_dirty -= entry->second.dirty ? 1U : 0U;
        entry = m_blocks.erase(entry);
    }
    m_length = length;
    if (blocks < m_savedBlocks) {
        DeleteRows(blocks);
        m_savedBlocks = blocks;
    }
}

void VolumeFile::DeleteRows(std::uint32_t firstBlock) {
    const SqlBudget budget(m_connection);
    SqlStatement remove(m_connection, "DELETE FROM Volume_Block WHERE Position BETWEEN ?1 AND ?2");
    remove.BindInt(1, Position(firstBlock));
    remove.BindInt(2, Position(kLastPossible));
    remove.Run();
}

void VolumeFile::Erase() {
    SetLength(0);
    DeleteRows(0);
}

void VolumeFile::Flush() {
    if (m_dirty != 0) {
        if (!m_replace) {
            m_replace = SqlStatement(m_connection, "REPLACE INTO Volume_Block VALUES(?1, ?2)");
        }
        for (auto& [number, block] : m_blocks) {
            if (block.dirty) {
                m_replace.BindInt(1, Position(number));
                m_replace.BindBlob(2, block.bytes.data(),
                                   std::min(kBlock, m_length - number * kBlock));
                m_replace.Run();
                block.dirty = false;
                --m_dirty;
            }
        }
        DropClean();
    }
    m_savedBlocks = BlockCount(m_length);
    if (m_length != m_savedLength) {
        SqlStatement update(m_connection, "UPDATE Volume_File SET Length = ?1 WHERE File = ?2");
        update.BindInt(1, m_length);
        update.BindInt(2, m_id);
        update.Run();
        m_savedLength = m_length;
    }
}

void VolumeFile::Reload(std::uint32_t length) noexcept {
    m_blocks.clear();
    m_dirty = 0;
    m_length = length;
    m_savedLength = length;
    m_savedBlocks = BlockCount(length);
}

}  // namespace cqsurvey
