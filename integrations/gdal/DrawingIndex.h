#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <cqsurvey/cqsurvey.h>

namespace cqsurvey::gdal {

/// The entities of a drawing by their kinds, each kind in drawing order. The drawing itself is one
/// chain of all kinds, so this is what a layer of one kind walks along.
class DrawingIndex {
 public:
    /// Throws as CqSurveyDB::GetNextCadEntity.
    void Make(const CqSurveyDB& db);

    [[nodiscard]] const std::vector<CqHandle>& Get(EntType type) const {
        return m_handles.at(static_cast<std::size_t>(type));
    }

 private:
    std::array<std::vector<CqHandle>, EntBitmap + 1> m_handles;
};

/// Reads one entity; null when there is none of that handle or it is of another kind.
[[nodiscard]] CqCadEntityPtr ReadEntity(const CqSurveyDB& db, CqHandle handle, EntType type);

}  // namespace cqsurvey::gdal
