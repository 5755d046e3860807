#pragma once

#include <cstdint>

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// One record for every entity of the drawing, threaded into the entity chain. Record 1 is the
/// chain's header: its next link names the head, its previous link the tail.
class CqEntityTable : public CqRecordTable<EntityLayout> {
 public:
    static constexpr CqHandle kHeader = 1;

    void Create(const CString& name) override;
    void Open(const CString& name) override;

    [[nodiscard]] CqHandle GetHead() const { return m_head; }
    [[nodiscard]] CqHandle GetTail() const { return m_tail; }

    /// What an entity record holds beside its place in the chain.
    struct Entity {
        std::uint16_t type;
        CqHandle objectIndex;
        std::uint16_t layerIndex;
        std::int32_t colorID;
        double n;
        double e;
        double z;
    };

    /// Writes a new entity record and returns its handle. With `prev` 0 it is linked after the
    /// tail; with `next` 0 it becomes the tail. Neighbours that are given are linked by the caller.
    CqHandle AppendEntity(const Entity& entity, CqHandle prev, CqHandle next);

    /// Writes a new entity record at the end of the chain.
    CqHandle AppendEntity(const Entity& entity) { return AppendEntity(entity, 0, 0); }

    /// The handle's record when it is an entity, that is neither 0 nor the chain's header, and of
    /// this type; otherwise null. Throws error::kNoRecord for an entity that is gone.
    [[nodiscard]] const std::byte* FindEntity(CqHandle handle, int type);

    /// Moves an entity to the coordinates `coords`: easting, northing, height.
    void StorePoint(CqHandle handle, const double* coords);

    /// Deletes an entity record, and closes the gap in the chain when `relink`. Handles 0 and 1 are
    /// ignored.
    void Remove(CqHandle handle, bool relink);

    void SetNext(CqHandle record, CqHandle value);
    void SetPrev(CqHandle record, CqHandle value);

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    void StoreHeader();

    CqHandle m_head = 0;
    CqHandle m_tail = 0;
    CqHandle m_headAtStep = 0;
    CqHandle m_tailAtStep = 0;
};

}  // namespace cqsurvey
