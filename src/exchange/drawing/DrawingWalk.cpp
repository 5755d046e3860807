#include "exchange/drawing/DrawingWalk.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <utility>

#include "cqsurvey/Ranges.h"
#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange {

Vec3 PlaceOf(const CqCadEntity& entity, bool& hasHeight) {
    std::array<double, 3> point{};
    entity.GetPoint(point.data());
    hasHeight = !std::isnan(point[2]);
    return {point[0], point[1], hasHeight ? point[2] : 0.0};
}

namespace {

WalkedVertex VertexOf(const CqCadEntity& entity) {
    WalkedVertex vertex;
    vertex.vertex.at = PlaceOf(entity, vertex.vertex.hasHeight);
    vertex.vertex.bulge = entity.GetBulge();
    vertex.tied = entity.GetMcadSiPointHandle();
    return vertex;
}

}  // namespace

void ShowEntity(CqSurveyDB& db, CqHandle entity, const DrawingVisitor& visit) {
    CqHandle next = entity;
    CqCadEntityPtr shown;
    std::vector<WalkedVertex> vertices;
    if (!CqEntityStep::Read(db, next, shown)) {
        return;
    }
    // A damaged chain may go round.
    int left = shown->GetType() == EntPline ? db.GetNumCadEntities() : 0;
    CqCadEntityPtr vertex;
    while (left-- > 0 && next != 0 && CqEntityStep::Read(db, next, vertex) &&
           vertex->GetType() == EntVertex) {
        vertices.push_back(VertexOf(*vertex));
    }
    visit(*shown, vertices);
}

void WalkDrawing(CqSurveyDB& db, const std::function<void(std::size_t)>& progress,
                 const DrawingVisitor& visit) {
    const auto there = static_cast<std::size_t>(db.GetNumCadEntities());
    std::size_t walked = 0;
    CqCadEntityPtr line;
    std::vector<WalkedVertex> vertices;
    const auto end = [&] {
        if (line) {
            visit(*line, vertices);
            line.reset();
            vertices.clear();
        }
    };
    for (CqCadEntityPtr& entity : Entities(db)) {
        if (entity->GetType() == EntVertex && line) {
            vertices.push_back(VertexOf(*entity));
        } else {
            end();
            if (entity->GetType() == EntPline) {
                line = std::move(entity);
            } else {
                visit(*entity, vertices);
            }
        }
        ++walked;
        if (progress) {
            progress(walked);
        }
    }
    end();
    if (walked != there) {
        throw ExchangeError(fmt::format(
            "only {} of {} entities of the job can be reached; see cqjob check", walked, there));
    }
}

}  // namespace cqsurvey::exchange
