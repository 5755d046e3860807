#pragma once

#include <cstdint>
#include <unordered_map>

#include "gdal/read/EntityLayer.h"

namespace cqsurvey::gdal {

/// The vertices of polylines with their bulges, and the points to which they are tied.
class VertexLayer : public EntityLayer {
 public:
    explicit VertexLayer(const LayerContext& context);

 protected:
    bool Fill(FeatureFiller& filler, const CqCadEntity& entity) override;
    CqHandle Record(const OGRFeature& feature) override;

 private:
    /// The vertex's place in its polyline, from 1.
    int NumberOf(CqHandle vertex);

    std::unordered_map<CqHandle, int> m_numbers;
    std::uint64_t m_numbersVersion = 0;
};

}  // namespace cqsurvey::gdal
