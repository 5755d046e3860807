#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "cqsurvey/Types.h"
#include "platform/ProbeTable.h"
#include "platform/RecordHash.h"

namespace cqsurvey {

/// Which blocks of a sequence a handle stands in; mostly one, if any. Handles mostly lie close
/// together, so they are kept in pages of 16 neighbours: 5 bytes each; a handle far from all others
/// takes about 80.
class HandleBlocks {
 public:
    /// Calls `visit` with each block the handle stands in, as often as it stands there.
    template <class Visit>
    void ForEach(CqHandle handle, Visit&& visit) const {
        const std::size_t page = FindPage(handle);
        if (page == Pages::kNone) {
            return;
        }
        const std::uint32_t first = m_blocks[m_pages[page].index][handle % kPageSize];
        if (first == kNoBlock) {
            return;
        }
        visit(first);
        m_more.ForEach(HashHandle(handle), [&](const Another& another) {
            if (another.handle == handle) {
                visit(another.block);
            }
        });
    }

    /// Nothing is changed when memory runs out.
    void Add(CqHandle handle, std::uint32_t block);

    /// The handle, which stands in the block, stands there once less.
    void Remove(CqHandle handle, std::uint32_t block) noexcept;

    /// The handle, which stands in block `from`, was moved to block `to`.
    void Move(CqHandle handle, std::uint32_t from, std::uint32_t to) noexcept;

 private:
    static constexpr std::uint32_t kPageSize = 16;
    static constexpr std::uint32_t kNoBlock = 0xFFFFFFFF;
    using Blocks = std::array<std::uint32_t, kPageSize>;

    struct Page {
        std::uint32_t number = 0;
        std::uint32_t index = kNoBlock;

        [[nodiscard]] bool IsFree() const noexcept { return index == kNoBlock; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(number); }
    };
    using Pages = ProbeTable<Page>;

    /// A handle that stands somewhere in the sequence a second time.
    struct Another {
        CqHandle handle = 0;
        std::uint32_t block = kNoBlock;

        [[nodiscard]] bool IsFree() const noexcept { return block == kNoBlock; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(handle); }
    };
    using Others = ProbeTable<Another>;

    [[nodiscard]] std::size_t FindPage(CqHandle handle) const noexcept {
        const std::uint32_t number = handle / kPageSize;
        return m_pages.Find(HashHandle(number),
                            [number](const Page& page) { return page.number == number; });
    }
    [[nodiscard]] std::uint32_t& First(CqHandle handle) noexcept {
        return m_blocks[m_pages[FindPage(handle)].index][handle % kPageSize];
    }
    [[nodiscard]] std::size_t FindOther(CqHandle handle, std::uint32_t block) const noexcept {
        return m_more.Find(HashHandle(handle), [handle, block](const Another& another) {
            return another.handle == handle && another.block == block;
        });
    }

    Pages m_pages;
    std::vector<Blocks> m_blocks;
    std::vector<std::uint32_t> m_freePages;
    Others m_more;
};

}  // namespace cqsurvey
