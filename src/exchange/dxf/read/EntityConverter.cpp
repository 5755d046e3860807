#include "exchange/dxf/read/EntityConverter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "text/Printable.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr std::string_view kNoBlock = "there is no such block";
// More than this of an entity that a block draws counts as further entities.
constexpr std::uint64_t kVerticesOfOne = 16;
constexpr std::uint64_t kBytesOfOne = 1024;

/// The number of columns or rows of an array of inserts.
int Times(const Record& record, int code) {
    const int times = record.Whole(code, 1);
    return times < 1 ? 1 : times;
}

}  // namespace

EntityConverter::EntityConverter(Scene& scene, Blocks& blocks)
    : m_scene(scene),
      m_blocks(blocks),
      m_paths(scene),
      m_curves(scene),
      m_fills(scene),
      m_texts(scene),
      m_points(scene) {}

void EntityConverter::Count(const Record& record, const Context& context,
                            const DrawingOutcome& outcome) {
    m_scene.report.Count(record.type, m_scene.layers.Find(record.Text(8, "0")).shown, outcome,
                         context.depth > 0, record.place);
}

DrawingOutcome EntityConverter::Convert(const Record& record, const Context& context) {
    const std::uint64_t drawn = m_drawn;
    const std::uint64_t before = m_scene.report.vertices;
    const DrawingOutcome outcome = Dispatch(record, context);
    Count(record, context, outcome);
    // A curve of a few numbers may be fitted with any number of arcs.
    const std::uint64_t vertices = m_scene.report.vertices - before;
    if (context.depth == 0 && m_drawn == drawn && vertices > record.GetEntries().size()) {
        CountDrawn(record, vertices / kVerticesOfOne);
    }
    return outcome;
}

DrawingOutcome EntityConverter::Dispatch(const Record& record, const Context& context) {
    const std::string_view type = record.type;
    if (record.Whole(67) != 0) {
        return LeftOut("it is in paper space");
    }
    if (type == "LINE") {
        return m_paths.Line(record, context);
    }
    if (type == "LWPOLYLINE") {
        return m_paths.LightPolyline(record, context);
    }
    if (type == "POLYLINE") {
        return m_paths.Polyline(record, context);
    }
    if (type == "POINT") {
        return m_points.Point(record, context);
    }
    if (type == "TEXT") {
        return m_texts.Text(record, context);
    }
    if (type == "MTEXT") {
        return m_texts.MText(record, context);
    }
    if (type == "INSERT") {
        return Insert(record, context);
    }
    if (type == "ARC") {
        return m_curves.Arc(record, context);
    }
    if (type == "CIRCLE") {
        return m_curves.Circle(record, context);
    }
    if (type == "ELLIPSE") {
        return m_curves.Ellipse(record, context);
    }
    if (type == "SPLINE") {
        return m_curves.Spline(record, context);
    }
    if (type == "LEADER") {
        return m_paths.Leader(record, context);
    }
    if (type == "DIMENSION") {
        return Dimension(record, context);
    }
    if (type == "ACAD_TABLE") {
        return Table(record, context);
    }
    if (type == "ATTRIB") {
        return m_texts.Attribute(record, context);
    }
    if (type == "ATTDEF") {
        return m_texts.AttributeDefinition(record, context);
    }
    if (type == "IMAGE") {
        return LeftOut(context.depth > 0 ? "images of blocks are not taken"
                                         : "a job has one image: the first of the drawing");
    }
    const bool face = type == "SOLID" || type == "TRACE" || type == "3DFACE";
    if (face || type == "HATCH") {
        return !m_scene.options.fills ? LeftOut("fills were not asked for")
               : face                 ? m_fills.Face(record, context)
                                      : m_fills.Hatch(record, context);
    }
    return LeftOut(kNothingLikeIt);
}

bool EntityConverter::IsPointInsert(const Record& record) const {
    return record.type == "INSERT" && record.Whole(67) == 0 &&
           m_points.IsPoint(record, record.Text(2));
}

DrawingOutcome EntityConverter::Insert(const Record& record, const Context& context) {
    if (m_points.IsPoint(record, record.Text(2))) {
        return m_points.Insert(record, record.Text(2), context);
    }
    record.ForEachPart([&](const Record& attribute) { Convert(attribute, context); });
    Block* block = m_blocks.Find(record.Text(2));
    if (block == nullptr) {
        return LeftOut(kNoBlock);
    }
    if (block->external) {
        return LeftOut("its block is in another file");
    }
    const auto scale = [&](int code) {
        const double factor = record.Number(code, 1.0);
        return factor == 0.0 ? 1.0 : factor;
    };
    const Affine unit = Affine::Scale(scale(41), scale(42), scale(43)) *
                        Affine::Shift({-block->base.x, -block->base.y, -block->base.z});
    const Affine stand = ObjectMap(record, context) * Affine::Shift(PointOf(record, 10)) *
                         Affine::Turn(Radians(record.Number(50)));
    const Places places{
        stand, unit, Times(record, 70), Times(record, 71), record.Number(44), record.Number(45)};
    return Draw(record, *block, places, context, "the entities of its block");
}

DrawingOutcome EntityConverter::Dimension(const Record& record, const Context& context) {
    Block* block = m_blocks.Find(record.Text(2));
    if (block == nullptr) {
        return LeftOut("no block draws it");
    }
    Context inside = context;
    inside.dimension = true;
    return Draw(record, *block, {context.map * Affine::Shift(PointOf(record, 12)), {}}, inside,
                "the entities of the block that draws it");
}

DrawingOutcome EntityConverter::Table(const Record& record, const Context& context) {
    Block* block = m_blocks.Find(record.Text(2));
    if (block == nullptr) {
        return LeftOut("no block draws it");
    }
    const Affine map = context.map * Affine::Shift(PointOf(record, 10)) *
                       Affine::Turn(std::atan2(record.Number(21), record.Number(11, 1.0))) *
                       Affine::Shift({-block->base.x, -block->base.y, -block->base.z});
    return Draw(record, *block, {map, {}}, context, "the entities of the block that draws it");
}

DrawingOutcome EntityConverter::Draw(const Record& record, Block& block, const Places& places,
                                     const Context& context, std::string_view what) {
    if (std::find(m_open.begin(), m_open.end(), &block) != m_open.end() ||
        m_open.size() >= kDeepest) {
        record.GetOrigin().Fail(record.place, fmt::format("the block {} contains itself, or stands "
                                                          "too deep in other blocks",
                                                          Quoted(block.name)));
    }
    block.used = true;
    m_open.push_back(&block);
    for (int row = 0; row < places.rows; ++row) {
        for (int column = 0; column < places.columns; ++column) {
            // A block without entities takes time, too.
            CountDrawn(record, 1);
            const Vec3 step{column * places.columnStep, row * places.rowStep, 0.0};
            Explode(record, block, places.stand * Affine::Shift(step) * places.unit, context);
        }
    }
    m_open.pop_back();
    return Converted(what);
}

void EntityConverter::Explode(const Record& record, Block& block, const Affine& map,
                              const Context& context) {
    Context inside;
    inside.map = map;
    inside.depth = context.depth + 1;
    inside.dimension = context.dimension;
    inside.block = StyleOf(record, context, m_scene);
    for (const Record& entity : block.entities) {
        CountDrawn(record, 1);
        const std::uint64_t drawn = m_drawn;
        const std::uint64_t vertices = m_scene.report.vertices;
        Convert(entity, inside);
        // What an insert in the block draws has been counted on the way.
        if (m_drawn == drawn) {
            CountDrawn(record, std::max<std::uint64_t>(
                                   (m_scene.report.vertices - vertices) / kVerticesOfOne,
                                   entity.GetSize() / kBytesOfOne));
        }
    }
}

void EntityConverter::CountDrawn(const Record& insert, std::uint64_t times) {
    m_drawn += times;
    if (m_drawn > m_scene.options.mostDrawn) {
        insert.GetOrigin().Fail(
            insert.place,
            fmt::format("inserted blocks and fitted curves draw more than {} entities, large ones "
                        "counted as several",
                        m_scene.options.mostDrawn));
    }
}

}  // namespace cqsurvey::exchange::dxf
