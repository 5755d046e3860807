#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "cqsurvey/Types.h"
#include "index/HandleBlocks.h"

namespace cqsurvey {

/// A long sequence of handles in an order that its user decides: it is inserted into, removed from
/// and read at any index, and tells at which index a handle stands. A handle may stand in it more
/// than once.
///
/// The handles lie in blocks of at most 512, so that an insertion shifts one block and not the
/// whole sequence. `m_order` holds the blocks as they follow each other, `m_starts` the index at
/// which each begins:
///
///     m_order    [ 0        | 2        | 1      ]    block numbers, which never change
///     m_starts   [ 0        | 3        | 5      ]
///     m_blocks     17 4 9     8 12       3 6 1
///                             ^ index 3            handle 12: block 2, index 3 + 1
///
/// Reading at an index is a binary search in `m_starts`. An insertion or a removal adds one to, or
/// takes it from, all starts after it: for a million handles some 2,200 neighbouring numbers at
/// most. A handle's block is known (HandleBlocks), and is searched for it. No standard container
/// both reads at an index and inserts in less than linear time.
///
/// To undo a step, a block is copied before its first change in the step, and the order before the
/// first change of all. Undoing puts the copies back, which takes no memory and cannot fail.
class HandleSequence {
 public:
    HandleSequence() = default;
    /// With nothing to undo.
    explicit HandleSequence(const std::vector<CqHandle>& handles);

    [[nodiscard]] std::uint32_t Size() const noexcept { return m_size; }

    /// What stands at `index`, which is below Size().
    [[nodiscard]] CqHandle At(std::uint32_t index) const noexcept;

    /// The lowest index at which the handle stands. One that stood in the sequence twice is looked
    /// for from the front.
    [[nodiscard]] std::optional<std::uint32_t> IndexOf(CqHandle handle) const noexcept;

    /// Puts the handle in front of the one at `index`, which is at most Size(). The sequence stays
    /// as it is when memory runs out.
    void Insert(std::uint32_t index, CqHandle handle);

    /// Removes the handle at `index`, which is below Size(). The sequence stays as it is when
    /// memory runs out.
    void RemoveAt(std::uint32_t index);

    /// Where a binary search ends that goes on behind the middle entry when `precedes` holds for
    /// it. That is how many entries it holds for if those stand at the front. Otherwise it depends
    /// on the entries that the search meets, which are those that it meets in a plain array.
    template <class Precedes>
    [[nodiscard]] std::uint32_t CountPreceding(Precedes&& precedes) const {
        std::uint32_t low = 0;
        std::uint32_t high = m_size;
        while (low < high) {
            const std::uint32_t middle = (low + high) / 2;
            if (precedes(At(middle))) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    /// Makes the changes permanent.
    void KeepStep() noexcept;
    /// Undoes the changes since the last KeepStep.
    void UndoStep() noexcept;

 private:
    static constexpr std::size_t kCapacity = 512;

    struct Block {
        std::vector<CqHandle> handles;
        std::uint32_t place = 0;
        bool isKept = false;
    };
    struct KeptBlock {
        std::uint32_t number;
        std::vector<CqHandle> handles;
    };

    [[nodiscard]] Block& BlockAt(std::size_t place) noexcept { return m_blocks[m_order[place]]; }
    [[nodiscard]] const Block& BlockAt(std::size_t place) const noexcept {
        return m_blocks[m_order[place]];
    }
    [[nodiscard]] std::uint32_t PlaceOf(std::uint32_t index) const noexcept;
    void AddBlock(std::uint32_t place);
    void Split(std::uint32_t place, std::size_t left);
    bool JoinWithNext(std::uint32_t place);
    void MoveHandles(std::uint32_t from, std::size_t first, std::uint32_t to) noexcept;
    void SumUp() noexcept;
    void Keep(std::uint32_t place);
    void ForgetStep() noexcept;

    std::uint32_t m_size = 0;
    std::vector<Block> m_blocks;
    std::vector<std::uint32_t> m_order;
    std::vector<std::uint32_t> m_starts;
    HandleBlocks m_blockOf;

    bool m_isChanged = false;
    std::vector<std::uint32_t> m_keptOrder;
    /// Blocks with a number from here on were added in the step.
    std::size_t m_keptCount = 0;
    std::vector<KeptBlock> m_kept;
    /// Handles whose pages may be empty for good when the step is kept.
    std::vector<CqHandle> m_removed;
};

}  // namespace cqsurvey
