#include "index/HandleSequence.h"

#include <algorithm>
#include <bit>
#include <utility>

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
    const auto summand = static_cast<std::uint32_t>(difference);
    m_size += summand;
    m_directory[place].count += summand;
    for (std::uint32_t i = place + 1; i <= m_sums.size(); i += i & (0U - i)) {
        m_sums[i - 1] += summand;
    }
}

void HandleSequence::SumUp() noexcept {
    const auto blocks = static_cast<std::uint32_t>(m_directory.size());
    for (std::uint32_t place = 0; place < blocks; ++place) {
        m_places[m_directory[place].number] = place;
        m_sums[place] = m_directory[place].count;
    }
    for (std::uint32_t i = 1; i <= blocks; ++i) {
        const std::uint32_t parent = i + (i & (0U - i));
        if (parent <= blocks) {
            m_sums[parent - 1] += m_sums[i - 1];
        }
    }
}

void HandleSequence::NoteLast(std::uint32_t place) noexcept {
    Place& noted = m_directory[place];
    const Block& block = *m_blocks[noted.number];
    noted.last = {block.handles[noted.count - 1], block.digests[noted.count - 1]};
}

CqHandle HandleSequence::At(std::uint32_t index) const noexcept {
    const Spot spot = SpotOf(index);
    return m_blocks[m_directory[spot.place].number]->handles[spot.offset];
}

HandleSequence::Entry HandleSequence::EntryAt(std::uint32_t index) const noexcept {
    const Spot spot = SpotOf(index);
    const Block& block = *m_blocks[m_directory[spot.place].number];
    return {block.handles[spot.offset], block.digests[spot.offset]};
}

bool HandleSequence::Contains(CqHandle handle) const noexcept {
    bool found = false;
    m_whereabouts.ForEach(handle, [&](std::uint32_t) { found = true; });
    return found;
}

std::optional<std::uint32_t> HandleSequence::IndexOf(CqHandle handle) const noexcept {
    std::optional<std::uint32_t> first;
    m_whereabouts.ForEach(handle, [&](std::uint32_t number) {
        first = first ? std::min(*first, m_places[number]) : m_places[number];
    });
    if (!first) {
        return std::nullopt;
    }
    const auto& handles = m_blocks[m_directory[*first].number]->handles;
    const auto* found = std::find(handles.begin(), handles.end(), handle);
    return CountBefore(*first) + static_cast<std::uint32_t>(found - handles.begin());
}

void HandleSequence::ReserveBlocks(std::size_t count) {
    // After that nothing allocates memory when a block is added, nor when it becomes free.
    m_directory.reserve(count);
    m_sums.reserve(count);
    m_places.reserve(count);
    m_freeNumbers.reserve(count);
    m_blocks.reserve(count);
}

void HandleSequence::AddBlock(std::uint32_t place) {
    auto block = std::make_unique<Block>();
    if (m_blocks.size() == m_blocks.capacity()) {
        ReserveBlocks(m_blocks.size() + m_blocks.size() / 4 + 4);
    }
    auto number = static_cast<std::uint32_t>(m_blocks.size());
    if (m_freeNumbers.empty()) {
        m_blocks.push_back(std::move(block));
        m_places.push_back(place);
    } else {
        number = m_freeNumbers.back();
        m_freeNumbers.pop_back();
        m_blocks[number] = std::move(block);
    }
    m_directory.insert(m_directory.begin() + place, Place{number});
    m_sums.push_back(0);
}

void HandleSequence::RemoveBlock(std::uint32_t place) noexcept {
    const std::uint32_t number = m_directory[place].number;
    m_blocks[number].reset();
    m_freeNumbers.push_back(number);
    m_directory.erase(m_directory.begin() + place);
    m_sums.pop_back();
    SumUp();
}

void HandleSequence::Move(std::uint32_t from, std::uint32_t first, std::uint32_t to) noexcept {
    Place& source = m_directory[from];
    Place& target = m_directory[to];
    Block& sourceBlock = *m_blocks[source.number];
    Block& targetBlock = *m_blocks[target.number];
    for (std::uint32_t i = first; i < source.count; ++i) {
        m_whereabouts.Move(sourceBlock.handles[i], source.number, target.number);
        targetBlock.handles[target.count] = sourceBlock.handles[i];
        targetBlock.digests[target.count] = sourceBlock.digests[i];
        ++target.count;
    }
    source.count = first;
    NoteLast(to);
}

void HandleSequence::Split(std::uint32_t place) {
    AddBlock(place + 1);
    Move(place, kBlockCapacity / 2, place + 1);
    NoteLast(place);
    SumUp();
}

void HandleSequence::MergeWithNext(std::uint32_t place) noexcept {
    Move(place + 1, 0, place);
    RemoveBlock(place + 1);
}

void HandleSequence::Insert(std::uint32_t index, const Entry& entry) {
    Spot spot{};
    if (index < m_size) {
        spot = SpotOf(index);
    } else if (m_size != 0) {
        spot.place = static_cast<std::uint32_t>(m_directory.size() - 1);
        spot.offset = m_directory[spot.place].count;
    }
    if (m_size == 0 || m_directory[spot.place].count == kBlockCapacity) {
        // A sequence that grows at one of its ends has full blocks.
        if (index == m_size) {
            spot = {static_cast<std::uint32_t>(m_directory.size()), 0};
            AddBlock(spot.place);
            SumUp();
        } else if (index == 0) {
            AddBlock(0);
            SumUp();
        } else {
            Split(spot.place);
            const std::uint32_t left = m_directory[spot.place].count;
            if (spot.offset > left) {
                spot = {spot.place + 1, spot.offset - left};
            }
        }
    }
    const Place& place = m_directory[spot.place];
    try {
        m_whereabouts.Add(entry.handle, place.number);
    } catch (...) {
        if (place.count == 0) {
            RemoveBlock(spot.place);
        }
        throw;
    }
    Block& block = *m_blocks[place.number];
    const auto makeRoom = [&](auto* values) {
        std::copy_backward(values + spot.offset, values + place.count, values + place.count + 1);
        return values + spot.offset;
    };
    *makeRoom(block.handles.data()) = entry.handle;
    *makeRoom(block.digests.data()) = entry.digest;
    Count(spot.place, 1);
    if (spot.offset + 1 == place.count) {
        NoteLast(spot.place);
    }
}

CqHandle HandleSequence::RemoveAt(std::uint32_t index) noexcept {
    const Spot spot = SpotOf(index);
    const Place& place = m_directory[spot.place];
    Block& block = *m_blocks[place.number];
    const CqHandle handle = block.handles[spot.offset];
    m_whereabouts.Remove(handle, place.number);
    const auto close = [&](auto* values) {
        std::copy(values + spot.offset + 1, values + place.count, values + spot.offset);
    };
    close(block.handles.data());
    close(block.digests.data());
    Count(spot.place, -1);
    if (place.count == 0) {
        RemoveBlock(spot.place);
        return handle;
    }
    if (spot.offset == place.count) {
        NoteLast(spot.place);
    }

    // Small blocks are joined, so that the memory follows the size.
    constexpr std::uint32_t kSmall = kBlockCapacity / 4;
    const auto isSmall = [this](std::uint32_t other) {
        return other < m_directory.size() && m_directory[other].count <= 2 * kSmall;
    };
    if (place.count <= kSmall) {
        if (isSmall(spot.place + 1)) {
            MergeWithNext(spot.place);
        } else if (spot.place > 0 && isSmall(spot.place - 1)) {
            MergeWithNext(spot.place - 1);
        }
    }
    return handle;
}

void HandleSequence::Assign(const std::vector<Entry>& entries) {
    HandleSequence filled;
    // Room in every block keeps the first insertions afterwards from splitting all of them.
    constexpr std::size_t kFill = kBlockCapacity - kBlockCapacity / 8;
    filled.ReserveBlocks((entries.size() + kFill - 1) / kFill);
    for (std::size_t first = 0; first < entries.size(); first += kFill) {
        const std::size_t count = std::min(kFill, entries.size() - first);
        const auto number = static_cast<std::uint32_t>(filled.m_blocks.size());
        auto block = std::make_unique<Block>();
        for (std::size_t i = 0; i < count; ++i) {
            const Entry& entry = entries[first + i];
            block->handles[i] = entry.handle;
            block->digests[i] = entry.digest;
            filled.m_whereabouts.Add(entry.handle, number);
        }
        filled.m_blocks.push_back(std::move(block));
        filled.m_directory.push_back(
            Place{number, static_cast<std::uint32_t>(count), entries[first + count - 1]});
    }
    filled.m_size = static_cast<std::uint32_t>(entries.size());
    filled.m_sums.resize(filled.m_directory.size());
    filled.m_places.resize(filled.m_directory.size());
    filled.SumUp();
    *this = std::move(filled);
}

}  // namespace cqsurvey
