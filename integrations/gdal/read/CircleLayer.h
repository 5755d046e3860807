#pragma once

#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// The circles, each as two half circles.
class CircleLayer : public EntityLayer {
 public:
    explicit CircleLayer(const LayerContext& context);

 protected:
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
};

}  // namespace cqsurvey::gdal
