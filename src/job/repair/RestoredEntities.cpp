#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "cqsurvey/CqCadEntity.h"
#include "job/JobDefaults.h"
#include "job/repair/DrawingMender.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {

// The part of DrawingMender that gives data without an entity one: step 4.

namespace {

constexpr const char* kEntities = EntityLayout::kTable.text;
constexpr std::uint16_t kFirstLayer = 1;

}  // namespace

std::byte* DrawingMender::MakeEntity(CqHandle entity, int type, CqHandle object) {
    std::byte* record = m_job.entities[entity].data();
    EntityLayout::Set<"ObjectType">(record, static_cast<std::uint16_t>(type));
    EntityLayout::Set<"ObjectIndex">(record, object);
    EntityLayout::Set<"LayerIndex">(
        record, m_job.layers.empty() ? kFirstLayer
                                     : static_cast<std::uint16_t>(m_job.layers.begin()->first));
    EntityLayout::Set<"ColorID">(record, JobDefaults::kColor);
    m_owners[static_cast<std::size_t>(type)][object] = entity;
    return record;
}

/// Vertices name their polyline by its entity, and so the number of one that is gone is known, even
/// from vertices that have lost their own entity.
void DrawingMender::NoteGonePlines() {
    for (const auto& [number, vertex] : m_job.vertices) {
        const auto pline = VertexLayout::Get<"PlineIndex">(vertex.data());
        if (pline > CqEntityTable::kHeader && !m_job.entities.contains(pline)) {
            m_gonePlines.insert(pline);
        }
    }
}

void DrawingMender::RestorePlines() {
    std::set<CqHandle> withVertex;
    std::vector<CqHandle> misplaced;
    for (const auto& [object, entity] : m_owners[EntVertex]) {
        const auto pline = VertexLayout::Get<"PlineIndex">(m_job.vertices.at(object).data());
        withVertex.insert(pline);
        if (!IsPline(pline) && !m_gonePlines.contains(pline)) {
            misplaced.push_back(object);
        }
    }
    std::sort(misplaced.begin(), misplaced.end());
    for (const CqHandle object : misplaced) {
        DropEntity(m_owners[EntVertex].at(object), "a vertex that names what is no polyline");
        m_job.vertices.erase(object);
        m_owners[EntVertex].erase(object);
    }
    // Entities and records are made together, so those that are left belong to each other in the
    // same order, unless some are missing.
    std::vector<CqHandle> records;
    for (const auto& [number, record] : m_job.plines) {
        if (!m_owners[EntPline].contains(number)) {
            records.push_back(number);
        }
    }
    const bool known = records.size() == m_gonePlines.size();
    std::size_t i = 0;
    for (const CqHandle entity : m_gonePlines) {
        if (!withVertex.contains(entity)) {
            ++i;
            continue;
        }
        const CqHandle object =
            known ? std::exchange(records[i++], 0) : NextNumber(m_job.plines, EntPline);
        (void)MakeEntity(entity, EntPline, object);
        if (known) {
            m_job.Lose(kEntities, entity, "the polyline's layer and colour are gone");
        } else {
            (void)m_job.plines[object];
            m_strayPlines.insert(entity);
            m_job.Lose(kEntities, entity,
                       "the polyline's layer, colour, line type and code are gone");
        }
    }
    for (const CqHandle number : records) {
        if (number != 0) {
            m_job.plines.erase(number);
            m_job.Lose(PlineLayout::kTable.text, number, "a polyline of which no vertex is left");
        }
    }
}

void DrawingMender::RestorePoints() {
    for (auto& [number, point] : m_job.points) {
        if (m_owners[EntSiPnt].contains(number)) {
            PointLayout::Set<"EntityIndex">(point.data(), m_owners[EntSiPnt].at(number));
            continue;
        }
        const auto named = PointLayout::Get<"EntityIndex">(point.data());
        const CqHandle entity = named > CqEntityTable::kHeader && !m_job.entities.contains(named)
                                    ? named
                                    : NextEntity();
        PointLayout::Set<"EntityIndex">(point.data(), entity);
        CopyPlaceOfTie(entity, MakeEntity(entity, EntSiPnt, number));
    }
}

void DrawingMender::FindTies() {
    for (const auto& [number, link] : m_job.links) {
        const auto vertex = LinkLayout::Get<"VertexDataID">(link.data());
        if (TypeOf(vertex) == EntVertex) {
            m_ties[LinkLayout::Get<"PointDataID">(link.data())] = vertex;
        }
    }
}

/// A vertex that runs through a point has its coordinates.
void DrawingMender::CopyPlaceOfTie(CqHandle entity, std::byte* record) {
    constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
    const auto tie = m_ties.find(entity);
    if (tie == m_ties.end()) {
        EntityLayout::Set<"N">(record, kNowhere);
        EntityLayout::Set<"E">(record, kNowhere);
        EntityLayout::Set<"Z">(record, kNowhere);
        m_job.Lose(kEntities, entity, "the point's coordinates, layer and colour are gone");
        return;
    }
    const std::byte* vertex = m_job.entities.at(tie->second).data();
    EntityLayout::Set<"N">(record, EntityLayout::Get<"N">(vertex));
    EntityLayout::Set<"E">(record, EntityLayout::Get<"E">(vertex));
    EntityLayout::Set<"Z">(record, EntityLayout::Get<"Z">(vertex));
    m_job.Lose(kEntities, entity,
               "the point's layer and colour are gone; its coordinates are those of vertex " +
                   std::to_string(tie->second));
}

template <class Records>
void DrawingMender::RestoreKind(const Records& records, int type, const char* table) {
    constexpr double kNowhere = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [number, data] : records) {
        if (m_owners[static_cast<std::size_t>(type)].contains(number)) {
            continue;
        }
        const CqHandle entity = NextEntity();
        std::byte* record = MakeEntity(entity, type, number);
        EntityLayout::Set<"N">(record, kNowhere);
        EntityLayout::Set<"E">(record, kNowhere);
        EntityLayout::Set<"Z">(record, kNowhere);
        m_job.Lose(table, number,
                   "its place, layer and colour are gone; it is entity " + std::to_string(entity) +
                       " now");
    }
}

void DrawingMender::RestorePlaced() {
    RestoreKind(m_job.texts, EntText, TextLayout::kTable.text);
    RestoreKind(m_job.circles, EntCircle, CircleLayout::kTable.text);
    RestoreKind(m_job.bitmaps, EntBitmap, BitmapLayout::kTable.text);
}

}  // namespace cqsurvey
