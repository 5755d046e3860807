#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cqsurvey::exchange {

/// The time as "2026-11-22T08:15:00Z", from seconds since 1970-01-01 00:00 UTC.
[[nodiscard]] std::string FormatTime(std::uint32_t seconds);

/// Reads such a time, from 1970 to 2106-02-07T06:28:15Z. Returns nothing for any other text: a time
/// without its Z could be of any time zone.
[[nodiscard]] std::optional<std::uint32_t> ParseTime(std::string_view text);

}  // namespace cqsurvey::exchange
