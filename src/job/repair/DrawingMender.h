#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <unordered_map>
#include <vector>

#include "job/repair/SavedJob.h"

namespace cqsurvey {

/// Makes a drawing of saved entities and of the data that they name, in which each entity has data
/// of its kind, each record of data has one entity, and the chain runs through all of them.
///
///     1  order     what is left of the chain: runs of entities that still name each other. A run
///                  has its place by the number that its first entity names as the one before it
///     2  data      each entity gets its record; an entity whose record is gone gets a neutral one
///     3  vertices  each finds its polyline, by its record or else by its neighbours in the order
///     4  entities  polylines, points, texts, circles and bitmaps whose entity is gone get one
///     5  chain     the entities in the order, each polyline followed by its vertices
///
///     chain before     [2]-[3]-(4)-(5)-[6]-[7]       (4) and (5) are gone
///     runs             2 3 | 6 7
///     chain after      [2]-[3]-[6]-[7]
class DrawingMender {
 public:
    explicit DrawingMender(SavedJob& job) : m_job(job) {}

    void Mend();

 private:
    static constexpr std::size_t kKinds = 7;

    /// A number that no record of a kind has: one behind the last or, if there is none, a gap.
    template <class Records>
    [[nodiscard]] CqHandle NextNumber(const Records& records, int type) {
        CqHandle& next = m_nextData[static_cast<std::size_t>(type)];
        if (next == 0) {
            next = records.empty() ? 1 : records.rbegin()->first + 1;
        }
        while (next == 0 || records.contains(next)) {
            ++next;
        }
        return next++;
    }

    void FindNextEntity();
    void FindOrder();
    void ClaimData();
    void ClaimOne(CqHandle entity, std::byte* record);
    void MakeData(CqHandle entity, std::byte* record);
    [[nodiscard]] bool HasData(int type, CqHandle object) const;
    void NoteGonePlines();
    void FindPlines();
    [[nodiscard]] bool IsPline(CqHandle entity) const;
    [[nodiscard]] int TypeOf(CqHandle entity) const;
    void DropEntity(CqHandle entity, const char* why);
    void DropVerticesWithoutEntity();
    void RestorePlines();
    void MakePlineData(CqHandle entity, std::byte* record);
    void RestorePoints();
    void RestorePlaced();
    template <class Records>
    void RestoreKind(const Records& records, int type, const char* table);
    std::byte* MakeEntity(CqHandle entity, int type, CqHandle object);
    void FindTies();
    void CopyPlaceOfTie(CqHandle entity, std::byte* record);
    [[nodiscard]] CqHandle NextEntity();
    void GatherVertices();
    void LinkChain();

    SavedJob& m_job;
    std::vector<CqHandle> m_order;
    CqHandle m_nextEntity = 0;
    std::array<CqHandle, kKinds> m_nextData{};  ///< by kind; 0 as long as none was needed
    /// By kind, the entity of each record of data.
    std::vector<std::unordered_map<CqHandle, CqHandle>> m_owners{kKinds};
    /// Vertices whose record is neutral, so that they do not know their polyline.
    std::set<CqHandle> m_strayVertices;
    /// Polylines that vertices name and that have no entity.
    std::set<CqHandle> m_gonePlines;
    /// Polylines whose record is neutral, so that they do not know their bound.
    std::set<CqHandle> m_strayPlines;
    /// By point, the vertex that runs through it.
    std::map<CqHandle, CqHandle> m_ties;
    /// By polyline, its vertices in the order.
    std::map<CqHandle, std::vector<CqHandle>> m_vertices;
};

}  // namespace cqsurvey
