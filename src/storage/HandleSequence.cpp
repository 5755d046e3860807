#include "storage/HandleSequence.h"

#include <algorithm>
#include <bit>

namespace cqsurvey {

HandleSequence::Spot HandleSequence::SpotOf(std::uint32_t index) const noexcept {
    const auto blocks = static_cast<std::uint32_t>(m_sums.size());
    std::uint32_t place = 0;
    for (std::uint32_t stride = std::bit_floor(blocks); stride != 0; stride /= 2) {
        if (place + stride <= blocks && m_sums[place + stride - 1] <= index) {
            index -= m_sums[place + stride - 1];
            place += stride;
        }
    }
    return {place, index};
}

std::uint32_t HandleSequence::CountBefore(std::uint32_t place) const noexcept {
    std::uint32_t count = 0;
    for (; place != 0; place &= place - 1) {
        count += m_sums[place - 1];
    }
    return count;
}

void HandleSequence::Count(std::uint32_t place, std::int32_t difference) noexcept {
    m_size += static_cast<std::uint32_t>(difference);
    for (std::uint32_t i = place + 1; i <= m_sums.size(); i += i & (0U - i)) {
        m_sums[i - 1] += static_cast<std::uint32_t>(difference);
    }
}

void HandleSequence::SumUp() noexcept {
    const auto blocks = static_cast<std::uint32_t>(m_directory.size());
    for (std::uint32_t place = 0; place < blocks; ++place) {
        Block& block = BlockAt(place);
        block.place = place;
        m_sums[place] = block.count;
    }
    for (std::uint32_t i = 1; i <= blocks; ++i) {
        const std::uint32_t parent = i + (i & (0U - i));
        if (parent <= blocks) {
            m_sums[parent - 1] += m_sums[i - 1];
        }
    }
}

CqHandle HandleSequence::At(std::uint32_t index) const noexcept {
    const Spot spot = SpotOf(index);
    return BlockAt(spot.place).handles[spot.offset];
}

bool HandleSequence::Contains(CqHandle handle) const noexcept {
    return m_whereabouts.Find(HashHandle(handle), [handle](const Whereabouts& known) {
        return known.handle == handle;
    }) != ProbeTable<Whereabouts>::kNone;
}

std::optional<std::uint32_t> HandleSequence::IndexOf(CqHandle handle) const noexcept {
    const Block* first = nullptr;
    m_whereabouts.ForEach(HashHandle(handle), [&](const Whereabouts& known) {
        if (known.handle == handle &&
            (first == nullptr || m_blocks[known.block]->place < first->place)) {
            first = m_blocks[known.block].get();
        }
    });
    if (first == nullptr) {
        return std::nullopt;
    }
    const auto* found = std::find(first->handles.begin(), first->handles.end(), handle);
    return CountBefore(first->place) + static_cast<std::uint32_t>(found - first->handles.begin());
}

std::size_t HandleSequence::Find(CqHandle handle, std::uint32_t block) const noexcept {
    return m_whereabouts.Find(HashHandle(handle), [handle, block](const Whereabouts& known) {
        return known.handle == handle && known.block == block;
    });
}

void HandleSequence::AddBlock(std::uint32_t place) {
    auto block = std::make_unique<Block>();
    m_directory.reserve(m_directory.size() + 1);
    m_sums.reserve(m_sums.size() + 1);
    // Every number that is in use can become free without allocating.
    m_freeNumbers.reserve(m_blocks.size() + 1);
    std::uint32_t number = 0;
    if (m_freeNumbers.empty()) {
        m_blocks.push_back(std::move(block));
        number = static_cast<std::uint32_t>(m_blocks.size() - 1);
    } else {
        number = m_freeNumbers.back();
        m_freeNumbers.pop_back();
        m_blocks[number] = std::move(block);
    }
    m_directory.insert(m_directory.begin() + place, number);
    m_sums.push_back(0);
    SumUp();
}

void HandleSequence::RemoveBlock(std::uint32_t place) noexcept {
    const std::uint32_t number = m_directory[place];
    m_blocks[number].reset();
    m_freeNumbers.push_back(number);
    m_directory.erase(m_directory.begin() + place);
    m_sums.pop_back();
    SumUp();
}

void HandleSequence::Move(std::uint32_t from, std::uint32_t first, std::uint32_t to,
                          std::uint32_t offset) noexcept {
    Block& source = BlockAt(from);
    Block& target = BlockAt(to);
    for (std::uint32_t i = first; i < source.count; ++i) {
        const CqHandle handle = source.handles[i];
        m_whereabouts[Find(handle, m_directory[from])].block = m_directory[to];
        target.handles[offset + i - first] = handle;
    }
    target.count = offset + source.count - first;
    source.count = first;
}

void HandleSequence::Split(std::uint32_t place) {
    AddBlock(place + 1);
    Move(place, kBlockCapacity / 2, place + 1, 0);
    SumUp();
}

void HandleSequence::MergeWithNext(std::uint32_t place) noexcept {
    Move(place + 1, 0, place, BlockAt(place).count);
    RemoveBlock(place + 1);
}

void HandleSequence::Insert(std::uint32_t index, CqHandle handle) {
    m_whereabouts.ReserveOneMore();
    Spot spot{};
    if (index < m_size) {
        spot = SpotOf(index);
    } else if (m_size != 0) {
        spot.place = static_cast<std::uint32_t>(m_directory.size() - 1);
        spot.offset = BlockAt(spot.place).count;
    } else {
        AddBlock(0);
    }
    if (BlockAt(spot.place).count == kBlockCapacity) {
        // A sequence that grows at one of its ends has full blocks.
        if (index == m_size) {
            AddBlock(spot.place + 1);
            spot = {spot.place + 1, 0};
        } else if (index == 0) {
            AddBlock(0);
        } else {
            Split(spot.place);
            const std::uint32_t left = BlockAt(spot.place).count;
            if (spot.offset > left) {
                spot = {spot.place + 1, spot.offset - left};
            }
        }
    }
    Block& block = BlockAt(spot.place);
    CqHandle* const at = block.handles.data() + spot.offset;
    std::copy_backward(at, block.handles.data() + block.count,
                       block.handles.data() + block.count + 1);
    *at = handle;
    ++block.count;
    Count(spot.place, 1);
    m_whereabouts.Insert(Whereabouts{handle, m_directory[spot.place]});
}

CqHandle HandleSequence::RemoveAt(std::uint32_t index) noexcept {
    const Spot spot = SpotOf(index);
    Block& block = BlockAt(spot.place);
    CqHandle* const at = block.handles.data() + spot.offset;
    const CqHandle handle = *at;
    m_whereabouts.EraseAt(Find(handle, m_directory[spot.place]));
    std::copy(at + 1, block.handles.data() + block.count, at);
    --block.count;
    Count(spot.place, -1);

    // Small blocks are joined, so that the memory follows the size.
    constexpr std::uint32_t kSmall = kBlockCapacity / 4;
    if (block.count == 0) {
        RemoveBlock(spot.place);
    } else if (block.count <= kSmall) {
        if (spot.place + 1 < m_directory.size() && BlockAt(spot.place + 1).count <= 2 * kSmall) {
            MergeWithNext(spot.place);
        } else if (spot.place > 0 && BlockAt(spot.place - 1).count <= 2 * kSmall) {
            MergeWithNext(spot.place - 1);
        }
    }
    return handle;
}

void HandleSequence::Assign(const std::vector<CqHandle>& handles) {
    HandleSequence filled;
    // Room in every block keeps the first insertions afterwards from splitting all of them.
    constexpr std::size_t kFill = kBlockCapacity - kBlockCapacity / 8;
    filled.m_whereabouts.Reserve(handles.size());
    for (std::size_t first = 0; first < handles.size(); first += kFill) {
        const std::size_t count = std::min(kFill, handles.size() - first);
        auto block = std::make_unique<Block>();
        std::copy_n(handles.begin() + static_cast<std::ptrdiff_t>(first), count,
                    block->handles.begin());
        block->count = static_cast<std::uint32_t>(count);
        const auto number = static_cast<std::uint32_t>(filled.m_blocks.size());
        for (std::size_t i = 0; i < count; ++i) {
            filled.m_whereabouts.Insert(Whereabouts{block->handles[i], number});
        }
        filled.m_blocks.push_back(std::move(block));
        filled.m_directory.push_back(number);
    }
    filled.m_freeNumbers.reserve(filled.m_blocks.size());
    filled.m_sums.resize(filled.m_blocks.size());
    filled.m_size = static_cast<std::uint32_t>(handles.size());
    filled.SumUp();
    *this = std::move(filled);
}

}  // namespace cqsurvey
