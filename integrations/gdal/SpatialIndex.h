#pragma once

#include <cpl_quad_tree.h>
#include <ogr_core.h>

#include <memory>
#include <utility>
#include <vector>

#include <cqsurvey/Types.h>

namespace cqsurvey::gdal {

/// Finds the records whose boxes meet a rectangle.
class SpatialIndex {
 public:
    /// Boxes that are not at a place are left out: they meet nothing.
    explicit SpatialIndex(const std::vector<std::pair<CqHandle, OGREnvelope>>& boxes);

    /// In the order of the handles.
    [[nodiscard]] std::vector<CqHandle> Find(const OGREnvelope& rectangle) const;

 private:
    struct Destroy {
        void operator()(CPLQuadTree* tree) const { CPLQuadTreeDestroy(tree); }
    };
    std::unique_ptr<CPLQuadTree, Destroy> m_tree;
};

}  // namespace cqsurvey::gdal
