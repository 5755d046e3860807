#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "cqsurvey/Types.h"
#include "platform/RecordHash.h"

namespace cqsurvey {

/// In which block of a sequence a handle stands.
///
/// Handles are record numbers, which mostly lie close together. So 16 neighbours share a page, and
/// only the pages are hashed:
///
///     handle 35 = 2 * 16 + 3
///     pages   { 0: [...]  2: [. . . 7 ............]  5: [...] }
///                                   ^ handle 35 stands in block 7
///
/// A look-up is one hash look-up. Neighbours take about 6 bytes each, a handle far from all others
/// about 100. A map from each handle to its block would take 40 bytes and an allocation for every
/// point of a job that is opened; an array over all handles would be as long as the highest one,
/// which a file may choose.
///
/// A page stays when its last handle goes, so that the handle can come back without memory.
class HandleBlocks {
 public:
    static constexpr std::uint32_t kNowhere = 0xFFFFFFFF;
    /// Stands, or once stood, in the sequence more than once. Where is not known.
    static constexpr std::uint32_t kSeveral = 0xFFFFFFFE;

    /// A block, kNowhere or kSeveral.
    [[nodiscard]] std::uint32_t BlockOf(CqHandle handle) const noexcept {
        const auto page = m_pages.find(handle / kPageSize);
        return page == m_pages.end() ? kNowhere : page->second[handle % kPageSize];
    }

    /// Takes no memory for a handle that was added before and whose page was not dropped since.
    /// Nothing is changed when memory runs out.
    void Add(CqHandle handle, std::uint32_t block);

    /// The handle left the one place at which it stands. kSeveral stays.
    void Remove(CqHandle handle) noexcept;

    /// The handle went from one block to another. kSeveral stays.
    void Move(CqHandle handle, std::uint32_t to) noexcept;

    /// Gives back the memory of the handle's page if no handle of it stands anywhere.
    void DropEmptyPage(CqHandle handle) noexcept;

 private:
    static constexpr std::uint32_t kPageSize = 16;
    using Page = std::array<std::uint32_t, kPageSize>;

    std::unordered_map<std::uint32_t, Page, HandleHash> m_pages;
};

}  // namespace cqsurvey
