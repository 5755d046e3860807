#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace cqsurvey::plan {

/// What stands at a point of the plan. The symbols are those of a code table (SymbolNames.h), in
/// the same order; None is the plain cross.
enum class Symbol : std::uint8_t {
    None,
    Control,
    Benchmark,
    Deciduous,
    Conifer,
    Manhole,
    Drain,
    Hydrant,
    Valve,
    Pole,
    Light,
    Sign,
    Gate,
    Bush,
    Borehole,
    Spot
};

inline constexpr std::size_t kSymbols = 16;

/// The symbol of a name in a code table; None for any other text.
[[nodiscard]] Symbol FindSymbol(std::u16string_view name);

/// What the legend calls the symbol: "Deciduous tree".
[[nodiscard]] std::string GetMeaning(Symbol symbol);

/// Its usual size on paper, in millimetres; 0 for None.
[[nodiscard]] double GetUsualSize(Symbol symbol);

}  // namespace cqsurvey::plan
