#pragma once

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// The background image, as a table of one row with the bytes of its file: other formats have no
/// place for a picture in a drawing, but many for bytes. Its settings, such as its brightness, are
/// among the job's settings.
class BackgroundTable : public JobLayer {
 public:
    explicit BackgroundTable(const LayerContext& context);

    /// Whether the job has an image.
    static bool IsThere(CqSurveyDB& db);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;
};

}  // namespace cqsurvey::gdal
