#pragma once

#include <cstdint>
#include <vector>

#include "platform/ChangeLog.h"
#include "platform/ProbeTable.h"
#include "platform/RecordHash.h"
#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

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
    struct VertexEntry {
        CqHandle vertex = 0;
        CqHandle link = 0;

        [[nodiscard]] bool IsFree() const noexcept { return link == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(vertex); }
    };
    /// The first and the last of a point's links, which are chained.
    struct PointEntry {
        CqHandle point = 0;
        CqHandle first = 0;
        CqHandle last = 0;

        [[nodiscard]] bool IsFree() const noexcept { return first == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(point); }
    };
    /// A link's neighbours among the links of its point; 0 for none.
    struct Place {
        CqHandle link = 0;
        CqHandle prev = 0;
        CqHandle next = 0;

        [[nodiscard]] bool IsFree() const noexcept { return link == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(link); }
    };
    /// What it takes to take one change of the indexes back.
    struct Change {
        enum Kind : std::uint32_t { kEntered, kVertexForgotten, kRemovedFromList };

        Kind kind;
        CqHandle vertex;
        CqHandle point;
        CqHandle previousLink;  ///< kEntered: what the vertex entry held before
        Place place;            ///< of the link in question
    };

    [[nodiscard]] CqHandle LinkOfVertex(CqHandle vertex) const;
    void SetLinkOfVertex(CqHandle vertex, CqHandle link);
    void ForgetVertex(CqHandle vertex);
    [[nodiscard]] CqHandle LastOfPoint(CqHandle point) const;
    [[nodiscard]] Place PlaceOf(CqHandle link) const;
    Place& PlaceAt(CqHandle link);
    void Enter(CqHandle link, CqHandle point, CqHandle vertex);
    void InsertIntoList(CqHandle point, const Place& place);
    void RemoveFromList(CqHandle point, const Place& place);
    void ReserveOneMore();
    void DropIndexes();

    ProbeTable<VertexEntry> m_vertices;
    ProbeTable<PointEntry> m_points;
    ProbeTable<Place> m_places;
    ChangeLog<Change> m_changes;
};

}  // namespace cqsurvey
