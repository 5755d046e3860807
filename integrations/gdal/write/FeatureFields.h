#pragma once

#include <ogr_feature.h>

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include <cqsurvey/Types.h>

#include "gdal/FieldMap.h"

namespace cqsurvey::gdal {

/// Why a feature cannot be recorded.
class RecordFailure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The fields of a feature by what they say. A field that is missing, not set or null says nothing.
class FeatureFields {
 public:
    FeatureFields(const OGRFeature& feature, const FieldMap& fields)
        : m_feature(feature), m_fields(fields) {}

    [[nodiscard]] const OGRFeature& Feature() const { return m_feature; }
    /// Empty when there is none.
    [[nodiscard]] CString Text(FieldRole role) const;
    /// Empty when there is none. Lives as long as the feature keeps the field.
    [[nodiscard]] std::span<const std::uint8_t> Bytes(FieldRole role) const;
    [[nodiscard]] std::optional<double> Real(FieldRole role) const;
    /// Throws RecordFailure when the number does not fit.
    [[nodiscard]] std::optional<std::int32_t> Int(FieldRole role) const;
    [[nodiscard]] std::optional<std::uint32_t> Unsigned(FieldRole role) const;
    /// Seconds since 1970; a time without a zone is taken for UTC. Throws RecordFailure when the
    /// time lies outside of what a job holds.
    [[nodiscard]] std::optional<std::uint32_t> Time(FieldRole role) const;
    [[nodiscard]] std::string Describe() const;

 private:
    [[nodiscard]] std::optional<int> Index(FieldRole role) const;
    [[nodiscard]] std::optional<GIntBig> Whole(FieldRole role, GIntBig least, GIntBig most) const;

    const OGRFeature& m_feature;
    const FieldMap& m_fields;
};

}  // namespace cqsurvey::gdal
