#include "gdal/read/TextLayer.h"

#include <utility>

#include "gdal/Style.h"

namespace cqsurvey::gdal {

TextLayer::TextLayer(const LayerContext& context)
    : EntityLayer(context, RecordKind::Texts, "texts", wkbPoint25D,
                  {FieldRole::Text, FieldRole::TextHeight, FieldRole::Rotation,
                   FieldRole::AlignAlong, FieldRole::AlignAcross, FieldRole::Style,
                   FieldRole::Layer, FieldRole::Color, FieldRole::Hidden, FieldRole::Code,
                   FieldRole::OptionStyle, FieldRole::Interval, FieldRole::Thickness}) {}

bool TextLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    // Two alignments of 16 bits.
    const auto align = static_cast<std::uint32_t>(entity.GetAlign());
    const int along = static_cast<int>(align & 0xFFFFU);
    const int across = static_cast<int>(align >> 16U);
    filler.Set(FieldRole::Text, entity.GetText());
    filler.Set(FieldRole::TextHeight, entity.GetHeight());
    filler.Set(FieldRole::Rotation, entity.GetRot());
    filler.Set(FieldRole::AlignAlong, along);
    filler.Set(FieldRole::AlignAcross, across);
    filler.Set(FieldRole::Style, entity.GetStyle());
    filler.Set(FieldRole::Code, entity.GetCode());
    filler.Set(FieldRole::OptionStyle, static_cast<GIntBig>(entity.GetOptionStyle()));
    filler.Set(FieldRole::Interval, entity.GetInterval());
    filler.Set(FieldRole::Thickness, entity.GetThickness());
    filler.SetStyle(
        LabelStyle({ToUtf8(entity.GetText()), ToUtf8(entity.GetStyle()), entity.GetHeight(),
                    entity.GetRot(), along, across, Context().job.Look().ColorOf(entity)}));
    if (filler.WantsGeometry()) {
        filler.Set(PlaceOf(entity));
    }
    return true;
}

}  // namespace cqsurvey::gdal
