#include "exchange/codes/LabelText.h"

#include <cqsurvey/Limits.h>
#include <cqsurvey/Text.h>

#include <algorithm>
#include <array>
#include <utility>

#include "text/NumberText.h"

namespace cqsurvey::exchange {

CString FillLabel(const CString& label, const LabelValues& values) {
    constexpr int kDecimals = 2;
    const std::string height = FormatNumber(values.height, kDecimals);
    const std::array<std::pair<std::string_view, std::string_view>, 4> names{
        {{"{name}", values.name},
         {"{code}", values.code},
         {"{height}", height},
         {"{text}", values.text}}};
    const std::string pattern = ToUtf8(label);
    std::string filled;
    for (std::size_t next = 0; next < pattern.size();) {
        const std::string_view rest = std::string_view(pattern).substr(next);
        const auto* const name = std::find_if(names.begin(), names.end(), [&](const auto& entry) {
            return rest.starts_with(entry.first);
        });
        filled += name == names.end() ? rest.substr(0, 1) : name->second;
        next += name == names.end() ? 1 : name->first.size();
    }
    CString wide = FromUtf8(Trim(filled));
    wide.resize(WholeUtf16Prefix(wide, limits::kReadableText));
    return wide;
}

}  // namespace cqsurvey::exchange
