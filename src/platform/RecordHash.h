#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cqsurvey {

/// Random numbers that are drawn once for each process. Without them a file could be made whose
/// record numbers or names all have the same place in a hash table, which would make it very slow.
struct HashSeed {
    HashSeed();

    std::uint64_t factor;
    std::uint64_t summand;
};
extern const HashSeed kHashSeed;

/// The hash of a record number. Any two numbers collide about as rarely as chance allows, whichever
/// they are: multiply-shift hashing (Dietzfelbinger, 1996).
[[nodiscard]] inline std::uint32_t HashHandle(std::uint32_t handle) noexcept {
    return static_cast<std::uint32_t>((kHashSeed.factor * handle + kHashSeed.summand) >> 32);
}

/// The hash of a name.
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
