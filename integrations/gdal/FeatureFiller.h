#pragma once

#include <ogr_feature.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <cqsurvey/Types.h>

#include "gdal/FieldMap.h"

namespace cqsurvey::gdal {

/// Puts what was read into a new feature, except for what the reader ignores. Styles are always
/// there: QGIS tells OGR to ignore them, and draws with them all the same.
class FeatureFiller {
 public:
    FeatureFiller(OGRFeatureDefn& definition, const FieldMap& fields, GIntBig id);

    void Set(FieldRole role, int value);
    void Set(FieldRole role, GIntBig value);
    /// Null when the value is not a number.
    void Set(FieldRole role, double value);
    /// Null when the text is empty.
    void Set(FieldRole role, const CString& value);
    void SetBytes(FieldRole role, const std::uint8_t* bytes, std::uint32_t count);
    void SetTime(FieldRole role, std::uint32_t seconds);

    /// Whether it is worth making a geometry.
    [[nodiscard]] bool WantsGeometry() const;
    void Set(std::unique_ptr<OGRGeometry> geometry);
    void SetStyle(const std::string& style);

    [[nodiscard]] std::unique_ptr<OGRFeature> Take() { return std::move(m_feature); }

 private:
    /// The field's index; nothing when it is ignored.
    [[nodiscard]] std::optional<int> Index(FieldRole role) const;

    OGRFeatureDefn& m_definition;
    const FieldMap& m_fields;
    std::unique_ptr<OGRFeature> m_feature;
};

}  // namespace cqsurvey::gdal
