#include "exchange/drawing/CurveFitter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace cqsurvey::exchange {

namespace {

/// The bulge of the arc from p to q through m.
double BulgeThrough(const Vec3& p, const Vec3& m, const Vec3& q) {
    const double ax = p.x - m.x;
    const double ay = p.y - m.y;
    const double bx = q.x - m.x;
    const double by = q.y - m.y;
    const double cross = ax * by - ay * bx;
    const double dot = ax * bx + ay * by;
    if (cross == 0.0) {
        return 0.0;
    }
    // The angle at m is half of what the arc leaves of the circle.
    const double angle = std::numbers::pi - std::atan2(std::fabs(cross), dot);
    return std::copysign(std::tan(angle / 2), -cross);
}

/// How far `at` is from the line or arc from p to q, in plan.
double Distance(const Vec3& at, const Vec3& p, const Vec3& q, double bulge) {
    if (bulge != 0.0) {
        const PlanArc arc = ArcOf(p, q, bulge);
        return std::fabs(std::hypot(at.x - arc.x, at.y - arc.y) - arc.radius);
    }
    const double dx = q.x - p.x;
    const double dy = q.y - p.y;
    const double square = dx * dx + dy * dy;
    const double along =
        square == 0.0 ? 0.0
                      : std::clamp(((at.x - p.x) * dx + (at.y - p.y) * dy) / square, 0.0, 1.0);
    return std::hypot(at.x - p.x - along * dx, at.y - p.y - along * dy);
}

}  // namespace

PlanArc ArcOf(const Vec3& p, const Vec3& q, double bulge) {
    const double dx = q.x - p.x;
    const double dy = q.y - p.y;
    const double side = (1.0 - bulge * bulge) / (4.0 * bulge);
    PlanArc arc;
    arc.x = (p.x + q.x) / 2 - side * dy;
    arc.y = (p.y + q.y) / 2 + side * dx;
    arc.radius = std::hypot(dx, dy) * (1.0 + bulge * bulge) / (4.0 * std::fabs(bulge));
    arc.start = std::atan2(p.y - arc.y, p.x - arc.x);
    arc.sweep = 4.0 * std::atan(bulge);
    return arc;
}

void CurveFitter::Fit(const Curve& curve, double from, double to, std::vector<PathVertex>& out) {
    Fit(curve, from, curve(from), to, curve(to), 0, out);
}

void CurveFitter::Fit(const Curve& curve, double from, const Vec3& p, double to, const Vec3& q,
                      int depth, std::vector<PathVertex>& out) {
    constexpr int kLooks = 8;
    constexpr double kStraight = 1e-9;
    constexpr double kSharp = 1.0;
    const double middle = from + (to - from) / 2;
    const Vec3 m = curve(middle);
    double bulge = m_arcs ? BulgeThrough(p, m, q) : 0.0;
    if (std::fabs(bulge) < kStraight || !std::isfinite(bulge)) {
        bulge = 0.0;
    }
    double farthest = 0.0;
    for (int i = 1; i < kLooks; ++i) {
        const double part = static_cast<double>(i) / kLooks;
        const Vec3 at = curve(from + (to - from) * part);
        farthest = std::max(
            {farthest, Distance(at, p, q, bulge), std::fabs(at.z - (p.z + (q.z - p.z) * part))});
    }
    if ((farthest > m_tolerance || std::fabs(bulge) > kSharp) && depth < m_deepest &&
        m_vertices < kMostVertices) {
        Fit(curve, from, p, middle, m, depth + 1, out);
        Fit(curve, middle, m, to, q, depth + 1, out);
        return;
    }
    m_deviation = std::max(m_deviation, farthest);
    out.push_back({p, bulge});
    ++m_vertices;
}

}  // namespace cqsurvey::exchange
