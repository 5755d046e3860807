#pragma once

#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// The pictures of the drawing, each at its lower left corner.
class BitmapLayer : public EntityLayer {
 public:
    explicit BitmapLayer(const LayerContext& context);

 protected:
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
    bool CanErase() const override { return true; }
    CqHandle Record(const OGRFeature& feature) override;
    bool Erase(CqHandle handle) override;
};

}  // namespace cqsurvey::gdal
