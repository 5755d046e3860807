#pragma once

#include <vector>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "plan/canvas/Units.h"
#include "plan/labels/LabelPlacer.h"
#include "plan/labels/LineField.h"

namespace cqsurvey::plan {

/// How much of its size a symbol takes from the labels, and how much a plain cross does.
inline constexpr double kSymbolCore = 0.85;
inline constexpr double kCrossCore = 0.6;

/// A box that has been turned about one of its corners: where a text stands that is not level.
struct TurnedBox {
    CVector corner;  ///< the lower left one, as the text is read
    double width = 0.0;
    double height = 0.0;
    double angle = 0.0;  ///< radians, clockwise on the page

    /// The place that is `x` along its lower side and `y` above it.
    [[nodiscard]] CVector At(double x, double y) const;

    /// The level box around it.
    [[nodiscard]] Box GetBox() const;

    /// Small level boxes that cover it together, and hardly more.
    [[nodiscard]] std::vector<Box> Cover() const;
};

/// Where on the page labels may stand. A label never covers a symbol, a text, another label or a
/// line. All lengths are in points of 1/72 inch.
class LabelRoom {
 public:
    /// Takes the room of a symbol, a text or a label.
    void Take(const Box& box) { m_taken.Take(box); }
    void Take(const TurnedBox& box);

    /// Takes the room of a leader: nothing may stand on it, nor another leader cross it.
    void TakeLeader(const CVector& from, const CVector& to);

    /// Marks where a line passes.
    void MarkLine(const CVector& from, const CVector& to) { m_lines.Add(from, to); }

    /// True when a label at `box` covers nothing that was taken.
    [[nodiscard]] bool IsFree(const Box& box) const { return m_taken.IsFree(box); }

    /// True when so much was taken everywhere in `box` that nothing in it is free.
    [[nodiscard]] bool IsCrowded(const Box& box) const { return m_taken.IsCrowded(box); }

    /// True when no marked line passes through `box`.
    [[nodiscard]] bool IsOffLines(const Box& box) const { return m_lines.IsFree(box); }

    /// True when a label may stand at `box`.
    [[nodiscard]] bool HasRoom(const Box& box) const { return IsFree(box) && IsOffLines(box); }
    [[nodiscard]] bool HasRoom(const TurnedBox& box) const;

    /// True when a leader crosses nothing that was taken, and no marked line.
    [[nodiscard]] bool IsFreeLeader(const CVector& from, const CVector& to) const;

 private:
    LabelPlacer m_taken{5.0 * kMillimetre};
    LineField m_lines{3.0 * kMillimetre};
};

}  // namespace cqsurvey::plan
