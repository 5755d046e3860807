#include "exchange/dxf/read/Scene.h"

#include "cqsurvey/CqPalette.h"
#include "cqsurvey/Limits.h"
#include "exchange/drawing/Names.h"
#include "exchange/dxf/LineTypes.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr std::string_view kLayerOfBlock = "0";
constexpr int kInk = 7;
constexpr int kOfBlock = 0;

int ColorOfEntity(const Record& record, const Context& context, Scene& scene) {
    int color = record.Whole(62, limits::kByLayer);
    if (const Entry* trueColor = record.Find(420)) {
        bool exact = true;
        color = FindPaletteColor(static_cast<std::uint32_t>(record.Whole(*trueColor)), exact);
        if (!exact) {
            scene.report.Note("true colours became the nearest colour of the palette");
        }
    }
    if (color < 0 || color > limits::kByLayer) {
        color = limits::kByLayer;
    }
    if (color == kOfBlock && context.depth > 0) {
        color = context.block.color;
    }
    // An entity that is hidden has a negative colour in a job; there is no negative 0.
    if (record.Whole(60) != 0 && color >= 0) {
        color = color == 0 ? -kInk : -color;
    }
    return color;
}

}  // namespace

Style StyleOf(const Record& record, const Context& context, Scene& scene) {
    Style style;
    const std::string_view layer = record.Text(8, kLayerOfBlock);
    style.layer = context.depth > 0 && layer == kLayerOfBlock ? context.block.layer
                                                              : scene.layers.Find(layer).name;
    style.color = ColorOfEntity(record, context, scene);
    style.line = limits::kByLayer;
    if (const Entry* line = record.Find(6)) {
        style.line = scene.lines.Find(record.Text(*line));
        if (style.line == LineTable::kOfBlock) {
            style.line = context.depth > 0 ? context.block.line : kSolidLine;
        }
    }
    return style;
}

Affine ObjectMap(const Record& record, const Context& context) {
    if (record.Find(210) == nullptr && record.Find(230) == nullptr) {
        return context.map;
    }
    return context.map *
           Affine::FromObject({record.Number(210), record.Number(220), record.Number(230, 1.0)});
}

Vec3 PointOf(const Record& record, int code) {
    return {record.Number(code), record.Number(code + 10), record.Number(code + 20)};
}

}  // namespace cqsurvey::exchange::dxf
