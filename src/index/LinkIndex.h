#pragma once

#include <cstdint>
#include <vector>

#include "platform/ChangeLog.h"
#include "platform/ProbeTable.h"
#include "platform/RecordHash.h"
#include "tables/CqLinkTable.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// Finds the ties of a vertex and of a survey point, in memory:
///
///     vertex --> its one link            m_vertices
///     point  --> first and last link     m_points
///     link   --> its neighbours          m_places: a list through the links of each point,
///                                        in the order in which they were added or read
///
/// All three are built when the job is opened and follow every tie. A vertex whose entry is
/// forgotten keeps its link in the table and in the point's list, and is tied again when the job is
/// opened next. Undoing a step takes the changes back one by one and needs no memory for it.
class LinkIndex : public JobPart {
 public:
    /// `links` must outlive the index.
    explicit LinkIndex(CqLinkTable& links) : m_links(links) {}

    /// Builds the indexes from the records in record order.
    void Build();

    void OnCreate(const CString& /*root*/) override { Build(); }
    void OnOpen(const CString& /*root*/) override { Build(); }
    void OnClose() override { Clear(); }

    /// The link of the vertex, 0 when it has none.
    [[nodiscard]] CqHandle FindByVertex(CqHandle vertex) const;

    /// The record numbers of the point's links.
    [[nodiscard]] std::vector<CqHandle> ListByPoint(CqHandle point) const;

    /// Adds a link. The caller has made sure that the vertex has none. A point of 0 has no list.
    void AppendLink(CqHandle point, CqHandle vertex);

    /// Removes the link of the vertex and returns 1. 0 when it has none, and also when `point` is
    /// neither 0 nor the link's: then only the vertex entry is forgotten.
    int Unlink(CqHandle point, CqHandle vertex);

    void KeepStep() noexcept override;
    /// A tie that was forgotten before the step stays forgotten.
    void UndoStep() noexcept override;

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

    void SetLinkOfVertex(CqHandle vertex, CqHandle link);
    void ForgetVertex(CqHandle vertex);
    [[nodiscard]] CqHandle LastOfPoint(CqHandle point) const;
    [[nodiscard]] Place PlaceOf(CqHandle link) const;
    Place& PlaceAt(CqHandle link);
    void Enter(CqHandle link, CqHandle point, CqHandle vertex);
    void InsertIntoList(CqHandle point, const Place& place);
    void RemoveFromList(CqHandle point, const Place& place);
    void ReserveOneMore();
    void Clear();

    CqLinkTable& m_links;
    ProbeTable<VertexEntry> m_vertices;
    ProbeTable<PointEntry> m_points;
    ProbeTable<Place> m_places;
    ChangeLog<Change> m_changes;
};

}  // namespace cqsurvey
