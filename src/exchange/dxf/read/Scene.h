#pragma once

#include <map>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/DxfReader.h"
#include "cqsurvey/exchange/DxfReport.h"
#include "exchange/dxf/Affine.h"
#include "exchange/dxf/Record.h"
#include "exchange/dxf/read/Drawing.h"
#include "exchange/dxf/read/LayerMap.h"
#include "exchange/dxf/read/LineTable.h"
#include "exchange/dxf/read/TextDecoder.h"

namespace cqsurvey::exchange::dxf {

/// What the converters of entities share. The parts outlive the scene.
struct Scene {
    const DxfReadOptions& options;
    TextDecoder& decoder;
    LayerMap& layers;
    LineTable& lines;
    Drawing& drawing;
    DxfReport& report;
};

/// Where an entity stands: in the drawing itself, or in a block that is inserted there. An entity
/// of a block on layer 0 is drawn on the layer of the insert; one with the colour or line "by
/// block" has those of the insert.
struct Context {
    Affine map;  ///< from the coordinates of the block to those of the job
    int depth = 0;
    bool dimension = false;  ///< of the block of a dimension
    Style block;
};

/// An entity's layer, colour and line.
[[nodiscard]] Style StyleOf(const Record& record, const Context& context, Scene& scene);

/// The map from the entity's own coordinates, which depend on its extrusion direction.
[[nodiscard]] Affine ObjectMap(const Record& record, const Context& context);

/// Three coordinates of the groups `code`, `code` + 10 and `code` + 20.
[[nodiscard]] Vec3 PointOf(const Record& record, int code);

[[nodiscard]] inline DxfOutcome Taken(std::string_view what) {
    return {DxfFate::Taken, what, 0.0};
}
[[nodiscard]] inline DxfOutcome Converted(std::string_view what, double deviation = 0.0) {
    return {DxfFate::Converted, what, deviation};
}
[[nodiscard]] inline DxfOutcome LeftOut(std::string_view why) {
    return {DxfFate::LeftOut, why, 0.0};
}

inline constexpr std::string_view kNotFinite = "its numbers are not finite, or too large";

}  // namespace cqsurvey::exchange::dxf
