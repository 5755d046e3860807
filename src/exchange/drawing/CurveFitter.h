#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "exchange/drawing/Vec3.h"

namespace cqsurvey::exchange {

/// A vertex of a polyline: `bulge` curves the segment to the next vertex as in the job.
struct PathVertex {
    Vec3 at;
    double bulge = 0.0;
    bool hasHeight = true;  ///< otherwise at.z is 0 and means nothing
};

/// The arc between two points of a plan.
struct PlanArc {
    double x = 0.0;  ///< of the centre
    double y = 0.0;
    double radius = 0.0;
    double start = 0.0;  ///< the angle at the first point, in radians
    double sweep = 0.0;  ///< counter-clockwise when positive
};

/// The arc from p to q with a bulge that is not 0.
[[nodiscard]] PlanArc ArcOf(const Vec3& p, const Vec3& q, double bulge);

/// Replaces a curve by a polyline with arcs, or of straight lines alone. A piece of the curve
/// becomes one arc through its ends and its middle when no point in between is farther from the arc
/// than the tolerance, in plan and in height; otherwise it is halved.
class CurveFitter {
 public:
    using Curve = std::function<Vec3(double)>;

    /// After so many vertices no piece is halved any more, so that no numbers of a file can ask for
    /// more vertices than a machine holds. The deviation tells.
    static constexpr std::size_t kMostVertices = 200'000;

    /// `tolerance` is positive and in the unit of the curve. A piece is halved `deepest` times at
    /// most.
    CurveFitter(double tolerance, bool arcs, int deepest = 14)
        : m_tolerance(tolerance), m_arcs(arcs), m_deepest(deepest) {}

    /// Appends the vertices of the curve from parameter `from` to `to`, without the one at `to`.
    void Fit(const Curve& curve, double from, double to, std::vector<PathVertex>& out);

    /// The largest distance found between a curve and what replaced it.
    [[nodiscard]] double GetDeviation() const { return m_deviation; }

 private:
    void Fit(const Curve& curve, double from, const Vec3& p, double to, const Vec3& q, int depth,
             std::vector<PathVertex>& out);

    double m_tolerance;
    bool m_arcs;
    int m_deepest;
    std::size_t m_vertices = 0;
    double m_deviation = 0.0;
};

}  // namespace cqsurvey::exchange
