#include "exchange/dxf/write/NameTable.h"

#include <fmt/format.h>

#include "cqsurvey/Text.h"
#include "exchange/drawing/Names.h"

namespace cqsurvey::exchange::dxf {

const CString& NameTable::Find(const CString& name, bool& changed) {
    const auto [place, added] = m_names.try_emplace(name);
    CString& safe = place->second;
    if (added) {
        constexpr std::u16string_view kForbidden = u"<>/\\\":;?*|=`^,";
        safe = name;
        for (char16_t& c : safe) {
            if (c < u' ' || c == 0x7F || kForbidden.find(c) != std::u16string_view::npos) {
                c = u'_';
            }
        }
        if (safe.empty()) {
            safe = u"_";
        }
        const CString whole = safe;
        const auto [first, free] = m_taken.try_emplace(Upper(ToUtf8(safe)), 2);
        // Each search goes on where the one before it ended: thousands of names may be alike.
        for (bool found = free; !found; ++first->second) {
            safe = whole + FromUtf8(fmt::format("_{}", first->second));
            found = m_taken.try_emplace(Upper(ToUtf8(safe)), 2).second;
        }
    }
    changed = safe != name;
    return safe;
}

}  // namespace cqsurvey::exchange::dxf
