#include "cqsurvey/exchange/LengthUnit.h"

#include <algorithm>
#include <array>

namespace cqsurvey::exchange {

namespace {

struct Row {
    LengthUnit unit;
    double metres;
    const char* word;
    std::string_view option;
};

constexpr std::array<Row, 7> kRows{
    {{LengthUnit::Metre, 1.0, "metre", "m"},
     {LengthUnit::Millimetre, 0.001, "millimetre", "mm"},
     {LengthUnit::Centimetre, 0.01, "centimetre", "cm"},
     {LengthUnit::Kilometre, 1000.0, "kilometre", "km"},
     {LengthUnit::Foot, 0.3048, "foot", "ft"},
     {LengthUnit::UsSurveyFoot, 1200.0 / 3937.0, "US survey foot", "us-ft"},
     {LengthUnit::Inch, 0.0254, "inch", "in"}}};

const Row& RowOf(LengthUnit unit) {
    return *std::find_if(kRows.begin(), kRows.end() - 1,
                         [unit](const Row& row) { return row.unit == unit; });
}

}  // namespace

double MetresOf(LengthUnit unit) {
    return RowOf(unit).metres;
}

const char* UnitWord(LengthUnit unit) {
    return RowOf(unit).word;
}

std::optional<LengthUnit> UnitOfWord(std::string_view word) {
    for (const Row& row : kRows) {
        if (row.option == word) {
            return row.unit;
        }
    }
    return std::nullopt;
}

std::optional<LengthUnit> UnitOfNumber(int number) {
    for (const Row& row : kRows) {
        if (static_cast<int>(row.unit) == number) {
            return row.unit;
        }
    }
    return std::nullopt;
}

}  // namespace cqsurvey::exchange
