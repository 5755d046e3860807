#pragma once

#include <ogr_feature.h>

#include <array>
#include <optional>

#include "gdal/FieldRole.h"

namespace cqsurvey::gdal {

/// Which field of a layer says what.
class FieldMap {
 public:
    FieldMap() { m_index.fill(-1); }

    void Set(FieldRole role, int index) { m_index.at(static_cast<std::size_t>(role)) = index; }
    [[nodiscard]] std::optional<int> Find(FieldRole role) const {
        const int index = m_index.at(static_cast<std::size_t>(role));
        return index >= 0 ? std::optional(index) : std::nullopt;
    }

 private:
    std::array<int, kFieldRoles> m_index{};
};

}  // namespace cqsurvey::gdal
