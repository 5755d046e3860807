#include "cqsurvey/CqLengthUnit.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace cqsurvey {

namespace {

struct Unit {
    double metres;
    const char* word;
    const char* name;
};

// In the order of CqLengthUnit.
constexpr std::array kUnits = {
    Unit{1.0, "m", "metre"},
    Unit{0.3048, "ft", "international foot"},
    Unit{1200.0 / 3937.0, "us-ft", "US survey foot"},
};

const Unit& Find(CqLengthUnit unit) {
    return kUnits.at(static_cast<std::size_t>(unit));
}

}  // namespace

double GetMetres(CqLengthUnit unit) {
    return Find(unit).metres;
}

const char* GetUnitWord(CqLengthUnit unit) {
    return Find(unit).word;
}

const char* GetUnitName(CqLengthUnit unit) {
    return Find(unit).name;
}

std::optional<CqLengthUnit> FindLengthUnit(std::string_view word) {
    const auto same = [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + 32) : a) == b;
    };
    for (const CqLengthUnit unit :
         {CqLengthUnit::Metre, CqLengthUnit::InternationalFoot, CqLengthUnit::UsSurveyFoot}) {
        const std::string_view known = GetUnitWord(unit);
        if (std::equal(word.begin(), word.end(), known.begin(), known.end(), same)) {
            return unit;
        }
    }
    return std::nullopt;
}

}  // namespace cqsurvey
