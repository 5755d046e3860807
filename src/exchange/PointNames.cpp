#include "exchange/PointNames.h"

#include <fmt/format.h>

#include <utility>

#include "cqsurvey/Text.h"

namespace cqsurvey::exchange {

CString CutName(const CString& name, std::size_t length) {
    if (name.size() <= length) {
        return name;
    }
    const bool halves = length > 0 && name[length - 1] >= 0xD800 && name[length - 1] < 0xDC00;
    return name.substr(0, halves ? length - 1 : length);
}

PointNames::PointNames(std::function<bool(const CString&)> taken) : m_taken(std::move(taken)) {}

CString PointNames::MakeUnique(const CString& name) {
    // Long names that begin alike meet in the same numbered names, so they count together.
    constexpr std::size_t kAlike = 14;
    std::uint64_t& next = m_next.try_emplace(CutName(name, kAlike), 2).first->second;
    for (;; ++next) {
        const CString number = FromUtf8(fmt::format("_{}", next));
        CString unique = CutName(name, kLongestName - number.size()) + number;
        if (!m_taken(unique)) {
            ++next;
            return unique;
        }
    }
}

}  // namespace cqsurvey::exchange
