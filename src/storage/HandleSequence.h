#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "cqsurvey/Types.h"
#include "storage/ProbeTable.h"

namespace cqsurvey {

/// A long sequence of handles in any order that is inserted into, removed from and indexed at any
/// place, and that finds the places of a handle, each in logarithmic time. A handle may stand in it
/// more than once. About 15 bytes a handle.
///
/// The handles lie in blocks. A directory holds the blocks in their order, a tree of partial sums
/// over it leads from an index to its block, and a table leads from a handle to its block.
class HandleSequence {
 public:
    [[nodiscard]] std::uint32_t Size() const noexcept { return m_size; }

    /// The handle at `index`, which is below Size().
    [[nodiscard]] CqHandle At(std::uint32_t index) const noexcept;

    [[nodiscard]] bool Contains(CqHandle handle) const noexcept;

    /// The lowest index at which the handle stands.
    [[nodiscard]] std::optional<std::uint32_t> IndexOf(CqHandle handle) const noexcept;

    /// Puts the handle in front of the one at `index`, which is at most Size(). Nothing is changed
    /// when memory runs out.
    void Insert(std::uint32_t index, CqHandle handle);

    /// Removes the handle at `index`, which is below Size(), and returns it.
    CqHandle RemoveAt(std::uint32_t index) noexcept;

    /// Replaces the whole sequence.
    void Assign(const std::vector<CqHandle>& handles);

    /// How many handles `precedes` holds for, which must be those at the front.
    template <class Precedes>
    [[nodiscard]] std::uint32_t CountPreceding(Precedes&& precedes) const {
        std::uint32_t low = 0;
        auto high = static_cast<std::uint32_t>(m_directory.size());
        while (low < high) {
            const std::uint32_t middle = (low + high) / 2;
            const Block& block = BlockAt(middle);
            if (precedes(block.handles[block.count - 1])) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        if (low == m_directory.size()) {
            return m_size;
        }
        const Block& block = BlockAt(low);
        std::uint32_t first = 0;
        std::uint32_t last = block.count - 1;
        while (first < last) {
            const std::uint32_t middle = (first + last) / 2;
            if (precedes(block.handles[middle])) {
                first = middle + 1;
            } else {
                last = middle;
            }
        }
        return CountBefore(low) + first;
    }

 private:
    static constexpr std::uint32_t kBlockCapacity = 510;

    /// Never empty.
    struct Block {
        std::uint32_t place = 0;  // in the directory
        std::uint32_t count = 0;
        std::array<CqHandle, kBlockCapacity> handles;
    };

    struct Spot {
        std::uint32_t place;
        std::uint32_t offset;
    };

    struct Whereabouts {
        CqHandle handle = 0;
        std::uint32_t block = kNoBlock;

        [[nodiscard]] bool IsFree() const noexcept { return block == kNoBlock; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(handle); }
    };
    static constexpr std::uint32_t kNoBlock = 0xFFFFFFFF;

    [[nodiscard]] Block& BlockAt(std::uint32_t place) noexcept {
        return *m_blocks[m_directory[place]];
    }
    [[nodiscard]] const Block& BlockAt(std::uint32_t place) const noexcept {
        return *m_blocks[m_directory[place]];
    }

    [[nodiscard]] Spot SpotOf(std::uint32_t index) const noexcept;
    [[nodiscard]] std::uint32_t CountBefore(std::uint32_t place) const noexcept;
    void Count(std::uint32_t place, std::int32_t difference) noexcept;
    void SumUp() noexcept;

    void AddBlock(std::uint32_t place);
    void RemoveBlock(std::uint32_t place) noexcept;
    void Split(std::uint32_t place);
    void MergeWithNext(std::uint32_t place) noexcept;
    void Move(std::uint32_t from, std::uint32_t first, std::uint32_t to,
              std::uint32_t offset) noexcept;
    std::size_t Find(CqHandle handle, std::uint32_t block) const noexcept;

    std::uint32_t m_size = 0;
    /// Numbers of blocks in the order of the sequence.
    std::vector<std::uint32_t> m_directory;
    /// Partial sums of the blocks' counts by place: a Fenwick tree.
    std::vector<std::uint32_t> m_sums;
    std::vector<std::unique_ptr<Block>> m_blocks;
    std::vector<std::uint32_t> m_freeNumbers;
    ProbeTable<Whereabouts> m_whereabouts;
};

}  // namespace cqsurvey
