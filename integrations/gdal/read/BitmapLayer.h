#pragma once

#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// The pictures of the drawing, each at its lower left corner.
class BitmapLayer : public EntityLayer {
 public:
    explicit BitmapLayer(const LayerContext& context);

 protected:
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
};

}  // namespace cqsurvey::gdal
