#include "gdal/read/CircleLayer.h"

#include <array>

#include "gdal/Curve.h"
#include "gdal/Style.h"

namespace cqsurvey::gdal {

CircleLayer::CircleLayer(const LayerContext& context)
    : EntityLayer(context, RecordKind::Circles, "circles", wkbCircularStringZ,
                  {FieldRole::Radius, FieldRole::Easting, FieldRole::Northing, FieldRole::Layer,
                   FieldRole::Color, FieldRole::Hidden, FieldRole::Line, FieldRole::Code}) {}

bool CircleLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    std::array<double, 3> at{};
    entity.GetPoint(at.data());
    filler.Set(FieldRole::Radius, entity.GetRadius());
    filler.Set(FieldRole::Easting, at[0]);
    filler.Set(FieldRole::Northing, at[1]);
    filler.Set(FieldRole::Line, entity.GetLine());
    filler.Set(FieldRole::Code, entity.GetCode());
    const LayerLook& look = Context().job.Look();
    filler.SetStyle(PenStyle(look.ColorOf(entity), look.LineOf(entity)));
    if (filler.WantsGeometry()) {
        filler.Set(MakeCircle(CVector(at[0], at[1]), HeightFor(at[2]), entity.GetRadius()));
    }
    return true;
}

}  // namespace cqsurvey::gdal
