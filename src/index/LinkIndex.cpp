#include "index/LinkIndex.h"

namespace cqsurvey {

namespace {

template <class Table, class Member>
std::size_t FindEntry(const Table& table, Member member, CqHandle key) {
    return table.Find(HashHandle(key), [&](const auto& entry) { return entry.*member == key; });
}

}  // namespace

void LinkIndex::Build() {
    Clear();
    m_links.ForEach([this](CqHandle link, const std::byte* record) {
        Enter(link, LinkLayout::Get<"PointDataID">(record),
              LinkLayout::Get<"VertexDataID">(record));
    });
}

std::vector<CqHandle> LinkIndex::ListByPoint(CqHandle point) const {
    std::vector<CqHandle> links;
    const std::size_t entry = FindEntry(m_points, &PointEntry::point, point);
    if (entry != m_points.kNone) {
        for (CqHandle link = m_points[entry].first; link != 0; link = PlaceOf(link).next) {
            links.push_back(link);
        }
    }
    return links;
}

void LinkIndex::AppendLink(CqHandle point, CqHandle vertex) {
    ReserveOneMore();
    const CqHandle link = m_links.AppendLink(point, vertex);
    m_changes.Push({Change::kEntered, vertex, point, FindByVertex(vertex), {link, 0, 0}});
    Enter(link, point, vertex);
}

int LinkIndex::Unlink(CqHandle point, CqHandle vertex) {
    const CqHandle link = FindByVertex(vertex);
    if (link == 0) {
        return 0;
    }
    const CqHandle tiedPoint = m_links.GetAt<"PointDataID">(link);
    const bool remove = point == 0 || point == tiedPoint;
    if (remove) {
        // Before the indexes: of all the steps only this one can be refused.
        m_links.DeleteRecord(link);
    }
    m_changes.Reserve(1);
    m_changes.Push({Change::kVertexForgotten, vertex, tiedPoint, 0, {link, 0, 0}});
    ForgetVertex(vertex);
    if (remove && tiedPoint != 0) {
        const Place place = PlaceOf(link);
        m_changes.Reserve(1);
        m_changes.Push({Change::kRemovedFromList, vertex, tiedPoint, 0, place});
        RemoveFromList(tiedPoint, place);
    }
    return remove ? 1 : 0;
}

void LinkIndex::KeepStep() noexcept {
    m_changes.Clear();
}

// Nothing is allocated here: the indexes keep the room that they had when the step began.
void LinkIndex::UndoStep() noexcept {
    m_changes.TakeBack([this](const Change& change) {
        switch (change.kind) {
            case Change::kEntered:
                if (change.point != 0) {
                    RemoveFromList(change.point, PlaceOf(change.place.link));
                }
                if (change.previousLink != 0) {
                    SetLinkOfVertex(change.vertex, change.previousLink);
                } else {
                    ForgetVertex(change.vertex);
                }
                break;
            case Change::kVertexForgotten:
                SetLinkOfVertex(change.vertex, change.place.link);
                break;
            case Change::kRemovedFromList:
                InsertIntoList(change.point, change.place);
                break;
        }
    });
}

CqHandle LinkIndex::FindByVertex(CqHandle vertex) const {
    const std::size_t entry = FindEntry(m_vertices, &VertexEntry::vertex, vertex);
    return entry != m_vertices.kNone ? m_vertices[entry].link : 0;
}

void LinkIndex::SetLinkOfVertex(CqHandle vertex, CqHandle link) {
    const std::size_t entry = FindEntry(m_vertices, &VertexEntry::vertex, vertex);
    if (entry == m_vertices.kNone) {
        m_vertices.Insert({vertex, link});
    } else {
        m_vertices[entry].link = link;
    }
}

void LinkIndex::ForgetVertex(CqHandle vertex) {
    m_vertices.EraseAt(FindEntry(m_vertices, &VertexEntry::vertex, vertex));
}

CqHandle LinkIndex::LastOfPoint(CqHandle point) const {
    const std::size_t entry = FindEntry(m_points, &PointEntry::point, point);
    return entry != m_points.kNone ? m_points[entry].last : 0;
}

LinkIndex::Place LinkIndex::PlaceOf(CqHandle link) const {
    return m_places[FindEntry(m_places, &Place::link, link)];
}

LinkIndex::Place& LinkIndex::PlaceAt(CqHandle link) {
    return m_places[FindEntry(m_places, &Place::link, link)];
}

void LinkIndex::Enter(CqHandle link, CqHandle point, CqHandle vertex) {
    if (point != 0) {
        InsertIntoList(point, {link, LastOfPoint(point), 0});
    }
    SetLinkOfVertex(vertex, link);
}

void LinkIndex::InsertIntoList(CqHandle point, const Place& place) {
    m_places.Insert(place);
    const std::size_t entry = FindEntry(m_points, &PointEntry::point, point);
    if (entry == m_points.kNone) {
        m_points.Insert({point, place.link, place.link});
        return;
    }
    (place.prev != 0 ? PlaceAt(place.prev).next : m_points[entry].first) = place.link;
    (place.next != 0 ? PlaceAt(place.next).prev : m_points[entry].last) = place.link;
}

void LinkIndex::RemoveFromList(CqHandle point, const Place& place) {
    const std::size_t entry = FindEntry(m_points, &PointEntry::point, point);
    if (place.prev == 0 && place.next == 0) {
        m_points.EraseAt(entry);
    } else {
        (place.prev != 0 ? PlaceAt(place.prev).next : m_points[entry].first) = place.next;
        (place.next != 0 ? PlaceAt(place.next).prev : m_points[entry].last) = place.prev;
    }
    m_places.EraseAt(FindEntry(m_places, &Place::link, place.link));
}

void LinkIndex::ReserveOneMore() {
    m_vertices.ReserveOneMore();
    m_points.ReserveOneMore();
    m_places.ReserveOneMore();
    m_changes.Reserve(1);
}

void LinkIndex::Clear() {
    m_vertices = {};
    m_points = {};
    m_places = {};
    m_changes = {};
}

}  // namespace cqsurvey
