#pragma once

#include <cstdint>

namespace cqsurvey::plan {

/// A colour, its parts from 0 to 255.
struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    bool operator==(const Rgb&) const = default;
};

inline constexpr Rgb kWhite{255, 255, 255};
inline constexpr Rgb kBlack{0, 0, 0};

/// The colour of everything without a colour of its own: black, or white on a dark background.
[[nodiscard]] Rgb InkOn(Rgb background);

/// The colour of the drawing palette (CqPalette.h) that `index` names. 7, 0 and every number
/// outside the palette are the ink. So is a colour that cannot be told from the background.
[[nodiscard]] Rgb PaletteColor(int index, Rgb background);

/// A colour in which a line or a symbol can be seen on paper: `color` itself, or one between it and
/// the ink when its contrast to the background is less than 3 to 1. Yellow on white becomes a dark
/// yellow.
[[nodiscard]] Rgb VisibleOn(Rgb background, Rgb color);

/// The same for letters, which need a contrast of 3.5 to 1.
[[nodiscard]] Rgb ReadableOn(Rgb background, Rgb color);

/// The background colour of a job's settings: red in the lowest byte, green and blue above it.
[[nodiscard]] Rgb BackgroundColor(std::uint32_t setting);

/// `color` mixed with `background`: `part` (0 to 1) of the result is `color`.
[[nodiscard]] Rgb Mix(Rgb color, Rgb background, double part);

}  // namespace cqsurvey::plan
