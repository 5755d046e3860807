#pragma once

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// The groups of points, as a table. A feature's id is the group's.
class GroupTable : public JobLayer {
 public:
    explicit GroupTable(const LayerContext& context);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;
};

}  // namespace cqsurvey::gdal
