#pragma once

#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// The circles, each as two half circles.
class CircleLayer : public EntityLayer {
 public:
    explicit CircleLayer(const LayerContext& context);

 protected:
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
    bool CanErase() const override { return true; }
    CqHandle Record(const OGRFeature& feature) override;
    bool Erase(CqHandle handle) override;
};

}  // namespace cqsurvey::gdal
