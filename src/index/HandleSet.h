#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "cqsurvey/Types.h"
#include "platform/RecordHash.h"

namespace cqsurvey {

/// A set of record numbers. They mostly lie close together, so 64 neighbours share a word with a
/// bit for each, and only the words are hashed:
///
///     number 130 = 2 * 64 + 2
///     words { 0: 1111...  2: 0010... }
///                              ^ 130 is in the set
///
/// A million numbers that follow each other take 0.8 bytes each, one far from all others about 40;
/// a std::unordered_set takes 40 for each and an allocation. A word stays when its last number
/// goes, so that taking a removal back takes no memory.
class HandleSet {
 public:
    [[nodiscard]] bool Contains(CqHandle handle) const noexcept {
        const auto word = m_words.find(handle / kWordSize);
        return word != m_words.end() && (word->second & Bit(handle)) != 0;
    }

    /// Whether the handle was not in the set before. 0 is never entered.
    bool Insert(CqHandle handle) {
        if (handle == 0) {
            return false;
        }
        std::uint64_t& bits = m_words[handle / kWordSize];
        const bool isNew = (bits & Bit(handle)) == 0;
        bits |= Bit(handle);
        return isNew;
    }

    /// Whether the handle was in the set.
    bool Erase(CqHandle handle) noexcept {
        if (!Contains(handle)) {
            return false;
        }
        m_words.find(handle / kWordSize)->second &= ~Bit(handle);
        return true;
    }

 private:
    static constexpr std::uint32_t kWordSize = 64;

    static std::uint64_t Bit(CqHandle handle) noexcept {
        return std::uint64_t{1} << handle % kWordSize;
    }

    std::unordered_map<std::uint32_t, std::uint64_t, HandleHash> m_words;
};

}  // namespace cqsurvey
