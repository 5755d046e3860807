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

    /// Writes a new entity record and returns its handle. With `prev` 0 it is linked behind the
    /// tail; with `next` 0 it becomes the tail. The links of neighbours that are given are the
    /// caller's.
    CqHandle AppendEntity(std::uint16_t type, CqHandle objectIndex, std::uint16_t layerIndex,
                          std::int32_t colorID, double n, double e, double z, CqHandle prev,
                          CqHandle next);

    /// Deletes an entity record, and closes the gap in the chain when `relink`. Handles 0 and 1 are
    /// ignored.
    void Remove(CqHandle handle, bool relink);

    void SetNext(CqHandle record, CqHandle value);
    void SetPrev(CqHandle record, CqHandle value);

    void KeepStep() noexcept;
    void UndoStep() noexcept;

 private:
    void StoreHeader();

    CqHandle m_head = 0;
    CqHandle m_tail = 0;
    CqHandle m_headAtStep = 0;
    CqHandle m_tailAtStep = 0;
};

}  // namespace cqsurvey
