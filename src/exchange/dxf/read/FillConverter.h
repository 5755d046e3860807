#pragma once

#include <vector>

#include "exchange/dxf/read/Scene.h"

namespace cqsurvey::exchange::dxf {

/// Converts the outlines of what is filled: SOLID, TRACE, 3DFACE, HATCH.
class FillConverter {
 public:
    explicit FillConverter(Scene& scene) : m_scene(scene) {}

    [[nodiscard]] DrawingOutcome Face(const Record& record, const Context& context);
    [[nodiscard]] DrawingOutcome Hatch(const Record& record, const Context& context);

 private:
    Scene& m_scene;
};

}  // namespace cqsurvey::exchange::dxf
