#include "exchange/drawing/Chords.h"

#include <cmath>
#include <cstddef>

namespace cqsurvey::exchange {

std::vector<PathVertex> BreakArcs(const std::vector<PathVertex>& path, double tolerance,
                                  double& deviation) {
    CurveFitter fitter(tolerance, false);
    std::vector<PathVertex> broken;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const Vec3& p = path[i].at;
        const Vec3& q = path[i + 1].at;
        if (path[i].bulge == 0.0 || (p.x == q.x && p.y == q.y)) {
            broken.push_back({p, 0.0, path[i].hasHeight});
            continue;
        }
        const PlanArc arc = ArcOf(p, q, path[i].bulge);
        const auto curve = [&](double part) -> Vec3 {
            if (part == 0.0 || part == 1.0) {
                return part == 0.0 ? p : q;
            }
            const double angle = arc.start + arc.sweep * part;
            return {arc.x + arc.radius * std::cos(angle), arc.y + arc.radius * std::sin(angle),
                    p.z + (q.z - p.z) * part};
        };
        const std::size_t first = broken.size();
        constexpr int kPieces = 4;
        for (int piece = 0; piece < kPieces; ++piece) {
            fitter.Fit(curve, static_cast<double>(piece) / kPieces,
                       static_cast<double>(piece + 1) / kPieces, broken);
        }
        for (std::size_t k = first; k < broken.size(); ++k) {
            broken[k].bulge = 0.0;
            broken[k].hasHeight = path[i].hasHeight && (k == first || path[i + 1].hasHeight);
        }
    }
    if (!path.empty()) {
        broken.push_back({path.back().at, 0.0, path.back().hasHeight});
    }
    deviation = fitter.GetDeviation();
    return broken;
}

}  // namespace cqsurvey::exchange
