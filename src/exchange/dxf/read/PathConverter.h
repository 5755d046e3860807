#pragma once

#include <vector>

#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

/// Draws a path that lies in the xy plane of `map`: as it is when circles stay circles, otherwise
/// with its arcs fitted anew. `plain` is what an exact path is called. The path, which may be
/// large, is closed and mapped where it is.
[[nodiscard]] DrawingOutcome DrawPlanar(std::vector<PathVertex>& path, bool closed,
                                        const Affine& map, const Style& style, const Extras& extras,
                                        Scene& scene, DrawingOutcome plain);

/// Converts what is made of lines and arcs: LINE, LWPOLYLINE, POLYLINE, LEADER.
class PathConverter {
 public:
    explicit PathConverter(Scene& scene) : m_scene(scene) {}

    [[nodiscard]] DrawingOutcome Line(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome LightPolyline(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Polyline(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Leader(const Record& record, const Context& context);

 private:
    Scene& m_scene;
    std::vector<PathVertex> m_path;
};

}  // namespace cqsurvey::exchange::dxf
