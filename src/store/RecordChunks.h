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

/// The records of one table in memory: packed bytes of one width, addressed by record number, and
/// two marks for each number, which the owner (RecordTable) uses as it likes.
///
/// The numbers are divided into chunks of 256. A chunk exists where a record or a mark does, and it
/// says with one bit for each number which are there:
///
///     number       chunk index (24 bits) | place in the chunk (8 bits)
///     dense        place 0 1 2 3 4 ...     a slot for each of the 256 numbers
///     sparse       record 3, 77, 200       only the records, packed in ascending order
///
/// A chunk becomes dense with its 65th record and stays so until it is empty. Up to then it is
/// sparse, so that in a file whose numbers lie far apart each record takes the memory of a few
/// records and not of 256.
///
/// In a table without large gaps chunk i is the i-th of the list and is found at once, otherwise by
/// binary search. Inserting into a sparse chunk or erasing from it moves the records after the
/// place, at most 64. Next and Prev skip empty numbers by whole words of bits.
class RecordChunks {
 public:
    /// What RecordTable uses the two marks for. They are apart because a long step hands records to
    /// the database before it ends, but must remember them until then for an undo.
    enum class Mark : std::uint8_t {
        Dirty,    ///< changed since it was last handed to the database
        Touched,  ///< changed since the step began
    };

    explicit RecordChunks(std::size_t width) : m_width(width) {}

    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    /// The record's bytes, null when there is no such record. They stay where they are until a
    /// record of the same chunk is inserted or erased.
    [[nodiscard]] const std::byte* Find(std::uint32_t number) const {
        const Chunk* chunk = FindChunk(number >> kShift);
        return chunk == nullptr ? nullptr : chunk->Find(number & kMask, m_width);
    }

    /// Inserts or replaces a record and sets both marks. They are set first, since that may need
    /// memory: a changed record without its marks would be lost.
    void PutMarked(std::uint32_t number, const std::byte* bytes);

    /// Inserts a record, unless it exists, and returns its bytes for the caller to fill. The bytes
    /// of a new record are undefined.
    [[nodiscard]] std::byte* Place(std::uint32_t number) {
        return Place(GetChunk(number >> kShift), number & kMask);
    }

    /// Removes a record, but not its marks. Does nothing when there is no such record.
    void Erase(std::uint32_t number);

    /// Removes all records and marks.
    void Clear();

    /// The lowest record number above `number`, 0 when there is none.
    [[nodiscard]] std::uint32_t Next(std::uint32_t number) const;

    /// The highest record number below `number`, 0 when there is none.
    [[nodiscard]] std::uint32_t Prev(std::uint64_t number) const;

    /// Marks a number, whether it has a record or not: a deleted record is marked, too.
    void SetMark(std::uint32_t number, Mark mark) {
        SetMark(GetChunk(number >> kShift), number & kMask, mark);
    }

    [[nodiscard]] std::size_t GetMarked(Mark mark) const { return List(mark).count; }

    /// Calls `visit` for each marked number in ascending order, with the record's bytes or null,
    /// and then clears the marks. `visit` may change records but must not set marks.
    template <class Visit>
    void TakeMarked(Mark mark, Visit&& visit) {
        VisitMarked(mark, std::forward<Visit>(visit));
        ClearMarks(mark);
    }

    /// The same, but the marks stay.
    template <class Visit>
    void VisitMarked(Mark mark, Visit&& visit);

    void ClearMarks(Mark mark);

 private:
    static constexpr std::uint32_t kShift = 8;
    static constexpr std::uint32_t kPerChunk = 1U << kShift;
    static constexpr std::uint32_t kMask = kPerChunk - 1;
    /// The most records of a sparse chunk.
    static constexpr std::uint32_t kDense = kPerChunk / 4;

    using Bits = std::array<std::uint64_t, kPerChunk / 64>;

    struct Chunk {
        std::uint32_t index = 0;
        std::uint16_t count = 0;
        std::uint16_t capacity = 0;  ///< in records; kPerChunk: dense
        Bits present{};
        std::array<Bits, 2> marks{};
        std::unique_ptr<std::byte[]> bytes;

        [[nodiscard]] static bool Test(const Bits& bits, std::uint32_t at) {
            return ((bits[at / 64] >> (at % 64)) & 1U) != 0;
        }
        /// How many records the chunk has below this place.
        [[nodiscard]] std::uint32_t Rank(std::uint32_t at) const;
        [[nodiscard]] std::uint32_t Slot(std::uint32_t at) const {
            return capacity == kPerChunk ? at : Rank(at);
        }
        [[nodiscard]] std::byte* Find(std::uint32_t at, std::size_t width) const {
            return Test(present, at) ? bytes.get() + Slot(at) * width : nullptr;
        }
    };

    /// Keeps the visits to marked records in proportion to their number, not to the table's size.
    struct MarkList {
        std::vector<std::uint32_t> chunks;  ///< indexes of the chunks with marks
        std::size_t count = 0;
    };

    /// Null when there is no such chunk. The first look is enough in a table without large gaps.
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
