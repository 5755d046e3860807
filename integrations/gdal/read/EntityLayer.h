#pragma once

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// A layer of the entities of one kind, in drawing order.
class EntityLayer : public JobLayer {
 protected:
    EntityLayer(const LayerContext& context, RecordKind kind, const char* name,
                OGRwkbGeometryType type, std::initializer_list<FieldRole> roles);

    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;

    /// Fills in what the kind has beyond layer, colour and visibility. Returns false when the
    /// entity is no feature of this layer.
    virtual bool Fill(FeatureFiller& filler, const CqCadEntity& entity) = 0;
    using JobLayer::Fill;

    /// The entity's place with its height, or the one for heights that were not measured.
    [[nodiscard]] std::unique_ptr<OGRPoint> PlaceOf(const CqCadEntity& entity) const;
    [[nodiscard]] double HeightFor(double height) const;

 private:
    EntType m_type;
};

}  // namespace cqsurvey::gdal
