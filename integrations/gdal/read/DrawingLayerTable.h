#pragma once

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// The layers of the drawing, as a table.
class DrawingLayerTable : public JobLayer {
 public:
    explicit DrawingLayerTable(const LayerContext& context);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;
};

}  // namespace cqsurvey::gdal
