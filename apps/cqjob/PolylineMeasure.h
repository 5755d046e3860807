#pragma once

#include <cqsurvey/cqsurvey.h>

#include <cstddef>

#include "cqjob/Extents.h"

namespace cqsurvey::cqjob {

/// Counts and measures the vertices of a polyline as they come along the drawing: how many there
/// are, how long the line is with its arcs, and the box around it.
class PolylineMeasure {
 public:
    /// Adds the next vertex.
    void Add(const CqCadEntity& vertex);

    [[nodiscard]] std::size_t GetVertices() const { return m_vertices; }
    [[nodiscard]] double GetLength() const { return m_length; }

    /// The box needs a vertex.
    [[nodiscard]] Extents GetExtents() const;

 private:
    std::size_t m_vertices = 0;
    double m_length = 0.0;
    CqVertexCadEntity m_last;
    CqPlineCadEntity m_line;
};

}  // namespace cqsurvey::cqjob
