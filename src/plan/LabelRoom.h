#pragma once

#include <cstddef>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "plan/LabelPlacer.h"
#include "plan/Units.h"

namespace cqsurvey::plan {

/// Where on the page labels may stand. A label never covers a symbol, a text or another label. It
/// covers a line only when there is no room elsewhere. All lengths are in points of 1/72 inch.
class LabelRoom {
 public:
    /// Takes the room of a symbol, a text or a label.
    void Take(const Box& box) { m_taken.Take(box); }

    /// Marks where a line passes, every 1.5 mm. After some 200,000 marks, further lines are not
    /// marked.
    void MarkLine(const CVector& from, const CVector& to);

    /// True when a label at `box` covers nothing that was taken.
    [[nodiscard]] bool IsFree(const Box& box) const { return m_taken.IsFree(box); }

    /// True when no marked line passes through `box`.
    [[nodiscard]] bool IsOffLines(const Box& box) const { return m_lines.IsFree(box); }

 private:
    LabelPlacer m_taken{5.0 * kMillimetre};
    LabelPlacer m_lines{3.0 * kMillimetre};
    std::size_t m_marks = 0;
};

}  // namespace cqsurvey::plan
