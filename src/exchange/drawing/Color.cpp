#include "exchange/drawing/Color.h"

#include <initializer_list>
#include <limits>

#include "text/DrawingPalette.h"

namespace cqsurvey::exchange {

namespace {

int Channel(std::uint32_t rgb, unsigned shift) {
    return static_cast<int>((rgb >> shift) & 0xFFU);
}

}  // namespace

int NearestColor(std::uint32_t rgb, bool& exact) {
    rgb &= 0xFFFFFFU;
    exact = true;
    if (rgb == 0) {
        return 7;
    }
    int nearest = 7;
    int least = std::numeric_limits<int>::max();
    for (int number = 1; number <= kLastColor; ++number) {
        const std::uint32_t color = GetPaletteColor(number);
        int distance = 0;
        for (const unsigned shift : {0U, 8U, 16U}) {
            const int away = Channel(rgb, shift) - Channel(color, shift);
            distance += away * away;
        }
        if (distance < least) {
            least = distance;
            nearest = number;
        }
    }
    exact = least == 0;
    return nearest;
}

}  // namespace cqsurvey::exchange
