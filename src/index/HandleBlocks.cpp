#include "index/HandleBlocks.h"

#include <algorithm>

namespace cqsurvey {

void HandleBlocks::Add(CqHandle handle, std::uint32_t block) {
    const auto [page, isNew] = m_pages.try_emplace(handle / kPageSize);
    if (isNew) {
        page->second.fill(kNowhere);
    }
    std::uint32_t& known = page->second[handle % kPageSize];
    known = known == kNowhere ? block : kSeveral;
}

void HandleBlocks::Remove(CqHandle handle) noexcept {
    Move(handle, kNowhere);
}

void HandleBlocks::Move(CqHandle handle, std::uint32_t to) noexcept {
    std::uint32_t& known = m_pages.find(handle / kPageSize)->second[handle % kPageSize];
    if (known != kSeveral) {
        known = to;
    }
}

void HandleBlocks::DropEmptyPage(CqHandle handle) noexcept {
    const auto page = m_pages.find(handle / kPageSize);
    if (page != m_pages.end() && std::all_of(page->second.begin(), page->second.end(),
                                             [](auto block) { return block == kNowhere; })) {
        m_pages.erase(page);
    }
}

}  // namespace cqsurvey
