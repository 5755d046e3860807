#pragma once

#include <ogr_feature.h>

#include <array>

#include "gdal/FieldMap.h"
#include "gdal/write/FeatureFields.h"

namespace cqsurvey::gdal {

/// What a feature says otherwise than the record of the job that it is written over. Only that is
/// changed, so what a feature cannot say exactly, such as the bulge of an arc, stays as it is. A
/// field that is not set says nothing; one that is null empties.
class FeatureChange {
 public:
    /// `before` is the record as it is read, `after` the feature. Both outlive the change. Throws
    /// RecordFailure when the record has a geometry and the feature has none.
    FeatureChange(const OGRFeature& before, const OGRFeature& after, const FieldMap& fields,
                  double missingHeight);

    [[nodiscard]] const FeatureFields& After() const { return m_after; }
    [[nodiscard]] bool Is(FieldRole role) const;
    [[nodiscard]] bool IsGeometry() const { return m_geometry; }

    // The value afterwards; `before` is what the record has. An empty number is 0.
    [[nodiscard]] double Real(FieldRole role, double before) const;
    [[nodiscard]] int Int(FieldRole role, int before) const;
    [[nodiscard]] std::uint32_t Unsigned(FieldRole role, std::uint32_t before) const;
    [[nodiscard]] CString Text(FieldRole role, const CString& before) const;
    /// The place of a feature that is one point. A flat point says nothing of the height, and so
    /// does the height that stands for one that was not measured. Throws RecordFailure as
    /// OnlyPlaceOf.
    [[nodiscard]] std::array<double, 3> Place(const std::array<double, 3>& before) const;
    /// The height afterwards of a place that has the height `shown` in the feature.
    [[nodiscard]] double Height(double before, double shown) const;

    /// The name of the first changed field that the record, read again, does not have; null when it
    /// has them all. Some follow from others, and the job has no operation for some.
    [[nodiscard]] const char* FindFieldNotKept(const OGRFeature& read) const;

 private:
    const OGRFeature& m_before;
    FeatureFields m_after;
    const FieldMap& m_fields;
    double m_missingHeight;
    bool m_geometry;
};

}  // namespace cqsurvey::gdal
