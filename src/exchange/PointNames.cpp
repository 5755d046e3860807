#include "exchange/PointNames.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "cqsurvey/Text.h"

namespace cqsurvey::exchange {

CString CutName(const CString& name, std::size_t length) {
    const std::u16string_view kept = std::u16string_view(name).substr(0, name.find(u'\0'));
    return CString(kept.substr(0, WholeUtf16Prefix(kept, length)));
}

PointNames::PointNames(std::function<bool(const CString&)> taken) : m_taken(std::move(taken)) {}

CString PointNames::MakeUnique(const CString& name) {
    // Long names with the same beginning yield the same numbered names, so they share a count.
    constexpr std::size_t kAlike = 14;
    std::uint64_t& next = m_next.try_emplace(CutName(name, kAlike), 2).first->second;
    for (;; ++next) {
        const CString number = FromUtf8(fmt::format("_{}", next));
        CString unique = CutName(name, limits::kPointName - number.size()) + number;
        if (!m_taken(unique)) {
            ++next;
            return unique;
        }
    }
}

}  // namespace cqsurvey::exchange
