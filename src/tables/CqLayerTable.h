#pragma once

#include <cstdint>

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"
#include "tables/RecordNames.h"

namespace cqsurvey {

/// The drawing's layers, and which of them is current: new entities are drawn on that one.
///
/// The current layer is a choice of the running application and is stored nowhere; a job opens with
/// layer "0". It is not the same as the table's current record, which any look-up moves. Its
/// handle, name, colour and line style are kept beside the table, so that drawing needs no look-up.
class CqLayerTable : public CqRecordTable<LayerLayout> {
 public:
    /// Adds layer "0" and makes it current.
    void Create(const CString& name) override;
    /// Makes layer "0" current. If there is none, no layer is current.
    void Open(const CString& name) override;

    void Close() override;

    /// Makes the first layer in record order whose name is exactly `name`, up to a zero, the
    /// current record. False when there is none.
    [[nodiscard]] bool FindByName(const CString& name);

    /// Appends a layer, makes it the table's current record and returns its handle.
    CqHandle AppendLayer(const CString& name, std::int32_t color, int line);

    /// Deletes the table's current record. There is no current record afterwards.
    void DeleteLayer();

    /// Writes the buffer to the table's current record, and updates what is kept of the current
    /// layer if the record is that layer.
    void StoreLayer();

    /// Makes the layer of this name the current layer. False, with nothing changed, when there is
    /// no such layer.
    bool SetCurrentLayer(const CString& name);
    [[nodiscard]] const CString& GetCurrentLayerName() const { return m_current.name; }
    [[nodiscard]] CqHandle GetCurrentLayerHandle() const { return m_current.handle; }

    /// The name of a layer, empty when it is gone.
    [[nodiscard]] CString GetName(CqHandle layer);

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    /// What is kept of the current layer.
    struct Current {
        /// Reserves room for any name, so that assigning one to another, as an undo does, needs no
        /// memory.
        Current() { name.reserve(field::Text52::kCapacity); }

        CqHandle handle = 0;
        CString name;
        std::int32_t color = 0;
        std::uint16_t line = 0;
    };

    /// Takes the table's current record as the current layer.
    void FillCurrent();

    Current m_current;
    Current m_atStep;
    RecordNames m_names;
};

}  // namespace cqsurvey
