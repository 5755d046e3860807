#include "index/HandleSequence.h"

#include <algorithm>
#include <utility>

namespace cqsurvey {

namespace {

/// Makes room for one more, so that the next insertion cannot fail.
template <class T>
void ReserveOneMore(std::vector<T>& values) {
    if (values.size() == values.capacity()) {
        values.reserve(2 * values.size() + 4);
    }
}

std::ptrdiff_t Offset(std::size_t count) {
    return static_cast<std::ptrdiff_t>(count);
}

}  // namespace

HandleSequence::HandleSequence(const std::vector<CqHandle>& handles) {
    // Room in every block keeps the first insertions afterwards from splitting all of them.
    constexpr std::size_t kFill = kCapacity - kCapacity / 8;
    for (std::size_t first = 0; first < handles.size(); first += kFill) {
        const std::size_t last = std::min(first + kFill, handles.size());
        AddBlock(static_cast<std::uint32_t>(m_order.size()));
        m_blocks.back().handles.assign(handles.begin() + Offset(first),
                                       handles.begin() + Offset(last));
        for (std::size_t i = first; i < last; ++i) {
            m_blockOf.Add(handles[i], m_order.back());
        }
    }
    SumUp();
}

std::uint32_t HandleSequence::PlaceOf(std::uint32_t index) const noexcept {
    const auto after = std::upper_bound(m_starts.begin(), m_starts.end(), index);
    return static_cast<std::uint32_t>(after - m_starts.begin() - 1);
}

CqHandle HandleSequence::At(std::uint32_t index) const noexcept {
    const std::uint32_t place = PlaceOf(index);
    return BlockAt(place).handles[index - m_starts[place]];
}

std::optional<std::uint32_t> HandleSequence::IndexOf(CqHandle handle) const noexcept {
    const std::uint32_t number = m_blockOf.BlockOf(handle);
    if (number == HandleBlocks::kNowhere) {
        return std::nullopt;
    }
    const bool isKnown = number != HandleBlocks::kSeveral;
    const std::size_t first = isKnown ? m_blocks[number].place : 0;
    const std::size_t end = isKnown ? first + 1 : m_order.size();
    for (std::size_t place = first; place < end; ++place) {
        const auto& handles = BlockAt(place).handles;
        const auto found = std::find(handles.begin(), handles.end(), handle);
        if (found != handles.end()) {
            return m_starts[place] + static_cast<std::uint32_t>(found - handles.begin());
        }
    }
    return std::nullopt;
}

void HandleSequence::SumUp() noexcept {
    m_starts.resize(m_order.size());
    m_size = 0;
    for (std::uint32_t place = 0; place < m_order.size(); ++place) {
        BlockAt(place).place = place;
        m_starts[place] = m_size;
        m_size += static_cast<std::uint32_t>(BlockAt(place).handles.size());
    }
}

void HandleSequence::AddBlock(std::uint32_t place) {
    Block block;
    block.handles.reserve(kCapacity);
    ReserveOneMore(m_blocks);
    ReserveOneMore(m_order);
    ReserveOneMore(m_starts);
    m_order.insert(m_order.begin() + place, static_cast<std::uint32_t>(m_blocks.size()));
    m_blocks.push_back(std::move(block));
    m_starts.push_back(m_size);
}

void HandleSequence::MoveHandles(std::uint32_t from, std::size_t first, std::uint32_t to) noexcept {
    std::vector<CqHandle>& source = BlockAt(from).handles;
    std::vector<CqHandle>& target = BlockAt(to).handles;
    for (std::size_t i = first; i < source.size(); ++i) {
        m_blockOf.Move(source[i], m_order[to]);
    }
    target.insert(target.end(), source.begin() + Offset(first), source.end());
    source.resize(first);
}

void HandleSequence::Split(std::uint32_t place, std::size_t left) {
    AddBlock(place + 1);
    MoveHandles(place, left, place + 1);
    SumUp();
}

bool HandleSequence::JoinWithNext(std::uint32_t place) {
    if (place + 1 >= m_order.size() ||
        BlockAt(place).handles.size() + BlockAt(place + 1).handles.size() > kCapacity / 2) {
        return false;
    }
    Keep(place);
    Keep(place + 1);
    BlockAt(place).handles.reserve(kCapacity);
    MoveHandles(place + 1, 0, place);
    std::vector<CqHandle>().swap(BlockAt(place + 1).handles);
    m_order.erase(m_order.begin() + place + 1);
    SumUp();
    return true;
}

void HandleSequence::Insert(std::uint32_t index, CqHandle handle) {
    if (m_order.empty()) {
        AddBlock(0);
    }
    std::uint32_t place =
        index < m_size ? PlaceOf(index) : static_cast<std::uint32_t>(m_order.size() - 1);
    std::size_t offset = index - m_starts[place];
    Keep(place);
    if (BlockAt(place).handles.size() == kCapacity) {
        // A sequence that grows at one of its ends is to have full blocks.
        const bool atEnd = offset == 0 || offset == kCapacity;
        const std::size_t left = atEnd ? offset : kCapacity / 2;
        Split(place, left);
        if (offset > left || left == kCapacity) {
            ++place;
            offset -= left;
        }
    }
    Block& block = BlockAt(place);
    block.handles.reserve(kCapacity);
    m_blockOf.Add(handle, m_order[place]);
    block.handles.insert(block.handles.begin() + Offset(offset), handle);
    std::for_each(m_starts.begin() + place + 1, m_starts.end(), [](auto& start) { ++start; });
    ++m_size;
}

void HandleSequence::RemoveAt(std::uint32_t index) {
    // Small blocks are joined, so that the memory follows the size.
    std::uint32_t place = PlaceOf(index);
    if (JoinWithNext(place) || (place > 0 && JoinWithNext(place - 1))) {
        place = PlaceOf(index);
    }
    Keep(place);
    std::vector<CqHandle>& handles = BlockAt(place).handles;
    const auto handle = handles.begin() + (index - m_starts[place]);
    m_removed.push_back(*handle);
    m_blockOf.Remove(*handle);
    handles.erase(handle);
    std::for_each(m_starts.begin() + place + 1, m_starts.end(), [](auto& start) { --start; });
    --m_size;
}

void HandleSequence::Keep(std::uint32_t place) {
    if (!m_isChanged) {
        m_keptOrder = m_order;
        m_keptCount = m_blocks.size();
        m_isChanged = true;
    }
    const std::uint32_t number = m_order[place];
    Block& block = m_blocks[number];
    if (number < m_keptCount && !block.isKept) {
        m_kept.push_back({number, block.handles});
        block.isKept = true;
    }
}

void HandleSequence::ForgetStep() noexcept {
    for (const KeptBlock& kept : m_kept) {
        m_blocks[kept.number].isKept = false;
    }
    m_isChanged = false;
    m_kept = {};
    m_removed = {};
}

void HandleSequence::KeepStep() noexcept {
    for (const CqHandle handle : m_removed) {
        m_blockOf.DropEmptyPage(handle);
    }
    ForgetStep();
}

void HandleSequence::UndoStep() noexcept {
    if (!m_isChanged) {
        return;
    }
    const auto leave = [this](const Block& block) {
        for (const CqHandle handle : block.handles) {
            m_blockOf.Remove(handle);
        }
    };
    const auto firstAdded = m_blocks.begin() + Offset(m_keptCount);
    std::for_each(firstAdded, m_blocks.end(), leave);
    m_blocks.erase(firstAdded, m_blocks.end());
    for (const KeptBlock& kept : m_kept) {
        leave(m_blocks[kept.number]);
    }
    for (KeptBlock& kept : m_kept) {
        m_blocks[kept.number].handles.swap(kept.handles);
        for (const CqHandle handle : m_blocks[kept.number].handles) {
            m_blockOf.Add(handle, kept.number);
        }
    }
    m_order.swap(m_keptOrder);
    SumUp();
    ForgetStep();
}

}  // namespace cqsurvey
