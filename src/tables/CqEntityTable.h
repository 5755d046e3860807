#pragma once

#include <cstdint>

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The entities: one record for everything that is drawn, with its kind, layer, colour, coordinates
/// and the handle of its own data in the table of its kind.
///
/// The records are linked into a chain, whose order is the drawing's order; a polyline is followed
/// by its vertices. Records are in the order of their creation, so the two orders differ once an
/// entity has been inserted between others. Record 1 is the chain's header and not an entity:
///
///     header (1) --next--> head 2 <--> 3 <--> 7 <--> 4 <--> tail 9
///                --prev----------------------------------->
///
/// 0 ends the chain at either side. The header changes with the head or the tail, so both are kept
/// in memory as well.
class CqEntityTable : public CqRecordTable<EntityLayout> {
 public:
    static constexpr CqHandle kHeader = 1;

    /// Also writes the header of an empty chain.
    void Create(const CString& name) override;
    /// Also reads the header.
    void Open(const CString& name) override;

    // The first and last entity of the chain, 0 in an empty drawing.

    [[nodiscard]] CqHandle GetHead() const { return m_head; }
    [[nodiscard]] CqHandle GetTail() const { return m_tail; }

    /// What an entity record holds in addition to its place in the chain.
    struct Entity {
        std::uint16_t type;
        CqHandle objectIndex;
        std::uint16_t layerIndex;
        std::int32_t colorID;
        double n;  ///< northing
        double e;  ///< easting
        double z;  ///< height
    };

    /// Writes a new entity record and returns its handle. With `prev` 0 it is linked after the
    /// tail; with `next` 0 it becomes the tail. The caller links neighbours that it names.
    CqHandle AppendEntity(const Entity& entity, CqHandle prev, CqHandle next);

    /// Writes a new entity record at the end of the chain.
    CqHandle AppendEntity(const Entity& entity) { return AppendEntity(entity, 0, 0); }

    /// The record of an entity of this type; null when the entity has another type and for handles
    /// 0 and 1, which are not entities. Throws error::kNoRecord when the entity is gone.
    [[nodiscard]] const std::byte* FindEntity(CqHandle handle, int type);

    /// Moves an entity to the coordinates `coords`: easting, northing, height.
    void StorePoint(CqHandle handle, const double* coords);

    /// Deletes an entity record. With `relink` its neighbours are linked to each other, otherwise
    /// they keep their links to it. Handles 0 and 1 are ignored.
    void Remove(CqHandle handle, bool relink);

    void SetNext(CqHandle record, CqHandle value);
    void SetPrev(CqHandle record, CqHandle value);

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    /// Writes head and tail to the header record.
    void StoreHeader();

    CqHandle m_head = 0;
    CqHandle m_tail = 0;
    CqHandle m_headAtStep = 0;
    CqHandle m_tailAtStep = 0;
};

}  // namespace cqsurvey
