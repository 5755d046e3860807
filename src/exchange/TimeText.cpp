#include "exchange/TimeText.h"

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <limits>

#include "text/NumberText.h"

namespace cqsurvey::exchange {

using namespace std::chrono;

std::string FormatTime(std::uint32_t seconds) {
    const sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = floor<days>(time);
    const year_month_day date{day};
    const hh_mm_ss clock{time - day};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

std::optional<std::uint32_t> ParseTime(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00Z";
    text = Trim(text);
    if (text.size() != kForm.size()) {
        return std::nullopt;
    }
    std::array<int, 6> parts{};
    std::size_t part = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] != '0') {
            if (text[i] != kForm[i]) {
                return std::nullopt;
            }
            ++part;
        } else if (digit) {
            parts.at(part) = parts.at(part) * 10 + (text[i] - '0');
        } else {
            return std::nullopt;
        }
    }
    const year_month_day date{year(parts[0]), month(static_cast<unsigned>(parts[1])),
                              day(static_cast<unsigned>(parts[2]))};
    if (!date.ok() || parts[3] > 23 || parts[4] > 59 || parts[5] > 59) {
        return std::nullopt;
    }
    const auto count = (sys_days(date) + hours(parts[3]) + minutes(parts[4]) + seconds(parts[5]))
                           .time_since_epoch()
                           .count();
    if (count < 0 || count > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(count);
}

}  // namespace cqsurvey::exchange
