#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cqsurvey {

/// Drawn anew for each process, so that no file can be made whose numbers or names all fall into
/// the same place of a hash table.
struct HashSeed {
    HashSeed();

    std::uint64_t factor;
    std::uint64_t summand;
};
extern const HashSeed kHashSeed;

/// Spreads record numbers over the range of a hash. Two numbers meet as rarely as chance has it,
/// whichever they are: multiply-shift hashing (Dietzfelbinger, 1996).
[[nodiscard]] inline std::uint32_t HashHandle(std::uint32_t handle) noexcept {
    return static_cast<std::uint32_t>((kHashSeed.factor * handle + kHashSeed.summand) >> 32);
}

/// The same for names.
[[nodiscard]] std::uint32_t HashName(std::u16string_view name) noexcept;

/// HashHandle for the standard containers, for any 32-bit number.
struct HandleHash {
    [[nodiscard]] std::size_t operator()(std::uint32_t handle) const noexcept {
        return HashHandle(handle);
    }
    [[nodiscard]] std::size_t operator()(std::int32_t number) const noexcept {
        return HashHandle(static_cast<std::uint32_t>(number));
    }
};

}  // namespace cqsurvey
