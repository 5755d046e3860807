#include "gdal/read/PolylineLayer.h"

#include <algorithm>
#include <utility>

#include "gdal/PolylineVertices.h"
#include "gdal/Style.h"

namespace cqsurvey::gdal {

namespace {

bool IsClosed(const std::vector<ArcVertex>& vertices) {
    return vertices.size() > 2 && vertices.front().at.GetX() == vertices.back().at.GetX() &&
           vertices.front().at.GetY() == vertices.back().at.GetY();
}

}  // namespace

PolylineLayer::PolylineLayer(const LayerContext& context, Shape shape)
    : EntityLayer(context, RecordKind::Polylines, shape == Shape::Lines ? "polylines" : "areas",
                  shape == Shape::Lines ? wkbCompoundCurveZ : wkbCurvePolygonZ,
                  {FieldRole::Layer, FieldRole::Color, FieldRole::Hidden, FieldRole::Line,
                   FieldRole::Code, FieldRole::Closed}),
      m_shape(shape) {}

const char* PolylineLayer::WhyReadOnly() const {
    return m_shape == Shape::Lines ? nullptr : "they are those of \"polylines\" once more";
}

std::vector<ArcVertex> PolylineLayer::VerticesOfPolyline(CqHandle handle) const {
    std::vector<ArcVertex> vertices = ShapeOf(ReadVertices(Db(), handle));
    for (ArcVertex& vertex : vertices) {
        vertex.height = HeightFor(vertex.height);
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

}  // namespace cqsurvey::gdal
