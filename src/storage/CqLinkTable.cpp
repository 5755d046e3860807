#include "storage/CqLinkTable.h"

#include <ranges>

namespace cqsurvey {

void CqLinkTable::Open(const CString& name) {
    CqDbTable::Open(name);
    DropIndexes();
    for (int found = First(kRecordOrder); found != 0; found = Next()) {
        Enter(GetCurrentHandle(), Get<"PointDataID">(), Get<"VertexDataID">());
    }
}

void CqLinkTable::Close() {
    DropIndexes();
    CqDbTable::Close();
}

bool CqLinkTable::FindByVertex(CqHandle vertex) {
    const CqHandle link = LinkOfVertex(vertex);
    if (link == 0) {
        return false;
    }
    GoTo(link);
    return true;
}

std::vector<CqHandle> CqLinkTable::ListByPoint(CqHandle point) const {
    std::vector<CqHandle> links;
    const auto list = m_listByPoint.find(point);
    if (list != m_listByPoint.end()) {
        for (CqHandle link = list->second.first; link != 0; link = m_places.at(link).next) {
            links.push_back(link);
        }
    }
    return links;
}

void CqLinkTable::AppendLink(CqHandle point, CqHandle vertex) {
    Layout::Bytes record{};
    Layout::Set<"PointDataID">(record.data(), point);
    Layout::Set<"VertexDataID">(record.data(), vertex);
    const CqHandle link = AppendRecord(record);
    m_changes.push_back({Change::kEntered, link, vertex, point, LinkOfVertex(vertex), {}});
    Enter(link, point, vertex);
}

int CqLinkTable::Unlink(CqHandle point, CqHandle vertex) {
    if (!FindByVertex(vertex)) {
        return 0;
    }
    const CqHandle link = GetCurrentHandle();
    const CqHandle tiedPoint = Get<"PointDataID">();
    m_changes.push_back({Change::kVertexForgotten, link, vertex, tiedPoint, 0, {}});
    m_linkByVertex.erase(vertex);
    if (point != 0 && point != tiedPoint) {
        return 0;
    }
    if (const auto place = m_places.find(link); place != m_places.end()) {
        m_changes.push_back({Change::kRemovedFromList, link, vertex, tiedPoint, 0, place->second});
        RemoveFromList(tiedPoint, link);
    }
    DeleteRecord(link);
    return 1;
}

void CqLinkTable::KeepStep() noexcept {
    constexpr std::size_t kKeptCapacity = 1024;
    m_changes.clear();
    if (m_changes.capacity() > kKeptCapacity) {
        std::vector<Change>().swap(m_changes);
    }
}

void CqLinkTable::UndoStep() noexcept {
    for (const Change& change : std::views::reverse(m_changes)) {
        Undo(change);
    }
    KeepStep();
}

CqHandle CqLinkTable::LinkOfVertex(CqHandle vertex) const {
    const auto entry = m_linkByVertex.find(vertex);
    return entry != m_linkByVertex.end() ? entry->second : 0;
}

void CqLinkTable::Enter(CqHandle link, CqHandle point, CqHandle vertex) {
    m_linkByVertex[vertex] = link;
    if (point != 0) {
        InsertIntoList(point, link, {m_listByPoint[point].last, 0});
    }
}

void CqLinkTable::InsertIntoList(CqHandle point, CqHandle link, Neighbours place) {
    List& list = m_listByPoint[point];
    m_places[link] = place;
    (place.prev != 0 ? m_places[place.prev].next : list.first) = link;
    (place.next != 0 ? m_places[place.next].prev : list.last) = link;
}

void CqLinkTable::RemoveFromList(CqHandle point, CqHandle link) noexcept {
    const auto entry = m_places.find(link);
    const auto list = m_listByPoint.find(point);
    if (entry == m_places.end() || list == m_listByPoint.end()) {
        return;
    }
    const Neighbours place = entry->second;
    m_places.erase(entry);
    (place.prev != 0 ? m_places[place.prev].next : list->second.first) = place.next;
    (place.next != 0 ? m_places[place.next].prev : list->second.last) = place.prev;
    if (list->second.first == 0) {
        m_listByPoint.erase(list);
    }
}

void CqLinkTable::Undo(const Change& change) {
    switch (change.kind) {
        case Change::kEntered:
            RemoveFromList(change.point, change.link);
            if (change.previousLink != 0) {
                m_linkByVertex[change.vertex] = change.previousLink;
            } else {
                m_linkByVertex.erase(change.vertex);
            }
            break;
        case Change::kVertexForgotten:
            m_linkByVertex[change.vertex] = change.link;
            break;
        case Change::kRemovedFromList:
            InsertIntoList(change.point, change.link, change.place);
            break;
    }
}

void CqLinkTable::DropIndexes() noexcept {
    m_linkByVertex = {};
    m_listByPoint = {};
    m_places = {};
    m_changes = {};
}

}  // namespace cqsurvey
