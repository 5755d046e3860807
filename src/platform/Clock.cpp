#include "platform/Clock.h"

#include <ctime>

namespace cqsurvey {

std::uint32_t SecondsSince1970() {
    return static_cast<std::uint32_t>(std::time(nullptr));
}

}  // namespace cqsurvey
