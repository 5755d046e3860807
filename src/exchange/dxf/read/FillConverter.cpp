#include "exchange/dxf/read/FillConverter.h"

#include <algorithm>
#include <utility>

#include "exchange/dxf/read/HatchPaths.h"
#include "exchange/dxf/read/PathConverter.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr std::string_view kOutline = "closed polyline of its outline, not filled";

}  // namespace

DrawingOutcome FillConverter::Face(const Record& record, const Context& context) {
    const bool face = record.type == "3DFACE";
    std::vector<PathVertex> path;
    for (const int code : {10, 11, 12, 13}) {
        if (code != 13 || record.Find(code) != nullptr) {
            path.push_back({PointOf(record, code), 0.0});
        }
    }
    if (!face && path.size() == 4) {
        // The corners of a solid go from side to side.
        std::swap(path[2], path[3]);
    }
    const auto same = [](const PathVertex& a, const PathVertex& b) { return a.at == b.at; };
    path.erase(std::unique(path.begin(), path.end(), same), path.end());
    return DrawPlanar(path, true, face ? context.map : ObjectMap(record, context),
                      StyleOf(record, context, m_scene), ExtrasOf(record), m_scene,
                      Converted(kOutline));
}

DrawingOutcome FillConverter::Hatch(const Record& record, const Context& context) {
    const Affine map = ObjectMap(record, context);
    const Style style = StyleOf(record, context, m_scene);
    // Lengths are fitted before the map; the tolerance is that of the drawing.
    const double scale = map.PlanScale();
    CurveFitter fitter(m_scene.options.tolerance / (scale > 0.0 ? scale : 1.0), true);
    std::vector<std::vector<PathVertex>> paths = ReadHatchPaths(record, fitter);
    const Extras extras = ExtrasOf(record);
    DrawingOutcome sum = LeftOut("it has no outline");
    for (std::vector<PathVertex>& path : paths) {
        const DrawingOutcome one =
            DrawPlanar(path, true, map, style, extras, m_scene, Converted(kOutline));
        if (one.fate != DrawingFate::LeftOut) {
            sum = Converted(
                kOutline, std::max({sum.deviation, one.deviation, fitter.GetDeviation() * scale}));
        }
    }
    return sum;
}

}  // namespace cqsurvey::exchange::dxf
