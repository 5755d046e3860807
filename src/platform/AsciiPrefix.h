#pragma once

#include <algorithm>
#include <type_traits>

namespace cqsurvey {

/// Removes the ASCII characters at the beginning of `text` and returns them. They are the same in
/// every code page that keeps ASCII, and most texts consist of nothing else, so this saves the
/// conversion. The result has room reserved for the rest.
template <class Out, class In>
[[nodiscard]] Out TakeAsciiPrefix(In& text) {
    const auto end = std::find_if(text.begin(), text.end(), [](auto unit) {
        return static_cast<std::make_unsigned_t<decltype(unit)>>(unit) >= 0x80;
    });
    Out out;
    out.reserve(text.size());
    for (auto unit = text.begin(); unit != end; ++unit) {
        out += static_cast<typename Out::value_type>(*unit);
    }
    text.remove_prefix(out.size());
    return out;
}

}  // namespace cqsurvey
