#pragma once

#include <gtest/gtest.h>
#include <ogr_feature.h>
#include <ogr_geometry.h>

#include <memory>
#include <vector>

#include "gdal/FieldMap.h"

namespace cqsurvey::gdal {

/// A layer of fields with these roles, called as a job calls them, from which features are made.
class RoleLayer {
 public:
    explicit RoleLayer(const std::vector<FieldRole>& roles)
        : m_definition(new OGRFeatureDefn("things")) {
        m_definition->Reference();
        for (const FieldRole role : roles) {
            OGRFieldDefn field(FormOf(role).name, FormOf(role).type);
            m_fields.Set(role, m_definition->GetFieldCount());
            m_definition->AddFieldDefn(&field);
        }
    }
    RoleLayer(const RoleLayer&) = delete;
    RoleLayer& operator=(const RoleLayer&) = delete;
    ~RoleLayer() { m_definition->Release(); }

    [[nodiscard]] const FieldMap& Fields() const { return m_fields; }
    [[nodiscard]] OGRFeatureDefn& Definition() const { return *m_definition; }

    /// A feature of this geometry; null for none.
    [[nodiscard]] std::unique_ptr<OGRFeature> Make(const char* wkt = nullptr) const {
        auto feature = std::make_unique<OGRFeature>(m_definition);
        feature->SetFID(7);
        if (wkt != nullptr) {
            OGRGeometry* geometry = nullptr;
            EXPECT_EQ(OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry), OGRERR_NONE);
            feature->SetGeometryDirectly(geometry);
        }
        return feature;
    }

 private:
    OGRFeatureDefn* m_definition;
    FieldMap m_fields;
};

}  // namespace cqsurvey::gdal
