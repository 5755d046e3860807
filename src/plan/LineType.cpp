#include "plan/LineType.h"

#include <array>

namespace cqsurvey::plan {

std::span<const double> LinePattern(int line) {
    static constexpr std::array kDashed{3.0, 1.5};
    static constexpr std::array kDotted{0.3, 1.0};
    static constexpr std::array kDashDot{4.0, 1.0, 0.3, 1.0};
    static constexpr std::array kDashDotDot{4.0, 1.0, 0.3, 1.0, 0.3, 1.0};
    static constexpr std::array kLong{6.0, 1.5};
    static constexpr std::array kShort{1.5, 1.0};
    static constexpr std::array kLongShort{6.0, 1.0, 1.5, 1.0};
    switch (line) {
        case 1:
            return kDashed;
        case 2:
            return kDotted;
        case 3:
            return kDashDot;
        case 4:
            return kDashDotDot;
        case 5:
            return kLong;
        case 6:
            return kShort;
        case 7:
            return kLongShort;
        default:
            return {};
    }
}

}  // namespace cqsurvey::plan
