#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/dxf/read/Blocks.h"
#include "exchange/dxf/read/CurveConverter.h"
#include "exchange/dxf/read/FillConverter.h"
#include "exchange/dxf/read/PathConverter.h"
#include "exchange/dxf/read/PointRecorder.h"
#include "exchange/dxf/read/Scene.h"
#include "exchange/dxf/read/TextConverter.h"

namespace cqsurvey::exchange::dxf {

/// Converts entities, each with the converter of its kind, and counts what they came to. An
/// inserted block is drawn entity by entity. A block that contains itself is an error, and so are
/// inserts that draw more entities than the options allow.
class EntityConverter {
 public:
    static constexpr int kDeepest = 64;

    EntityConverter(Scene& scene, Blocks& blocks);

    /// Converts and counts one entity.
    DrawingOutcome Convert(const Record& record, const Context& context);

    /// Counts one entity that is not converted.
    void Count(const Record& record, const Context& context, const DrawingOutcome& outcome);

    /// True when the record is the insert of a block that becomes a survey point.
    [[nodiscard]] bool IsPointInsert(const Record& record) const;

    PointRecorder& GetPoints() { return m_points; }

 private:
    /// Where a block is inserted: once, or in the rows and columns of an array.
    struct Places {
        Affine stand;
        Affine unit;
        int columns = 1;
        int rows = 1;
        double columnStep = 0.0;
        double rowStep = 0.0;
    };

    DrawingOutcome Dispatch(const Record& record, const Context& context);
    DrawingOutcome Insert(const Record& record, const Context& context);
    DrawingOutcome Dimension(const Record& record, const Context& context);
    DrawingOutcome Table(const Record& record, const Context& context);
    DrawingOutcome Draw(const Record& record, Block& block, const Places& places,
                        const Context& context, std::string_view what);
    void CountDrawn(const Record& insert, std::uint64_t times);
    void Explode(const Record& record, Block& block, const Affine& map, const Context& context);

    Scene& m_scene;
    Blocks& m_blocks;
    PathConverter m_paths;
    CurveConverter m_curves;
    FillConverter m_fills;
    TextConverter m_texts;
    PointRecorder m_points;
    std::vector<const Block*> m_open;
    std::uint64_t m_drawn = 0;
};

}  // namespace cqsurvey::exchange::dxf
