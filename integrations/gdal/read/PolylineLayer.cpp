#include "gdal/read/PolylineLayer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "gdal/Style.h"
#include "gdal/write/FeatureRecorder.h"

namespace cqsurvey::gdal {

namespace {

bool IsClosed(const std::vector<ArcVertex>& vertices) {
    return vertices.size() > 2 && vertices.front().at.GetX() == vertices.back().at.GetX() &&
           vertices.front().at.GetY() == vertices.back().at.GetY();
}

}  // namespace

PolylineLayer::PolylineLayer(const LayerContext& context, Shape shape)
    : EntityLayer(context, shape == Shape::Lines ? "polylines" : "areas",
                  shape == Shape::Lines ? wkbCompoundCurveZ : wkbCurvePolygonZ,
                  {FieldRole::Layer, FieldRole::Color, FieldRole::Hidden, FieldRole::Line,
                   FieldRole::Code, FieldRole::Closed},
                  EntPline),
      m_shape(shape) {}

std::vector<ArcVertex> PolylineLayer::VerticesOfPolyline(CqHandle handle) const {
    std::vector<ArcVertex> vertices;
    CqCadEntity* read = nullptr;
    CqHandle next = handle;
    if (Db().GetNextCadEntity(next, read) == 0) {
        return vertices;
    }
    const CqCadEntityPtr head(read);
    // The count ends the walk along a damaged chain that runs in a circle.
    for (int left = Db().GetNumCadEntities(); left > 0 && next != 0; --left) {
        CqCadEntity* object = nullptr;
        if (Db().GetNextCadEntity(next, object) == 0) {
            break;
        }
        const CqCadEntityPtr vertex(object);
        if (vertex->GetType() != EntVertex || vertex->GetPlineHandle() != handle) {
            break;
        }
        std::array<double, 3> at{};
        vertex->GetPoint(at.data());
        vertices.push_back({CVector(at[0], at[1]), HeightFor(at[2]), vertex->GetBulge()});
    }
    return vertices;
}

std::vector<CqHandle> PolylineLayer::List() {
    std::vector<CqHandle> handles = EntityLayer::List();
    if (m_shape == Shape::Areas) {
        std::erase_if(handles,
                      [&](CqHandle handle) { return !IsClosed(VerticesOfPolyline(handle)); });
    }
    return handles;
}

GIntBig PolylineLayer::Count() {
    return m_shape == Shape::Lines ? EntityLayer::Count() : static_cast<GIntBig>(List().size());
}

bool PolylineLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    const std::vector<ArcVertex> vertices = VerticesOfPolyline(entity.GetHandle());
    const bool closed = IsClosed(vertices);
    if (m_shape == Shape::Areas && !closed) {
        return false;
    }
    filler.Set(FieldRole::Line, entity.GetLine());
    filler.Set(FieldRole::Code, entity.GetCode());
    filler.Set(FieldRole::Closed, closed ? 1 : 0);
    const LayerLook& look = Context().job.Look();
    filler.SetStyle(PenStyle(look.ColorOf(entity), look.LineOf(entity)));
    if (!filler.WantsGeometry()) {
        return true;
    }
    std::unique_ptr<OGRCompoundCurve> curve = MakeCurve(vertices);
    if (m_shape == Shape::Lines || !curve) {
        filler.Set(std::move(curve));
        return true;
    }
    auto area = std::make_unique<OGRCurvePolygon>();
    if (area->addRing(curve.get()) == OGRERR_NONE) {
        filler.Set(std::move(area));
    }
    return true;
}

CqHandle PolylineLayer::Record(const OGRFeature& feature) {
    return Context().recorder->RecordPolyline(feature, Fields());
}

bool PolylineLayer::Erase(CqHandle handle) {
    return Db().DeletePline(handle) != 0;
}

}  // namespace cqsurvey::gdal
