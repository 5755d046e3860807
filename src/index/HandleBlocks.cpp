#include "index/HandleBlocks.h"

#include <algorithm>

namespace cqsurvey {

void HandleBlocks::Add(CqHandle handle, std::uint32_t block) {
    const std::size_t page = FindPage(handle);
    if (page != Pages::kNone) {
        std::uint32_t& first = m_blocks[m_pages[page].index][handle % kPageSize];
        if (first != kNoBlock) {
            m_more.Insert(Another{handle, block});
        } else {
            first = block;
        }
        return;
    }
    m_pages.ReserveOneMore();
    Blocks blocks;
    blocks.fill(kNoBlock);
    blocks[handle % kPageSize] = block;
    if (m_freePages.empty()) {
        if (m_blocks.size() == m_blocks.capacity()) {
            // Every page can become free without allocating.
            const std::size_t capacity = m_blocks.size() + m_blocks.size() / 4 + 4;
            m_freePages.reserve(capacity);
            m_blocks.reserve(capacity);
        }
        m_blocks.push_back(blocks);
        m_pages.Insert(Page{handle / kPageSize, static_cast<std::uint32_t>(m_blocks.size() - 1)});
    } else {
        m_blocks[m_freePages.back()] = blocks;
        m_pages.Insert(Page{handle / kPageSize, m_freePages.back()});
        m_freePages.pop_back();
    }
}

void HandleBlocks::Remove(CqHandle handle, std::uint32_t block) noexcept {
    const std::size_t page = FindPage(handle);
    const std::uint32_t index = m_pages[page].index;
    std::uint32_t& first = m_blocks[index][handle % kPageSize];
    if (first != block) {
        m_more.EraseAt(FindOther(handle, block));
        return;
    }
    const std::size_t other = m_more.Find(
        HashHandle(handle), [handle](const Another& another) { return another.handle == handle; });
    if (other != Others::kNone) {
        first = m_more[other].block;
        m_more.EraseAt(other);
        return;
    }
    first = kNoBlock;
    const Blocks& blocks = m_blocks[index];
    if (std::all_of(blocks.begin(), blocks.end(),
                    [](std::uint32_t known) { return known == kNoBlock; })) {
        m_freePages.push_back(index);
        m_pages.EraseAt(page);
    }
}

void HandleBlocks::Move(CqHandle handle, std::uint32_t from, std::uint32_t to) noexcept {
    std::uint32_t& first = First(handle);
    if (first == from) {
        first = to;
    } else {
        m_more[FindOther(handle, from)].block = to;
    }
}

}  // namespace cqsurvey
