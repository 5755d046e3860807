#include "plan/symbols/Symbol.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "cqsurvey/SymbolNames.h"

namespace cqsurvey::plan {

namespace {

struct Kind {
    const char* meaning;
    double size;
};

constexpr std::array<Kind, kSymbols> kKinds{{{"Point", 0.0},
                                             {"Control point", 3.2},
                                             {"Benchmark", 2.8},
                                             {"Deciduous tree", 4.0},
                                             {"Conifer", 4.0},
                                             {"Manhole", 2.6},
                                             {"Drain", 2.2},
                                             {"Hydrant", 2.6},
                                             {"Valve", 2.6},
                                             {"Pole", 1.6},
                                             {"Light", 2.8},
                                             {"Sign", 3.0},
                                             {"Gate", 3.2},
                                             {"Bush", 2.6},
                                             {"Borehole", 2.8},
                                             {"Spot height", 0.6}}};

static_assert(kSymbolNames.size() + 1 == kSymbols);

}  // namespace

Symbol FindSymbol(std::u16string_view name) {
    const auto* const found = std::find(kSymbolNames.begin(), kSymbolNames.end(), name);
    return found == kSymbolNames.end()
               ? Symbol::None
               : static_cast<Symbol>(std::distance(kSymbolNames.begin(), found) + 1);
}

std::string GetMeaning(Symbol symbol) {
    return kKinds.at(static_cast<std::size_t>(symbol)).meaning;
}

double GetUsualSize(Symbol symbol) {
    return kKinds.at(static_cast<std::size_t>(symbol)).size;
}

}  // namespace cqsurvey::plan
