#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "exchange/drawing/CurveFitter.h"

namespace cqsurvey::exchange {

/// A vertex of a polyline in a job, and the entity of the survey point that it is tied to.
struct WalkedVertex {
    PathVertex vertex;
    CqHandle tied = 0;
};

/// What a walk shows: an entity, and for a polyline its vertices. A vertex that belongs to no
/// polyline is shown as an entity of its own.
using DrawingVisitor =
    std::function<void(const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices)>;

/// Shows every entity of an open job in drawing order. `progress` may be empty; it gets the number
/// of entities so far. Throws ExchangeError when not every entity can be reached.
void WalkDrawing(CqSurveyDB& db, const std::function<void(std::size_t)>& progress,
                 const DrawingVisitor& visit);

/// Shows one entity; nothing for the handle of none.
void ShowEntity(CqSurveyDB& db, CqHandle entity, const DrawingVisitor& visit);

/// Where an entity is. The height is 0 when it has none.
[[nodiscard]] Vec3 PlaceOf(const CqCadEntity& entity, bool& hasHeight);

}  // namespace cqsurvey::exchange
