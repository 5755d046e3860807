#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "gdal/read/JobLayer.h"

namespace cqsurvey::gdal {

/// The survey points, in record order. A filter on the name finds its points by an index.
class PointLayer : public JobLayer {
 public:
    explicit PointLayer(const LayerContext& context);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    std::unique_ptr<OGRFeature> Read(CqHandle handle) override;
    OGREnvelope BoxOf(CqHandle handle) override;
    bool Narrow(OGRFeatureQuery& filter, std::vector<CqHandle>& handles) override;

    void Follow(CqHandle handle, std::uint64_t version) override;

 private:
    /// By names in lower case, because OGR makes no difference between the cases. Former names of
    /// points may be there too: the filter sees that they are not meant.
    using Names = std::unordered_multimap<std::string, CqHandle>;
    const Names& ByName();

    Names m_names;
    std::uint64_t m_namesVersion = 0;
};

}  // namespace cqsurvey::gdal
