#pragma once

#include <vector>

#include "cqsurvey/exchange/DxfWriter.h"
#include "exchange/drawing/CurveFitter.h"
#include "exchange/dxf/write/Contents.h"
#include "exchange/dxf/write/EntityFrame.h"
#include "exchange/dxf/write/GroupWriter.h"

namespace cqsurvey::exchange::dxf {

/// Writes polylines and circles. A polyline at one height keeps its arcs; one in space has straight
/// lines, so its arcs are broken, or written by themselves.
class LineWriter {
 public:
    LineWriter(GroupWriter& out, Contents& contents, const DxfWriteOptions& options);

    [[nodiscard]] DrawingOutcome Circle(const CqCadEntity& entity);
    /// `vertices` are those of the polyline `entity`; a height that is not a number is one.
    [[nodiscard]] DrawingOutcome Polyline(const CqCadEntity& entity,
                                          std::vector<PathVertex> vertices);

 private:
    void WriteLevel(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                    const Extras& extras);
    void WriteLevelR12(const CqCadEntity& entity, const std::vector<PathVertex>& path, bool closed,
                       const Extras& extras);
    void WriteSpace(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                    const Extras& extras);
    DrawingOutcome BreakArcs(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                             const Extras& extras);
    DrawingOutcome KeepArcs(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                            const Extras& extras);

    GroupWriter& m_out;
    const DxfWriteOptions& m_options;
    EntityFrame m_frame;
};

}  // namespace cqsurvey::exchange::dxf
