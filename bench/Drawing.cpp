#include <algorithm>
#include <limits>

#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

using std::chrono_literals::operator""ns;

std::unique_ptr<CqCadEntity> Empty(EntType type) {
    switch (type) {
        case EntSiPnt:
            return std::make_unique<CqSiPntCadEntity>();
        case EntPline:
            return std::make_unique<CqPlineCadEntity>();
        case EntVertex:
            return std::make_unique<CqVertexCadEntity>();
        case EntText:
            return std::make_unique<CqTextCadEntity>();
        case EntCircle:
            return std::make_unique<CqCircleCadEntity>();
        default:
            return std::make_unique<CqBitmapCadEntity>();
    }
}

void IterateEntities(benchmark::State& state) {
    const ScratchFile job;
    CqSurveyDB db;
    db.CreateNew(job.Job());
    Draw(db, static_cast<std::size_t>(state.range(0)));
    const auto walk = [&](auto&& take) {
        CqHandle handle = db.GetFirstCadEntityHandle();
        CqCadEntity* entity = nullptr;
        while (handle != 0 && db.GetNextCadEntity(handle, entity) != 0) {
            take(*entity);
            CqSurveyDB::DeleteCqCadEntityObject(entity);
        }
    };
    std::vector<EntType> types;
    walk([&](const CqCadEntity& entity) { types.push_back(entity.GetType()); });
    Duel duel(state, types.size(), Clock::Processor);
    duel.BeyondAtMost(150ns);
    while (state.KeepRunning()) {
        duel.Round(
            [&] {
                std::size_t seen = 0;
                walk([&](const CqCadEntity&) { ++seen; });
                Require(seen == types.size());
            },
            [&] {
                for (const EntType type : types) {
                    const auto entity = Empty(type);
                    benchmark::DoNotOptimize(entity.get());
                }
            });
    }
}

/// Opening ends with a walk along the entity chain that makes the extents.
void OpenDrawing(benchmark::State& state) {
    struct Element {
        EntType type;
        CqHandle next;
        std::array<double, 3> coords;
    };
    const ScratchFile job;
    CqSurveyDB db;
    db.CreateNew(job.Job());
    Draw(db, static_cast<std::size_t>(state.range(0)));
    std::vector<Element> elements;
    CqHandle handle = db.GetFirstCadEntityHandle();
    CqCadEntity* entity = nullptr;
    while (handle != 0 && db.GetNextCadEntity(handle, entity) != 0) {
        Element& element = elements.emplace_back();
        element.type = entity->GetType();
        element.next = static_cast<CqHandle>(elements.size());
        entity->GetPoint(element.coords.data());
        CqSurveyDB::DeleteCqCadEntityObject(entity);
    }
    elements.back().next = 0;
    Duel duel(state, elements.size(), Clock::Processor);
    while (state.KeepRunning()) {
        duel.Round(
            [&] {
                db.Close();
                db.Open(job.Job());
            },
            [&] {
                constexpr double kLargest = std::numeric_limits<double>::max();
                std::array<double, 4> extents{kLargest, kLargest, -kLargest, -kLargest};
                for (CqHandle at = 0;;) {
                    const Element& element = elements[at];
                    if (element.type != EntVertex) {
                        extents[0] = std::min(extents[0], element.coords[0]);
                        extents[1] = std::min(extents[1], element.coords[1]);
                        extents[2] = std::max(extents[2], element.coords[0]);
                        extents[3] = std::max(extents[3], element.coords[1]);
                    }
                    at = element.next;
                    if (at == 0) {
                        break;
                    }
                }
                benchmark::DoNotOptimize(extents);
            });
    }
}

}  // namespace

void RegisterDrawing() {
    ForEachSize("Iterate the drawing, per entity", "empty objects made and freed", IterateEntities,
                [](int size) { return size < kLargest ? 21 : 5; });
    ForEachSize("Open a drawing, per entity", "walk of a linked array", OpenDrawing,
                [](int size) { return size < kLargest ? 21 : 7; });
}

}  // namespace cqsurvey::bench
