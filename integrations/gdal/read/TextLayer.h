#pragma once

#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// The texts, each at its insertion point with a label style.
class TextLayer : public EntityLayer {
 public:
    explicit TextLayer(const LayerContext& context);

 protected:
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
};

}  // namespace cqsurvey::gdal
