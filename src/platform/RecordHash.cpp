#include "platform/RecordHash.h"

#include <random>

namespace cqsurvey {

namespace {

std::uint64_t DrawWord() {
    std::random_device device;
    const std::uint64_t upper = device();
    return (upper << 32) | device();
}

}  // namespace

HashSeed::HashSeed() : factor(DrawWord() | 1U), summand(DrawWord()) {}

const HashSeed kHashSeed;

std::uint32_t HashName(std::u16string_view name) noexcept {
    // Multiplying by an odd constant moves differences to the upper bits, and the shift brings them
    // down for the next unit. The seed is there from the start, so it mixes with every unit.
    std::uint64_t hash = kHashSeed.summand ^ name.size();
    for (const char16_t unit : name) {
        hash = (hash ^ unit) * 0xD6E8FEB86659FD93U;
        hash ^= hash >> 32;
    }
    hash *= 0xD6E8FEB86659FD93U;
    return static_cast<std::uint32_t>(hash >> 32);
}

}  // namespace cqsurvey
