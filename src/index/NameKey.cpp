#include "index/NameKey.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace cqsurvey {
namespace {

bool IsDigit(char16_t unit) noexcept {
    return unit >= u'0' && unit <= u'9';
}

}  // namespace

NameKey MakeNameKey(std::u16string_view name) noexcept {
    std::size_t digits = name.size();
    while (digits > 0 && IsDigit(name[digits - 1])) {
        --digits;
    }
    NameKey key{name.substr(0, digits)};
    if (digits < name.size()) {
        constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
        std::int64_t number = 0;
        for (const char16_t digit : name.substr(digits)) {
            number = std::min(number * 10 + (digit - u'0'), kHighest);
        }
        key.number = static_cast<std::int32_t>(number);
    }
    return key;
}

int CompareNameKeys(const NameKey& a, const NameKey& b) noexcept {
    const int prefixes = a.prefix.compare(b.prefix);
    if (prefixes != 0) {
        return prefixes > 0 ? 1 : -1;
    }
    return (a.number > b.number ? 1 : 0) - (a.number < b.number ? 1 : 0);
}

}  // namespace cqsurvey
