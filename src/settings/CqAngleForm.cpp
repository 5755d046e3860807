#include "cqsurvey/CqAngleForm.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace cqsurvey {

namespace {

// In the order of CqAngleForm.
constexpr std::array kWords = {"dms", "deg", "gon"};

}  // namespace

const char* GetAngleWord(CqAngleForm form) {
    return kWords.at(static_cast<std::size_t>(form));
}

std::optional<CqAngleForm> FindAngleForm(std::string_view word) {
    const auto same = [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + 32) : a) == b;
    };
    for (const CqAngleForm form :
         {CqAngleForm::DegreesMinutesSeconds, CqAngleForm::Degrees, CqAngleForm::Gon}) {
        const std::string_view known = GetAngleWord(form);
        if (std::equal(word.begin(), word.end(), known.begin(), known.end(), same)) {
            return form;
        }
    }
    return std::nullopt;
}

}  // namespace cqsurvey
