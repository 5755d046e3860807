#pragma once

#include <cqsurvey/CqCadEntity.h>
#include <cqsurvey/Limits.h>
#include <cqsurvey/Types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

struct DrawnVertex {
    std::array<double, 3> coords{};
    double bulge = 0.0;
    CqHandle point = 0;  ///< the survey-point entity that it is tied to, or 0
};

/// A polyline, circle or text of a drawing from codes, in the job or not yet.
struct DrawnEntity {
    EntType type = EntPline;
    CString layer{};
    int color = limits::kByLayer;
    int line = limits::kByLayer;
    int code = 0;
    std::vector<DrawnVertex> vertices{};
    std::array<double, 3> coords{};  ///< of a circle or text
    double radius = 0.0;
    CString text{};
    int align = 0;
    double height = 0.0;
    /// Everything else of a text, which is 0 in what is drawn from codes.
    std::uint64_t rest = 0;

    /// A digest of all of it but the ties: two entities of one digest look the same in every way.
    [[nodiscard]] std::uint64_t GetMark() const;

    /// True when the vertices of both are tied to the same points.
    [[nodiscard]] bool HasTiesOf(const DrawnEntity& other) const;

    /// Reads an entity of the job; nothing when it is gone or of another type.
    [[nodiscard]] static std::optional<DrawnEntity> Read(const CqSurveyDB& db, CqHandle handle);

    /// Adds the entity to the job, and its layer must be there. Returns its handle.
    [[nodiscard]] CqHandle AddTo(CqSurveyDB& db) const;

    /// Deletes the entity of a handle.
    static void Delete(CqSurveyDB& db, EntType type, CqHandle handle);
};

}  // namespace cqsurvey::exchange
