#include "store/RecordChunks.h"

#include <cstring>

namespace cqsurvey {

std::uint32_t RecordChunks::Chunk::Rank(std::uint32_t at) const {
    std::uint32_t rank = 0;
    for (std::uint32_t word = 0; word < at / 64; ++word) {
        rank += static_cast<std::uint32_t>(std::popcount(present[word]));
    }
    const std::uint64_t below = (std::uint64_t{1} << (at % 64)) - 1;
    return rank + static_cast<std::uint32_t>(std::popcount(present[at / 64] & below));
}

std::size_t RecordChunks::LowerBound(std::uint32_t index) const {
    const auto found = std::lower_bound(
        m_chunks.begin(), m_chunks.end(), index,
        [](const auto& chunk, std::uint32_t value) { return chunk->index < value; });
    return static_cast<std::size_t>(found - m_chunks.begin());
}

RecordChunks::Chunk* RecordChunks::FindSparse(std::uint32_t index) const {
    const std::size_t at = LowerBound(index);
    return at < m_chunks.size() && m_chunks[at]->index == index ? m_chunks[at].get() : nullptr;
}

RecordChunks::Chunk& RecordChunks::AddChunk(std::uint32_t index) {
    auto chunk = std::make_unique<Chunk>();
    chunk->index = index;
    const auto at = m_chunks.begin() + static_cast<std::ptrdiff_t>(LowerBound(index));
    return **m_chunks.insert(at, std::move(chunk));
}

void RecordChunks::Grow(Chunk& chunk) {
    if (chunk.capacity == kPerChunk || (chunk.count < chunk.capacity && chunk.count < kDense)) {
        return;
    }
    // A new block of bytes is filled before the old one goes, so that nothing is lost when there is
    // no memory for it.
    const bool dense = chunk.count >= kDense;
    const std::uint32_t capacity = dense ? kPerChunk : std::max(4U, chunk.capacity * 2U);
    auto bytes = std::make_unique<std::byte[]>(capacity * m_width);
    if (dense) {
        std::uint32_t rank = 0;
        for (std::uint32_t at = 0; at < kPerChunk; ++at) {
            if (Chunk::Test(chunk.present, at)) {
                std::memcpy(bytes.get() + at * m_width, chunk.bytes.get() + rank * m_width,
                            m_width);
                ++rank;
            }
        }
    } else if (chunk.count != 0) {
        std::memcpy(bytes.get(), chunk.bytes.get(), chunk.count * m_width);
    }
    chunk.bytes = std::move(bytes);
    chunk.capacity = static_cast<std::uint16_t>(capacity);
}

std::byte* RecordChunks::PlaceNew(Chunk& chunk, std::uint32_t at) {
    Grow(chunk);
    const std::uint32_t slot = chunk.Slot(at);
    std::byte* bytes = chunk.bytes.get() + slot * m_width;
    if (chunk.capacity != kPerChunk && slot < chunk.count) {
        std::memmove(bytes + m_width, bytes, (chunk.count - slot) * m_width);
    }
    chunk.present[at / 64] |= std::uint64_t{1} << (at % 64);
    ++chunk.count;
    ++m_count;
    return bytes;
}

void RecordChunks::PutMarked(std::uint32_t number, const std::byte* bytes) {
    Chunk& chunk = GetChunk(number >> kShift);
    const std::uint32_t at = number & kMask;
    SetMark(chunk, at, Mark::Dirty);
    SetMark(chunk, at, Mark::Touched);
    std::memcpy(Place(chunk, at), bytes, m_width);
}

void RecordChunks::Erase(std::uint32_t number) {
    Chunk* chunk = FindChunk(number >> kShift);
    const std::uint32_t at = number & kMask;
    if (chunk == nullptr || !Chunk::Test(chunk->present, at)) {
        return;
    }
    if (chunk->capacity != kPerChunk) {
        const std::uint32_t slot = chunk->Rank(at);
        std::byte* bytes = chunk->bytes.get() + slot * m_width;
        std::memmove(bytes, bytes + m_width, (chunk->count - slot - 1U) * m_width);
    }
    chunk->present[at / 64] &= ~(std::uint64_t{1} << (at % 64));
    --chunk->count;
    --m_count;
    // The chunk itself stays for its marks, but without memory for records.
    if (chunk->count == 0) {
        chunk->bytes.reset();
        chunk->capacity = 0;
    }
}

void RecordChunks::Clear() {
    m_chunks.clear();
    m_count = 0;
    for (MarkList& list : m_marks) {
        list = {};
    }
}

std::uint32_t RecordChunks::Next(std::uint32_t number) const {
    const std::uint64_t from = std::uint64_t{number} + 1;
    const auto first = static_cast<std::uint32_t>(from >> kShift);
    auto at = static_cast<std::uint32_t>(from & kMask);
    std::size_t place =
        first < m_chunks.size() && m_chunks[first]->index == first ? first : LowerBound(first);
    if (from >> kShift > UINT32_MAX >> kShift) {
        return 0;
    }
    for (; place < m_chunks.size(); ++place) {
        const Chunk& chunk = *m_chunks[place];
        if (chunk.index != first) {
            at = 0;
        }
        std::uint64_t rest = chunk.present[at / 64] & (~std::uint64_t{0} << (at % 64));
        for (std::uint32_t word = at / 64;;) {
            if (rest != 0) {
                return (chunk.index << kShift) |
                       (word * 64 + static_cast<std::uint32_t>(std::countr_zero(rest)));
            }
            if (++word == chunk.present.size()) {
                break;
            }
            rest = chunk.present[word];
        }
    }
    return 0;
}

std::uint32_t RecordChunks::Prev(std::uint64_t number) const {
    if (number == 0) {
        return 0;
    }
    const std::uint64_t from = number - 1;
    const auto first = static_cast<std::uint32_t>(from >> kShift);
    std::size_t place = LowerBound(first);
    if (place == m_chunks.size() || m_chunks[place]->index != first) {
        if (place == 0) {
            return 0;
        }
        --place;
    }
    for (;; --place) {
        const Chunk& chunk = *m_chunks[place];
        const auto at = chunk.index == first ? static_cast<std::uint32_t>(from & kMask) : kMask;
        std::uint64_t rest = chunk.present[at / 64] & (~std::uint64_t{0} >> (63 - at % 64));
        for (std::uint32_t word = at / 64;; rest = chunk.present[--word]) {
            if (rest != 0) {
                return (chunk.index << kShift) |
                       (word * 64 + 63 - static_cast<std::uint32_t>(std::countl_zero(rest)));
            }
            if (word == 0) {
                break;
            }
        }
        if (place == 0) {
            return 0;
        }
    }
}

void RecordChunks::SetNewMark(Chunk& chunk, std::uint32_t at, Mark mark) {
    Bits& bits = chunk.marks[static_cast<std::size_t>(mark)];
    MarkList& list = List(mark);
    if (bits == Bits{}) {
        list.chunks.push_back(chunk.index);
    }
    bits[at / 64] |= std::uint64_t{1} << (at % 64);
    ++list.count;
}

void RecordChunks::ClearMarks(Mark mark) {
    MarkList& list = List(mark);
    for (const std::uint32_t index : list.chunks) {
        FindChunk(index)->marks[static_cast<std::size_t>(mark)] = {};
    }
    list.chunks.clear();
    list.count = 0;
}

}  // namespace cqsurvey
