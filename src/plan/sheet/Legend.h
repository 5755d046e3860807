#pragma once

#include <string>
#include <variant>
#include <vector>

#include "plan/LineStyles.h"
#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/symbols/Symbol.h"

namespace cqsurvey::plan {

/// What the signs of a plan mean: the symbols in use, and the lines of each layer.
class Legend {
 public:
    /// Collects what lies in `part` of the plan, which must outlive the legend. With `onlyHeights`,
    /// plain points are spot heights (PlanPoint::IsSpot).
    Legend(const Plan& plan, const Box& part, bool onlyHeights);

    [[nodiscard]] std::size_t GetCount() const { return m_entries.size(); }

    /// Draws the entries into the legend of the sheet, which has room for so many.
    void Draw(Page& page, LineStyles& styles) const;

 private:
    struct Line {
        std::size_t layer;
        int line;
        int code;
    };
    struct Entry {
        std::variant<Symbol, Line> sign;
        int color;
        std::string text;
    };

    void DrawSign(Page& page, LineStyles& styles, const Entry& entry, const CVector& middle) const;

    const Plan& m_plan;
    std::vector<Entry> m_entries;
};

}  // namespace cqsurvey::plan
