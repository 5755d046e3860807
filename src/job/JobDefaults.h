#pragma once

#include <cstdint>

#include "tables/JobPart.h"

namespace cqsurvey {

/// What new points and entities get when the caller does not say: colour, line style, code and
/// group. The defaults are in memory only and are reset when a job is created. The current layer
/// belongs to the layer table.
class JobDefaults : public JobPart {
 public:
    /// The colour that stands for "as the layer".
    static constexpr std::int32_t kColor = 256;

    struct Values {
        std::int32_t color = kColor;
        // Line style and code of the polyline that is being built.
        std::int32_t plineLine = kColor;
        std::int32_t plineCode = 0;
        std::uint16_t group = 0;
    };

    Values now;

    void KeepStep() noexcept override { m_atStep = now; }
    void UndoStep() noexcept override { now = m_atStep; }

 private:
    Values m_atStep;
};

}  // namespace cqsurvey
