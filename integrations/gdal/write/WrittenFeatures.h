#pragma once

#include <cpl_port.h>

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

#include "gdal/write/FeatureRecorder.h"

namespace cqsurvey::gdal {

/// The features that a program has handed to a layer, in their order, and the records that each of
/// them has become. Those of a transaction go when it is undone.
class WrittenFeatures {
 public:
    struct Entry {
        GIntBig id = 0;
        std::size_t first = 0;  ///< of its parts
        std::size_t count = 0;
    };

    void Add(GIntBig id, const std::vector<RecordedPart>& parts);
    [[nodiscard]] std::size_t GetCount() const { return m_entries.size(); }
    [[nodiscard]] const Entry& At(std::size_t index) const { return m_entries.at(index); }
    /// The place of the feature that came last with this id; nothing when there is none.
    [[nodiscard]] std::optional<std::size_t> Find(GIntBig id);
    [[nodiscard]] const RecordedPart& PartOf(const Entry& entry, std::size_t index) const {
        return m_parts.at(entry.first + index);
    }

    void BeginTransaction() { m_kept = m_entries.size(); }
    void UndoTransaction();

 private:
    std::vector<Entry> m_entries;
    std::vector<RecordedPart> m_parts;
    std::unordered_map<GIntBig, std::size_t> m_byId;  ///< of the first m_indexed entries
    std::size_t m_indexed = 0;
    std::size_t m_kept = 0;
};

}  // namespace cqsurvey::gdal
