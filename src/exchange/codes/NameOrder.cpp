#include "exchange/codes/NameOrder.h"

#include <algorithm>
#include <cstddef>

namespace cqsurvey::exchange {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes the digits off the front of `text` and returns them without leading zeros.
std::string_view TakeNumber(std::string_view& text) {
    const auto* const end = std::find_if_not(text.begin(), text.end(), IsDigit);
    std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

}  // namespace

bool ComesBefore(std::string_view a, std::string_view b) {
    const std::string_view wholeA = a;
    const std::string_view wholeB = b;
    while (!a.empty() && !b.empty()) {
        if (IsDigit(a.front()) && IsDigit(b.front())) {
            const std::string_view x = TakeNumber(a);
            const std::string_view y = TakeNumber(b);
            if (x.size() != y.size()) {
                return x.size() < y.size();
            }
            if (x != y) {
                return x < y;
            }
            continue;
        }
        if (a.front() != b.front()) {
            return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front());
        }
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    if (a.empty() != b.empty()) {
        return a.empty();
    }
    // Only leading zeros can differ.
    return wholeA < wholeB;
}

}  // namespace cqsurvey::exchange
