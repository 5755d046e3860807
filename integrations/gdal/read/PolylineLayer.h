#pragma once

#include <vector>

#include "gdal/Curve.h"
#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// Polylines as compound curves; or, when it is made for areas, the closed ones once more as
/// polygons.
class PolylineLayer : public EntityLayer {
 public:
    enum class Shape { Lines, Areas };
    PolylineLayer(const LayerContext& context, Shape shape);

 protected:
    std::vector<CqHandle> List() override;
    GIntBig Count() override;
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
    const char* WhyReadOnly() const override;

 private:
    [[nodiscard]] std::vector<ArcVertex> VerticesOfPolyline(CqHandle handle) const;

    Shape m_shape;
};

}  // namespace cqsurvey::gdal
