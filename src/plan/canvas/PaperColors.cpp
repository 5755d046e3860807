#include "plan/canvas/PaperColors.h"

namespace cqsurvey::plan {

PaperColors::PaperColors(Rgb background) {
    for (std::size_t i = 0; i < kColors; ++i) {
        const Rgb color = PaletteColor(static_cast<int>(i), background);
        m_lines[i] = VisibleOn(background, color);
        m_letters[i] = ReadableOn(background, color);
    }
}

}  // namespace cqsurvey::plan
