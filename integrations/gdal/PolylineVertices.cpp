#include "gdal/PolylineVertices.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "gdal/DrawingIndex.h"

namespace cqsurvey::gdal {

std::vector<JobVertex> ReadVertices(const CqSurveyDB& db, CqHandle polyline) {
    std::vector<JobVertex> vertices;
    if (!ReadEntity(db, polyline, EntPline)) {
        return vertices;
    }
    CqCadEntity* read = nullptr;
    CqHandle next = polyline;
    if (db.GetNextCadEntity(next, read) == 0) {
        return vertices;
    }
    const CqCadEntityPtr head(read);
    // The count ends the walk along a damaged chain that runs in a circle.
    for (int left = db.GetNumCadEntities(); left > 0 && next != 0; --left) {
        CqCadEntity* object = nullptr;
        if (db.GetNextCadEntity(next, object) == 0) {
            break;
        }
        const CqCadEntityPtr vertex(object);
        if (vertex->GetType() != EntVertex || vertex->GetPlineHandle() != polyline) {
            break;
        }
        std::array<double, 3> at{};
        vertex->GetPoint(at.data());
        vertices.push_back({vertex->GetHandle(),
                            {CVector(at[0], at[1]), at[2], vertex->GetBulge()},
                            vertex->GetMcadSiPointHandle()});
    }
    return vertices;
}

std::vector<ArcVertex> ShapeOf(const std::vector<JobVertex>& vertices) {
    std::vector<ArcVertex> shape;
    shape.reserve(vertices.size());
    std::transform(vertices.begin(), vertices.end(), std::back_inserter(shape),
                   [](const JobVertex& vertex) { return vertex.shape; });
    return shape;
}

}  // namespace cqsurvey::gdal
