#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"
#include "platform/ProbeTable.h"
#include "platform/RecordHash.h"

namespace cqsurvey {

/// A set of record numbers. They mostly lie close together, so it keeps a bit each in words of 64
/// neighbours; a number far from all others takes about 20 bytes.
class HandleSet {
 public:
    [[nodiscard]] bool Contains(CqHandle handle) const noexcept {
        const std::size_t place = Find(handle);
        return place != Table::kNone && (m_words[place].bits & Bit(handle)) != 0;
    }

    /// Whether the handle was not in the set before. 0 is never entered.
    bool Insert(CqHandle handle) {
        if (handle == 0) {
            return false;
        }
        const std::size_t place = Find(handle);
        if (place == Table::kNone) {
            m_words.Insert(Word{handle / kWordSize, Bit(handle)});
            return true;
        }
        const bool isNew = (m_words[place].bits & Bit(handle)) == 0;
        m_words[place].bits |= Bit(handle);
        return isNew;
    }

    /// Whether the handle was in the set.
    bool Erase(CqHandle handle) noexcept {
        const std::size_t place = Find(handle);
        if (place == Table::kNone || (m_words[place].bits & Bit(handle)) == 0) {
            return false;
        }
        m_words[place].bits ^= Bit(handle);
        if (m_words[place].IsFree()) {
            m_words.EraseAt(place);
        }
        return true;
    }

 private:
    static constexpr std::uint32_t kWordSize = 64;

    struct Word {
        std::uint32_t number = 0;
        std::uint64_t bits = 0;

        [[nodiscard]] bool IsFree() const noexcept { return bits == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(number); }
    };
    using Table = ProbeTable<Word>;

    static std::uint64_t Bit(CqHandle handle) noexcept {
        return std::uint64_t{1} << handle % kWordSize;
    }

    [[nodiscard]] std::size_t Find(CqHandle handle) const noexcept {
        const std::uint32_t number = handle / kWordSize;
        return m_words.Find(HashHandle(number),
                            [number](const Word& word) { return word.number == number; });
    }

    Table m_words;
};

}  // namespace cqsurvey
