#include "gdal/SpatialIndex.h"

#include <cpl_conv.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace cqsurvey::gdal {

namespace {

bool IsPlace(const OGREnvelope& box) {
    return std::isfinite(box.MinX) && std::isfinite(box.MinY) && std::isfinite(box.MaxX) &&
           std::isfinite(box.MaxY) && box.MinX <= box.MaxX && box.MinY <= box.MaxY;
}

}  // namespace

// The tree keeps pointers; a handle is kept in their place.
SpatialIndex::SpatialIndex(const std::vector<std::pair<CqHandle, OGREnvelope>>& boxes) {
    OGREnvelope all;
    for (const auto& [handle, box] : boxes) {
        if (IsPlace(box)) {
            all.Merge(box);
        }
    }
    if (all.IsInit() == 0) {
        return;
    }
    const CPLRectObj bounds{all.MinX, all.MinY, all.MaxX, all.MaxY};
    m_tree.reset(CPLQuadTreeCreate(&bounds, nullptr));
    CPLQuadTreeSetMaxDepth(m_tree.get(),
                           CPLQuadTreeGetAdvisedMaxDepth(static_cast<int>(boxes.size())));
    for (const auto& [handle, box] : boxes) {
        if (IsPlace(box)) {
            const CPLRectObj rectangle{box.MinX, box.MinY, box.MaxX, box.MaxY};
            CPLQuadTreeInsertWithBounds(m_tree.get(),
                                        std::bit_cast<void*>(static_cast<std::uintptr_t>(handle)),
                                        &rectangle);
        }
    }
}

std::vector<CqHandle> SpatialIndex::Find(const OGREnvelope& rectangle) const {
    std::vector<CqHandle> found;
    if (!m_tree) {
        return found;
    }
    const CPLRectObj wanted{rectangle.MinX, rectangle.MinY, rectangle.MaxX, rectangle.MaxY};
    int count = 0;
    const std::unique_ptr<void*, void (*)(void*)> handles(
        CPLQuadTreeSearch(m_tree.get(), &wanted, &count), VSIFree);
    found.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        found.push_back(static_cast<CqHandle>(std::bit_cast<std::uintptr_t>(handles.get()[i])));
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace cqsurvey::gdal
