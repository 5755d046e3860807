#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// What became of a code at a point.
enum class CodeFate : std::uint8_t {
    Drawn,       ///< as the row says
    PointOnly,   ///< the table calls it a point without a drawing of its own
    Unknown,     ///< the table does not have it, or it is a control word without a code
    Incomplete,  ///< its figure could not be drawn, or not as it was meant; the reason says why
    Suspicious   ///< it is drawn, but looks like a mistake; the reason says which
};

inline constexpr std::size_t kCodeFateCount = 5;

/// "drawn", "only a point", "unknown", "incomplete" or "suspicious".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* CodeFateWord(CodeFate fate);

/// One code in the description of one point. Texts are in UTF-8.
struct CodeRow {
    CqHandle point = 0;
    std::string name;  ///< of the point
    std::string code;  ///< as it is written, with its figure number
    CodeFate fate = CodeFate::PointOnly;
    /// What it was drawn as, in English: "line", "closed line", "circle" ...; empty for nothing.
    std::string_view what;
    std::string reason;  ///< why it is incomplete or suspicious; several with "; " between them
};

/// An entity of an earlier drawing that was edited by hand since, and was left as it is.
struct EditedEntity {
    CqHandle handle = 0;
    std::string what;  ///< "polyline", "text" or "circle"
    /// True when the points of the entity have changed, too, and it was drawn anew beside it.
    bool drawnAgain = false;
};

/// An account of a drawing from codes: every code of every point, in the order of the points.
struct CQSURVEY_EXCHANGE_API CodeReport {
    std::vector<CodeRow> rows;
    std::vector<EditedEntity> edited;

    std::uint64_t points = 0;
    std::uint64_t withoutCode = 0;  ///< points whose description has no code
    std::uint64_t damagedRows = 0;  ///< of the job's code table, which were left out

    // What the drawing is made of.
    std::uint64_t lines = 0;  ///< polylines, parallels included
    std::uint64_t arcs = 0;   ///< curved segments of them
    std::uint64_t circles = 0;
    std::uint64_t texts = 0;

    // What was done for it.
    std::uint64_t added = 0;          ///< entities
    std::uint64_t kept = 0;           ///< entities of the earlier drawing that are still right
    std::uint64_t removed = 0;        ///< entities of the earlier drawing
    std::uint64_t layers = 0;         ///< that the job did not have
    std::uint64_t pointsChanged = 0;  ///< points that got another layer or feature code
    bool codesKept = false;           ///< the job got another code table

    /// How many codes came to this.
    [[nodiscard]] std::uint64_t Count(CodeFate fate) const {
        return m_counts[static_cast<std::size_t>(fate)];
    }
    /// True when anything in the job was changed.
    [[nodiscard]] bool HasChanged() const {
        return added + removed + layers + pointsChanged > 0 || codesKept;
    }

    /// Counts the fates of the rows anew.
    void CountFates();

 private:
    std::array<std::uint64_t, kCodeFateCount> m_counts{};
};

}  // namespace cqsurvey::exchange
