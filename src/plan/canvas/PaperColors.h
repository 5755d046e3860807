#pragma once

#include <array>
#include <cstddef>

#include "plan/canvas/Palette.h"

namespace cqsurvey::plan {

/// The colours of the palette as a plan shows them. Colours are chosen on a screen, mostly a dark
/// one, and some of them vanish on paper. So those too close to the background are shown darker, or
/// brighter on a dark background (VisibleOn, ReadableOn). The job's colours stay as they are.
class PaperColors {
 public:
    explicit PaperColors(Rgb background);

    /// The colour of lines and symbols. Every number outside the palette is the ink.
    [[nodiscard]] Rgb OfLine(int index) const { return m_lines[PlaceOf(index)]; }
    /// The colour of letters.
    [[nodiscard]] Rgb OfLetter(int index) const { return m_letters[PlaceOf(index)]; }

 private:
    static constexpr std::size_t kColors = 256;

    /// Number 0 is the ink, too.
    static std::size_t PlaceOf(int index) {
        return index < 0 || index >= static_cast<int>(kColors) ? 0
                                                               : static_cast<std::size_t>(index);
    }

    std::array<Rgb, kColors> m_lines;
    std::array<Rgb, kColors> m_letters;
};

}  // namespace cqsurvey::plan
