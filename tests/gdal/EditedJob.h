#pragma once

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {

/// Features that are read, changed and written back, or deleted.
class EditedJob : public GdalJob {
 protected:
    void Draw() {
        MakeJob([&](CqSurveyDB& db) {
            m_point = AddPoint(db, u"A", 0, 0, 1, 5);
            AddPoint(db, u"B", 10, 0, kNoHeight, 6);
            ASSERT_EQ(db.AddCoordDescription(m_point, u"TREE oak"), 1);
            m_line = AddLine(db, {{0, 0, 1, 0.3}, {10, 0, kNoHeight, -0.7}, {20, 0, 3, 0}}, 2);
            m_vertex = m_line + 1;
            ASSERT_EQ(
                db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(m_point), m_vertex), 1);
            const std::array<double, 3> at{5, 6, 7};
            m_circle = db.AddCircle(at.data(), 0.1, 2, 11);
            m_text = db.AddText(at.data(), u"Oak", 1, 2, u"Roman", 3, 45, 12, 5, 6, 7);
            m_bitmap = db.AddBitmap(at.data(), u"north.bmp", CVector(4, 4));
            db.AddGroup(u"Day 1");
        });
    }

    /// Reads a feature, lets `change` change it and writes it.
    template <class Change>
    static OGRErr Edit(GDALDataset& dataset, const char* layerName, CqHandle handle,
                       Change&& change) {
        OGRLayer* layer = dataset.GetLayerByName(layerName);
        const OGRFeatureUniquePtr feature(layer->GetFeature(static_cast<GIntBig>(handle)));
        EXPECT_NE(feature, nullptr) << layerName;
        change(*feature);
        return layer->SetFeature(feature.get());
    }
    static void Move(OGRFeature& feature, const char* wkt) {
        OGRGeometry* geometry = nullptr;
        ASSERT_EQ(OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry), OGRERR_NONE);
        feature.SetGeometryDirectly(geometry);
    }
    static std::string Shape(GDALDataset& dataset, const char* layer, CqHandle handle) {
        const OGRFeatureUniquePtr feature(
            dataset.GetLayerByName(layer)->GetFeature(static_cast<GIntBig>(handle)));
        return feature != nullptr ? Wkt(*feature) : "gone";
    }
    static std::string Value(GDALDataset& dataset, const char* layer, CqHandle handle,
                             const char* field) {
        const OGRFeatureUniquePtr feature(
            dataset.GetLayerByName(layer)->GetFeature(static_cast<GIntBig>(handle)));
        if (feature == nullptr) {
            return "gone";
        }
        return feature->IsFieldSetAndNotNull(feature->GetFieldIndex(field)) != 0
                   ? feature->GetFieldAsString(field)
                   : "null";
    }

    CqHandle m_point = 0;
    CqHandle m_line = 0;
    CqHandle m_vertex = 0;
    CqHandle m_circle = 0;
    CqHandle m_text = 0;
    CqHandle m_bitmap = 0;
};

}  // namespace cqsurvey::gdal
