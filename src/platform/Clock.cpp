#include "platform/Clock.h"

#include <chrono>

namespace cqsurvey {

std::uint32_t SecondsSince1970() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

}  // namespace cqsurvey
