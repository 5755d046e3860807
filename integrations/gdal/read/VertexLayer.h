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

 private:
    /// The vertex's place in its polyline, from 1.
    int NumberOf(CqHandle vertex, CqHandle polyline);

    /// Of the polyline that was asked for last.
    std::unordered_map<CqHandle, int> m_numbers;
    CqHandle m_numbered = 0;
    std::uint64_t m_numbersVersion = 0;
};

}  // namespace cqsurvey::gdal
