#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "storage/CqRecordTable.h"
#include "storage/JobSchema.h"

namespace cqsurvey {

/// The ties between survey points and polyline vertices, both named by their entity handles, with
/// two indexes in memory: from a vertex to its one link, and from a point to its links in the order
/// in which they were added or read. A tie whose vertex entry is forgotten stays in the table and
/// with its point, and is whole again when the table is opened next.
class CqLinkTable : public CqRecordTable<LinkLayout> {
 public:
    /// Builds both indexes from the records in record order.
    void Open(const CString& name) override;
    void Close() override;

    /// Makes the link of the vertex current; false when it has none.
    bool FindByVertex(CqHandle vertex);

    /// The record numbers of the point's links.
    [[nodiscard]] std::vector<CqHandle> ListByPoint(CqHandle point) const;

    /// Adds a link. The caller has made sure that the vertex has none. A point of 0 has no list.
    void AppendLink(CqHandle point, CqHandle vertex);

    /// Removes the link of the vertex and returns 1. 0 when it has none, and also when `point` is
    /// neither 0 nor the link's: only the vertex entry is forgotten then.
    int Unlink(CqHandle point, CqHandle vertex);

    /// The step that the indexes followed was made durable.
    void KeepStep() noexcept;
    /// Puts the indexes back to the last KeepStep; the records are put back by the store. A tie
    /// that was forgotten before stays forgotten.
    void UndoStep() noexcept;

 private:
    /// A link's place among the links of its point; 0 for none.
    struct Neighbours {
        CqHandle prev = 0;
        CqHandle next = 0;
    };
    struct List {
        CqHandle first = 0;
        CqHandle last = 0;
    };
    /// What UndoStep needs to take back one change of the indexes.
    struct Change {
        enum Kind : std::uint32_t { kEntered, kVertexForgotten, kRemovedFromList };

        Kind kind;
        CqHandle link;
        CqHandle vertex;
        CqHandle point;
        CqHandle previousLink;  ///< kEntered: what the vertex entry held before
        Neighbours place;       ///< kRemovedFromList
    };

    [[nodiscard]] CqHandle LinkOfVertex(CqHandle vertex) const;
    void Enter(CqHandle link, CqHandle point, CqHandle vertex);
    void InsertIntoList(CqHandle point, CqHandle link, Neighbours place);
    void RemoveFromList(CqHandle point, CqHandle link) noexcept;
    void Undo(const Change& change);
    void DropIndexes() noexcept;

    std::unordered_map<CqHandle, CqHandle> m_linkByVertex;
    std::unordered_map<CqHandle, List> m_listByPoint;
    std::unordered_map<CqHandle, Neighbours> m_places;
    std::vector<Change> m_changes;
};

}  // namespace cqsurvey
