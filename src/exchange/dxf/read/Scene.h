#pragma once

#include <map>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/DxfReader.h"
#include "exchange/drawing/Drawing.h"
#include "exchange/drawing/LayerMap.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/dxf/Affine.h"
#include "exchange/dxf/ExtendedData.h"
#include "exchange/dxf/Record.h"
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
    DrawingReport& report;
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

}  // namespace cqsurvey::exchange::dxf
