#include "exchange/PointNames.h"

#include <fmt/format.h>

#include <utility>

#include "cqsurvey/Text.h"

namespace cqsurvey::exchange {

CString CutName(const CString& name, std::size_t length) {
    return name.substr(0, WholeUtf16Prefix(name, length));
}

PointNames::PointNames(std::function<bool(const CString&)> taken) : m_taken(std::move(taken)) {}

CString PointNames::MakeUnique(const CString& name) {
    // Long names with the same beginning yield the same numbered names, so they share a count.
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
