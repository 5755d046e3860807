#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace cqsurvey {

/// The symbols that a row of a code table (CqCode) may name, and that the plan can paint at a
/// point.
inline constexpr std::array<std::u16string_view, 15> kSymbolNames{
    u"control", u"benchmark", u"deciduous", u"conifer",  u"manhole",
    u"drain",   u"hydrant",   u"valve",     u"pole",     u"light",
    u"sign",    u"gate",      u"bush",      u"borehole", u"spot"};

/// True for one of kSymbolNames, in its letter case.
[[nodiscard]] constexpr bool IsSymbolName(std::u16string_view name) noexcept {
    return std::find(kSymbolNames.begin(), kSymbolNames.end(), name) != kSymbolNames.end();
}

}  // namespace cqsurvey
