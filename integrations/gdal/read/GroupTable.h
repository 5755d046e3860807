#pragma once

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// The groups of points, as a table. A feature's id is the group's.
class GroupTable : public JobLayer {
 public:
    explicit GroupTable(const LayerContext& context);

    /// The name of a group; empty when there is none. A point may be in a group that was deleted.
    [[nodiscard]] static CString NameOf(CqSurveyDB& db, CqHandle group);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;
};

}  // namespace cqsurvey::gdal
