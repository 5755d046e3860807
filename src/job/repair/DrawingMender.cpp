#include "job/repair/DrawingMender.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "cqsurvey/Text.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {

namespace {

constexpr const char* kEntities = EntityLayout::kTable.text;
/// By kind, the table of the data; there is no kind 3.
constexpr std::array<const char*, 7> kTables{
    PointLayout::kTable.text, PlineLayout::kTable.text,  VertexLayout::kTable.text, nullptr,
    TextLayout::kTable.text,  CircleLayout::kTable.text, BitmapLayout::kTable.text};
/// A point whose own record is gone is shown like one that was measured.
constexpr std::uint16_t kNeutralOrigin = 1;

}  // namespace

void DrawingMender::Mend() {
    FindNextEntity();
    FindOrder();
    m_job.entities.erase(CqEntityTable::kHeader);
    ClaimData();
    NoteGonePlines();
    DropVerticesWithoutEntity();
    FindPlines();
    RestorePlines();
    FindTies();
    RestorePoints();
    RestorePlaced();
    GatherVertices();
    LinkChain();
}

/// A new entity must not get the number of one that is gone: what names that would then name
/// another. Where the highest numbers are lost, what is named is as high as one can know.
void DrawingMender::FindNextEntity() {
    CqHandle highest = CqEntityTable::kHeader;
    const auto note = [&](CqHandle entity) { highest = std::max(highest, entity); };
    for (const auto& [number, entity] : m_job.entities) {
        note(number);
        note(EntityLayout::Get<"NextEntityIndex">(entity.data()));
        note(EntityLayout::Get<"PrevEntityIndex">(entity.data()));
    }
    if (const auto known = m_job.highest.find(kEntities); known != m_job.highest.end()) {
        note(known->second);
    }
    for (const auto& [number, point] : m_job.points) {
        note(PointLayout::Get<"EntityIndex">(point.data()));
    }
    for (const auto& [number, vertex] : m_job.vertices) {
        note(VertexLayout::Get<"PlineIndex">(vertex.data()));
    }
    for (const auto& [number, link] : m_job.links) {
        note(LinkLayout::Get<"PointDataID">(link.data()));
        note(LinkLayout::Get<"VertexDataID">(link.data()));
    }
    // One that only an absurd number is behind wraps around, and NextEntity looks for a gap.
    m_nextEntity = highest + 1;
}

int DrawingMender::TypeOf(CqHandle entity) const {
    const auto found = m_job.entities.find(entity);
    return found == m_job.entities.end() ? -1
                                         : EntityLayout::Get<"ObjectType">(found->second.data());
}

bool DrawingMender::IsPline(CqHandle entity) const {
    return TypeOf(entity) == EntPline;
}

CqHandle DrawingMender::NextEntity() {
    while (m_job.entities.contains(m_nextEntity) || m_nextEntity <= CqEntityTable::kHeader) {
        ++m_nextEntity;
    }
    return m_nextEntity++;
}

void DrawingMender::FindOrder() {
    const auto next = [&](CqHandle entity) -> CqHandle {
        const auto after = EntityLayout::Get<"NextEntityIndex">(m_job.entities.at(entity).data());
        const auto found = m_job.entities.find(after);
        return after > CqEntityTable::kHeader && found != m_job.entities.end() &&
                       EntityLayout::Get<"PrevEntityIndex">(found->second.data()) == entity
                   ? after
                   : 0;
    };
    // Where a run begins: an entity that the one before it does not lead to.
    std::vector<std::pair<CqHandle, CqHandle>> runs;
    std::set<CqHandle> left;
    for (const auto& [entity, record] : m_job.entities) {
        if (entity == CqEntityTable::kHeader) {
            continue;
        }
        left.insert(entity);
        const auto before = EntityLayout::Get<"PrevEntityIndex">(record.data());
        if (before <= CqEntityTable::kHeader || !m_job.entities.contains(before) ||
            next(before) != entity) {
            runs.emplace_back(before, entity);
        }
    }
    std::sort(runs.begin(), runs.end());
    const auto follow = [&](CqHandle entity) {
        while (entity != 0 && left.erase(entity) != 0) {
            m_order.push_back(entity);
            entity = next(entity);
        }
    };
    for (const auto& [before, first] : runs) {
        follow(first);
    }
    // What is left runs in a circle.
    while (!left.empty()) {
        follow(*left.begin());
    }
}

bool DrawingMender::HasData(int type, CqHandle object) const {
    switch (type) {
        case EntSiPnt:
            return m_job.points.contains(object);
        case EntPline:
            return m_job.plines.contains(object);
        case EntVertex:
            return m_job.vertices.contains(object);
        case EntText:
            return m_job.texts.contains(object);
        case EntCircle:
            return m_job.circles.contains(object);
        case EntBitmap:
            return m_job.bitmaps.contains(object);
        default:
            return false;
    }
}

void DrawingMender::DropEntity(CqHandle entity, const char* why) {
    m_job.Lose(kEntities, entity, why);
    m_job.entities.erase(entity);
}

void DrawingMender::ClaimData() {
    // A point names its entity, so of several that show it, that one is right.
    for (const auto& [number, point] : m_job.points) {
        const auto entity = PointLayout::Get<"EntityIndex">(point.data());
        const auto found = m_job.entities.find(entity);
        if (entity > CqEntityTable::kHeader && found != m_job.entities.end() &&
            EntityLayout::Get<"ObjectType">(found->second.data()) == EntSiPnt &&
            EntityLayout::Get<"ObjectIndex">(found->second.data()) == number) {
            m_owners[EntSiPnt].emplace(number, entity);
        }
    }
    for (const CqHandle entity : m_order) {
        ClaimOne(entity, m_job.entities.at(entity).data());
    }
}

void DrawingMender::ClaimOne(CqHandle entity, std::byte* record) {
    const int type = EntityLayout::Get<"ObjectType">(record);
    if (type >= static_cast<int>(kKinds) || kTables[static_cast<std::size_t>(type)] == nullptr) {
        DropEntity(entity, "it has an unknown type");
        return;
    }
    const auto object = EntityLayout::Get<"ObjectIndex">(record);
    if (!HasData(type, object)) {
        MakeData(entity, record);
        return;
    }
    const auto [owner, fresh] = m_owners[static_cast<std::size_t>(type)].emplace(object, entity);
    if (!fresh && owner->second != entity) {
        DropEntity(entity, "another entity has the same data");
    }
}

void DrawingMender::MakeData(CqHandle entity, std::byte* record) {
    const int type = EntityLayout::Get<"ObjectType">(record);
    auto object = EntityLayout::Get<"ObjectIndex">(record);
    const auto make = [&](auto& records) {
        if (object == 0) {
            object = NextNumber(records, type);
            EntityLayout::Set<"ObjectIndex">(record, object);
        }
        return records[object].data();
    };
    const char* what = "its data are gone; it has its place, layer and colour";
    switch (type) {
        case EntSiPnt: {
            std::byte* point = make(m_job.points);
            PointLayout::Set<"PointNumber">(point, object);
            PointLayout::Set<"EntityIndex">(point, entity);
            PointLayout::Set<"DataOrigin">(point, kNeutralOrigin);
            what = "the point's name, code and group are gone; it has its coordinates";
            break;
        }
        case EntPline:
            // Its bound is made when its vertices are known.
            (void)make(m_job.plines);
            m_strayPlines.insert(entity);
            what = "the polyline's line type and code are gone";
            break;
        case EntVertex:
            (void)make(m_job.vertices);
            m_strayVertices.insert(entity);
            what = "the vertex's bulge is gone; the segment that begins there is straight";
            break;
        case EntText:
            (void)make(m_job.texts);
            what = "the text is gone; an empty one has its place";
            break;
        case EntCircle:
            (void)make(m_job.circles);
            what = "the circle's radius is gone; it is 0 now";
            break;
        default:
            (void)make(m_job.bitmaps);
            break;
    }
    m_owners[static_cast<std::size_t>(type)][object] = entity;
    m_job.Lose(kTables[static_cast<std::size_t>(type)], object, what);
}

void DrawingMender::DropVerticesWithoutEntity() {
    for (auto vertex = m_job.vertices.begin(); vertex != m_job.vertices.end();) {
        if (m_owners[EntVertex].contains(vertex->first)) {
            ++vertex;
            continue;
        }
        m_job.Lose(kTables[EntVertex], vertex->first,
                   "a vertex of polyline " +
                       std::to_string(VertexLayout::Get<"PlineIndex">(vertex->second.data())) +
                       ": its coordinates are gone");
        vertex = m_job.vertices.erase(vertex);
    }
}

/// Lets each vertex that lost its record join the polyline of its neighbours.
void DrawingMender::FindPlines() {
    const auto plineOf = [&](CqHandle entity) -> CqHandle {
        const auto found = m_job.entities.find(entity);
        if (found == m_job.entities.end() || m_strayVertices.contains(entity)) {
            return 0;
        }
        const std::byte* record = found->second.data();
        switch (EntityLayout::Get<"ObjectType">(record)) {
            case EntPline:
                return entity;
            case EntVertex:
                return VertexLayout::Get<"PlineIndex">(
                    m_job.vertices.at(EntityLayout::Get<"ObjectIndex">(record)).data());
            default:
                return 0;
        }
    };
    const auto pass = [&](auto begin, auto end, bool forward) {
        CqHandle pline = 0;
        for (auto entity = begin; entity != end; ++entity) {
            if (m_strayVertices.contains(*entity) && pline != 0) {
                const auto object =
                    EntityLayout::Get<"ObjectIndex">(m_job.entities.at(*entity).data());
                VertexLayout::Set<"PlineIndex">(m_job.vertices.at(object).data(), pline);
                m_strayVertices.erase(*entity);
            } else {
                pline = plineOf(*entity);
                // Going back, a polyline's head ends it; what stands before it is another's.
                pline = !forward && pline == *entity ? 0 : pline;
            }
        }
    };
    pass(m_order.begin(), m_order.end(), true);
    pass(m_order.rbegin(), m_order.rend(), false);
    for (const CqHandle entity : m_strayVertices) {
        const auto object = EntityLayout::Get<"ObjectIndex">(m_job.entities.at(entity).data());
        m_job.vertices.erase(object);
        m_owners[EntVertex].erase(object);
        DropEntity(entity, "a vertex whose polyline is unknown");
    }
}

void DrawingMender::GatherVertices() {
    for (const CqHandle entity : m_order) {
        const auto found = m_job.entities.find(entity);
        if (found != m_job.entities.end() &&
            EntityLayout::Get<"ObjectType">(found->second.data()) == EntVertex) {
            const auto object = EntityLayout::Get<"ObjectIndex">(found->second.data());
            m_vertices[VertexLayout::Get<"PlineIndex">(m_job.vertices.at(object).data())].push_back(
                entity);
        }
    }
    for (const CqHandle pline : m_strayPlines) {
        MakePlineData(pline, m_job.entities.at(pline).data());
    }
}

void DrawingMender::MakePlineData(CqHandle entity, std::byte* record) {
    CqPlineCadEntity pline;
    std::vector<CqVertexCadEntity> vertices;
    for (const CqHandle vertex : m_vertices[entity]) {
        const std::byte* from = m_job.entities.at(vertex).data();
        const std::array<double, 3> place{EntityLayout::Get<"E">(from),
                                          EntityLayout::Get<"N">(from),
                                          EntityLayout::Get<"Z">(from)};
        CqVertexCadEntity& added = vertices.emplace_back();
        added.SetPoint(place.data());
        added.SetBulge(VertexLayout::Get<"Bulge">(
            m_job.vertices.at(EntityLayout::Get<"ObjectIndex">(from)).data()));
    }
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        vertices[i].UpdateExtent(&pline, i + 1 < vertices.size() ? &vertices[i + 1] : nullptr);
    }
    CVector min;
    CVector max;
    if (!vertices.empty()) {
        pline.GetBound(min, max);
    }
    std::byte* data = m_job.plines.at(EntityLayout::Get<"ObjectIndex">(record)).data();
    PlineLayout::Set<"minX">(data, min.GetX());
    PlineLayout::Set<"minY">(data, min.GetY());
    PlineLayout::Set<"maxX">(data, max.GetX());
    PlineLayout::Set<"maxY">(data, max.GetY());
}

void DrawingMender::LinkChain() {
    std::vector<CqHandle> chain;
    std::set<CqHandle> left;
    for (const auto& [entity, record] : m_job.entities) {
        left.insert(entity);
    }
    const auto add = [&](CqHandle entity) {
        if (left.erase(entity) == 0) {
            return;
        }
        chain.push_back(entity);
        if (const auto vertices = m_vertices.find(entity); vertices != m_vertices.end()) {
            for (const CqHandle vertex : vertices->second) {
                left.erase(vertex);
                chain.push_back(vertex);
            }
        }
    };
    std::set<CqHandle> ordered(m_order.begin(), m_order.end());
    for (const CqHandle entity : m_order) {
        const int type = TypeOf(entity);
        if (type < 0) {
            continue;
        }
        if (type != EntVertex) {
            add(entity);
            continue;
        }
        // A polyline that was made anew stands where its first vertex was.
        const auto object = EntityLayout::Get<"ObjectIndex">(m_job.entities.at(entity).data());
        const auto pline = VertexLayout::Get<"PlineIndex">(m_job.vertices.at(object).data());
        if (!ordered.contains(pline)) {
            add(pline);
        }
    }
    while (!left.empty()) {
        add(*left.begin());
    }
    EntityLayout::Bytes header{};
    EntityLayout::Set<"NextEntityIndex">(header.data(), chain.empty() ? 0 : chain.front());
    EntityLayout::Set<"PrevEntityIndex">(header.data(), chain.empty() ? 0 : chain.back());
    for (std::size_t i = 0; i < chain.size(); ++i) {
        std::byte* record = m_job.entities.at(chain[i]).data();
        EntityLayout::Set<"PrevEntityIndex">(record, i == 0 ? CqHandle{0} : chain[i - 1]);
        EntityLayout::Set<"NextEntityIndex">(record,
                                             i + 1 == chain.size() ? CqHandle{0} : chain[i + 1]);
    }
    m_job.entities[CqEntityTable::kHeader] = header;
}

}  // namespace cqsurvey
