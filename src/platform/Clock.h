#pragma once

#include <cstdint>

namespace cqsurvey {

/// The host's time in seconds since 1970-01-01 00:00 UTC, as long as 32 bits hold it (until 2106).
std::uint32_t SecondsSince1970();

}  // namespace cqsurvey
