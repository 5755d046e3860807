#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cqsurvey/Export.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// What a field code makes of the points that carry it.
enum class CqCodeKind : std::uint8_t {
    Point,       ///< nothing but the point, with the symbol and label of its code
    Line,        ///< figures through the points
    ClosedLine,  ///< figures that go back to their first point
    Text,        ///< a text at each point
    Circle       ///< a circle around each point
};

/// The word for a kind in a code table: "point", "line", "closed line", "text" or "circle".
[[nodiscard]] CQSURVEY_API std::u16string_view GetKindWord(CqCodeKind kind);

/// The kind of a word in any letter case; nothing for any other text.
[[nodiscard]] CQSURVEY_API std::optional<CqCodeKind> FindCodeKind(std::u16string_view word);

/// A row of a code table: a field code and how it is drawn.
struct CqCode {
    /// The colour or line of an entity that has those of its layer.
    static constexpr int kByLayer = limits::kByLayer;

    /// The code as it is written in the field, or a pattern: each "*" stands for any characters.
    /// "*" alone is the default row. The letter case of A to Z does not matter.
    CString code{};
    int number = 0;   ///< the feature code of points and entities
    CString layer{};  ///< empty: the layer of the point, or the current one
    int color = kByLayer;
    int line = kByLayer;
    CqCodeKind kind = CqCodeKind::Point;
    CString symbol{};  ///< one of kSymbolNames, or empty
    /// Of a symbol: its size on paper in millimetres. Of a text: its height, and of a circle: its
    /// radius, in the job's unit of length. 0: as the program thinks fit.
    double size = 0.0;
    /// What is written beside each point (of a line: its first point), and what a text says. In
    /// both, {name}, {code}, {height} and {text} stand for the point's name, the code with its
    /// figure number, the height, and what the description says after the code.
    CString label{};
    CString text{};

    bool operator==(const CqCode&) const = default;
};

}  // namespace cqsurvey
