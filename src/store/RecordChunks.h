#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace cqsurvey {

/// The records of one table in memory: packed bytes of one width, addressed by record number, with
/// two marks a record for its owner. Numbers run from 1; gaps cost no memory beyond a constant
/// share of the records around them, whatever the numbers are.
class RecordChunks {
 public:
    enum class Mark : std::uint8_t {
        Dirty,    ///< differs from what was handed to the database
        Touched,  ///< differs from what the last step left
    };

    explicit RecordChunks(std::size_t width) : m_width(width) {}

    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    /// The record's bytes, null when there is none. They stay where they are until a record of the
    /// same 256 numbers is inserted or erased.
    [[nodiscard]] const std::byte* Find(std::uint32_t number) const {
        const Chunk* chunk = FindChunk(number >> kShift);
        return chunk == nullptr ? nullptr : chunk->Find(number & kMask, m_width);
    }

    /// Writes a record, new or not.
    void Put(std::uint32_t number, const std::byte* bytes);

    /// The same, and both marks before it: a record is never there unmarked.
    void PutMarked(std::uint32_t number, const std::byte* bytes);

    /// Makes room for a record and gives its bytes to be filled; what a new one holds is undefined.
    [[nodiscard]] std::byte* Place(std::uint32_t number) {
        return Place(GetChunk(number >> kShift), number & kMask);
    }

    /// Removes a record; nothing happens when there is none.
    void Erase(std::uint32_t number);

    /// Forgets everything.
    void Clear();

    /// The lowest number above `number`, 0 when there is none.
    [[nodiscard]] std::uint32_t Next(std::uint32_t number) const;

    /// The highest number below `number`, 0 when there is none.
    [[nodiscard]] std::uint32_t Prev(std::uint64_t number) const;

    /// Marks a number, whether it has a record or not.
    void SetMark(std::uint32_t number, Mark mark) {
        SetMark(GetChunk(number >> kShift), number & kMask, mark);
    }

    [[nodiscard]] std::size_t GetMarked(Mark mark) const { return List(mark).count; }

    /// The marked numbers in ascending order, each with its record or null, and then no mark is
    /// left. `visit` may change records but must not mark any.
    template <class Visit>
    void TakeMarked(Mark mark, Visit&& visit) {
        VisitMarked(mark, std::forward<Visit>(visit));
        ClearMarks(mark);
    }

    /// The same, and the marks stay.
    template <class Visit>
    void VisitMarked(Mark mark, Visit&& visit);

    void ClearMarks(Mark mark);

 private:
    static constexpr std::uint32_t kShift = 8;
    static constexpr std::uint32_t kPerChunk = 1U << kShift;
    static constexpr std::uint32_t kMask = kPerChunk - 1;
    /// From this many records on a chunk has a place for every number of its range.
    static constexpr std::uint32_t kDense = kPerChunk / 4;

    using Bits = std::array<std::uint64_t, kPerChunk / 64>;

    struct Chunk {
        std::uint32_t index = 0;
        std::uint16_t count = 0;
        std::uint16_t capacity = 0;  ///< kPerChunk: places go by number; less: by rank
        Bits present{};
        std::array<Bits, 2> marks{};
        std::unique_ptr<std::byte[]> bytes;

        [[nodiscard]] static bool Test(const Bits& bits, std::uint32_t at) {
            return ((bits[at / 64] >> (at % 64)) & 1U) != 0;
        }
        [[nodiscard]] std::uint32_t Rank(std::uint32_t at) const;
        [[nodiscard]] std::uint32_t Slot(std::uint32_t at) const {
            return capacity == kPerChunk ? at : Rank(at);
        }
        [[nodiscard]] std::byte* Find(std::uint32_t at, std::size_t width) const {
            return Test(present, at) ? bytes.get() + Slot(at) * width : nullptr;
        }
    };

    struct MarkList {
        std::vector<std::uint32_t> chunks;  ///< indexes of the chunks with marks
        std::size_t count = 0;
    };

    [[nodiscard]] Chunk* FindChunk(std::uint32_t index) const {
        if (index < m_chunks.size() && m_chunks[index]->index == index) {
            return m_chunks[index].get();
        }
        return FindSparse(index);
    }
    [[nodiscard]] Chunk* FindSparse(std::uint32_t index) const;
    [[nodiscard]] std::size_t LowerBound(std::uint32_t index) const;
    [[nodiscard]] Chunk& GetChunk(std::uint32_t index) {
        Chunk* chunk = FindChunk(index);
        return chunk != nullptr ? *chunk : AddChunk(index);
    }
    [[nodiscard]] Chunk& AddChunk(std::uint32_t index);
    [[nodiscard]] std::byte* Place(Chunk& chunk, std::uint32_t at) {
        std::byte* bytes = chunk.Find(at, m_width);
        return bytes != nullptr ? bytes : PlaceNew(chunk, at);
    }
    [[nodiscard]] std::byte* PlaceNew(Chunk& chunk, std::uint32_t at);
    void SetMark(Chunk& chunk, std::uint32_t at, Mark mark) {
        if (!Chunk::Test(chunk.marks[static_cast<std::size_t>(mark)], at)) {
            SetNewMark(chunk, at, mark);
        }
    }
    void SetNewMark(Chunk& chunk, std::uint32_t at, Mark mark);
    void Grow(Chunk& chunk);

    [[nodiscard]] MarkList& List(Mark mark) { return m_marks[static_cast<std::size_t>(mark)]; }
    [[nodiscard]] const MarkList& List(Mark mark) const {
        return m_marks[static_cast<std::size_t>(mark)];
    }

    std::size_t m_width;
    std::size_t m_count = 0;
    std::vector<std::unique_ptr<Chunk>> m_chunks;  ///< in ascending order of their index
    std::array<MarkList, 2> m_marks;
};

template <class Visit>
void RecordChunks::VisitMarked(Mark mark, Visit&& visit) {
    MarkList& list = List(mark);
    std::sort(list.chunks.begin(), list.chunks.end());
    for (const std::uint32_t index : list.chunks) {
        const Bits bits = FindChunk(index)->marks[static_cast<std::size_t>(mark)];
        for (std::uint32_t word = 0; word < bits.size(); ++word) {
            for (std::uint64_t rest = bits[word]; rest != 0; rest &= rest - 1) {
                const auto at = word * 64 + static_cast<std::uint32_t>(std::countr_zero(rest));
                const std::uint32_t number = (index << kShift) | at;
                visit(number, Find(number));
            }
        }
    }
}

}  // namespace cqsurvey
