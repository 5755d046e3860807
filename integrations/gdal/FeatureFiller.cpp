#include "gdal/FeatureFiller.h"

#include <cpl_time.h>

#include <cmath>
#include <ctime>
#include <utility>

#include <cqsurvey/Text.h>

namespace cqsurvey::gdal {

FeatureFiller::FeatureFiller(OGRFeatureDefn& definition, const FieldMap& fields, GIntBig id)
    : m_definition(definition),
      m_fields(fields),
      m_feature(std::make_unique<OGRFeature>(&definition)) {
    m_feature->SetFID(id);
}

std::optional<int> FeatureFiller::Index(FieldRole role) const {
    const std::optional<int> index = m_fields.Find(role);
    if (!index || m_definition.GetFieldDefn(*index)->IsIgnored() != 0) {
        return std::nullopt;
    }
    return index;
}

void FeatureFiller::Set(FieldRole role, int value) {
    if (const auto index = Index(role)) {
        m_feature->SetField(*index, value);
    }
}

void FeatureFiller::Set(FieldRole role, GIntBig value) {
    if (const auto index = Index(role)) {
        m_feature->SetField(*index, value);
    }
}

void FeatureFiller::Set(FieldRole role, double value) {
    if (const auto index = Index(role)) {
        if (std::isnan(value)) {
            m_feature->SetFieldNull(*index);
        } else {
            m_feature->SetField(*index, value);
        }
    }
}

void FeatureFiller::Set(FieldRole role, const CString& value) {
    if (const auto index = Index(role)) {
        if (value.empty()) {
            m_feature->SetFieldNull(*index);
        } else {
            m_feature->SetField(*index, ToUtf8(value).c_str());
        }
    }
}

void FeatureFiller::SetBytes(FieldRole role, const std::uint8_t* bytes, std::uint32_t count) {
    if (const auto index = Index(role)) {
        m_feature->SetField(*index, static_cast<int>(count), bytes);
    }
}

void FeatureFiller::SetTime(FieldRole role, std::uint32_t seconds) {
    if (const auto index = Index(role)) {
        std::tm parts{};
        CPLUnixTimeToYMDHMS(static_cast<GIntBig>(seconds), &parts);
        constexpr int kUtc = 100;
        m_feature->SetField(*index, parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                            parts.tm_hour, parts.tm_min, static_cast<float>(parts.tm_sec), kUtc);
    }
}

bool FeatureFiller::WantsGeometry() const {
    return m_definition.GetGeomFieldCount() > 0 && m_definition.IsGeometryIgnored() == 0;
}

void FeatureFiller::Set(std::unique_ptr<OGRGeometry> geometry) {
    if (geometry) {
        geometry->assignSpatialReference(m_definition.GetGeomFieldDefn(0)->GetSpatialRef());
        m_feature->SetGeometryDirectly(geometry.release());
    }
}

void FeatureFiller::SetStyle(const std::string& style) {
    m_feature->SetStyleString(style.c_str());
}

}  // namespace cqsurvey::gdal
