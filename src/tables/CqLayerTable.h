#pragma once

#include <cstdint>

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The drawing's layers, and which of them is current.
class CqLayerTable : public CqRecordTable<LayerLayout> {
 public:
    /// Adds layer "0" and makes it current.
    void Create(const CString& name) override;
    /// Makes layer "0" current; without one no layer is.
    void Open(const CString& name) override;

    /// The first layer in record order whose name is exactly `name` becomes the current record.
    [[nodiscard]] bool FindByName(const CString& name);

    /// Appends a layer, makes it the current record and returns its handle.
    CqHandle AppendLayer(const CString& name, std::int32_t color, int line);

    /// Writes the buffer, and with it the cache when it is the current layer's.
    void StoreLayer();

    /// False, and the current layer unchanged, when there is none of the name.
    bool SetCurrentLayer(const CString& name);
    [[nodiscard]] const CString& GetCurrentLayerName() const { return m_current.name; }
    [[nodiscard]] CqHandle GetCurrentLayerHandle() const { return m_current.handle; }

    /// The name of a layer, empty when it is gone.
    [[nodiscard]] CString GetName(CqHandle layer);

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    struct Current {
        /// With room for any name, so that no copy of one to another needs memory.
        Current() { name.reserve(field::Text52::kCapacity); }

        CqHandle handle = 0;
        CString name;
        std::int32_t color = 0;
        std::uint16_t line = 0;
    };

    void FillCurrent();

    Current m_current;
    Current m_atStep;
};

}  // namespace cqsurvey
