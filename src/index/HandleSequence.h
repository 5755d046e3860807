#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "cqsurvey/Types.h"
#include "index/HandleBlocks.h"
#include "index/SortDigest.h"

namespace cqsurvey {

/// A long sequence of handles in any order that is inserted into, removed from and indexed at any
/// place, and that finds the places of a handle, each in logarithmic time. A handle may stand in it
/// more than once. With the digest that is kept beside each handle it takes about 32 bytes each.
///
/// The handles lie in blocks. A directory holds the blocks in their order, a tree of partial sums
/// over it leads from an index to its block, and a table leads from a handle to its block.
class HandleSequence {
 public:
    struct Entry {
        CqHandle handle;
        SortDigest digest;
    };

    [[nodiscard]] std::uint32_t Size() const noexcept { return m_size; }

    /// What stands at `index`, which is below Size().
    [[nodiscard]] CqHandle At(std::uint32_t index) const noexcept;
    [[nodiscard]] Entry EntryAt(std::uint32_t index) const noexcept;

    [[nodiscard]] bool Contains(CqHandle handle) const noexcept;

    /// The lowest index at which the handle stands.
    [[nodiscard]] std::optional<std::uint32_t> IndexOf(CqHandle handle) const noexcept;

    /// Puts the handle in front of the one at `index`, which is at most Size(). Nothing is changed
    /// when memory runs out.
    void Insert(std::uint32_t index, const Entry& entry);

    /// Removes the handle at `index`, which is below Size(), and returns it.
    CqHandle RemoveAt(std::uint32_t index) noexcept;

    /// Replaces the whole sequence.
    void Assign(const std::vector<Entry>& entries);

    /// How many entries `precedes` holds for, which must be those at the front.
    template <class Precedes>
    [[nodiscard]] std::uint32_t CountPreceding(Precedes&& precedes) const {
        std::uint32_t low = 0;
        auto high = static_cast<std::uint32_t>(m_directory.size());
        while (low < high) {
            const std::uint32_t middle = (low + high) / 2;
            if (precedes(m_directory[middle].last)) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        if (low == m_directory.size()) {
            return m_size;
        }
        const Block& block = *m_blocks[m_directory[low].number];
        std::uint32_t first = 0;
        std::uint32_t last = m_directory[low].count - 1;
        while (first < last) {
            const std::uint32_t middle = (first + last) / 2;
            if (precedes(Entry{block.handles[middle], block.digests[middle]})) {
                first = middle + 1;
            } else {
                last = middle;
            }
        }
        return CountBefore(low) + first;
    }

 private:
    static constexpr std::uint32_t kBlockCapacity = 256;

    struct Block {
        std::array<CqHandle, kBlockCapacity> handles;
        std::array<SortDigest, kBlockCapacity> digests;
    };

    /// What is asked of a block most, so that the block itself is seldom touched.
    struct Place {
        std::uint32_t number = 0;
        std::uint32_t count = 0;
        Entry last{};
    };

    struct Spot {
        std::uint32_t place;
        std::uint32_t offset;
    };

    [[nodiscard]] Spot SpotOf(std::uint32_t index) const noexcept;
    [[nodiscard]] std::uint32_t CountBefore(std::uint32_t place) const noexcept;
    void Count(std::uint32_t place, std::int32_t difference) noexcept;
    void SumUp() noexcept;
    void NoteLast(std::uint32_t place) noexcept;

    void ReserveBlocks(std::size_t count);
    /// Adds an empty block; SumUp must follow.
    void AddBlock(std::uint32_t place);
    void RemoveBlock(std::uint32_t place) noexcept;
    void Split(std::uint32_t place);
    void MergeWithNext(std::uint32_t place) noexcept;
    void Move(std::uint32_t from, std::uint32_t first, std::uint32_t to) noexcept;

    std::uint32_t m_size = 0;
    std::vector<Place> m_directory;
    /// Partial sums of the blocks' counts by place: a Fenwick tree.
    std::vector<std::uint32_t> m_sums;
    /// By number, and their places by number.
    std::vector<std::unique_ptr<Block>> m_blocks;
    std::vector<std::uint32_t> m_places;
    std::vector<std::uint32_t> m_freeNumbers;
    HandleBlocks m_whereabouts;
};

}  // namespace cqsurvey
