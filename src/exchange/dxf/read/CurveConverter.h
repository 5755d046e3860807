#pragma once

#include <vector>

#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

/// Converts what is curved by itself: ARC, CIRCLE, ELLIPSE, SPLINE.
class CurveConverter {
 public:
    explicit CurveConverter(Scene& scene) : m_scene(scene) {}

    [[nodiscard]] DrawingOutcome Arc(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Circle(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Ellipse(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Spline(const Record& record, const Context& context);

 private:
    DrawingOutcome WholeCircle(const Record& record, const Context& context, const Vec3& centre,
                               double radius);

    Scene& m_scene;
};

}  // namespace cqsurvey::exchange::dxf
