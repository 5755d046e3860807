#pragma once

#include <cstddef>
#include <vector>

#include "exchange/dxf/Affine.h"
#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// The curve of a SPLINE: a rational B-spline by its knots, control points and weights.
class Spline {
 public:
    /// Throws ExchangeError with the place when the counts of the record contradict each other.
    explicit Spline(const Record& record);
    Spline(int degree, std::vector<double> knots, std::vector<Vec3> controls,
           std::vector<double> weights);

    [[nodiscard]] bool HasCurve() const { return m_spans.size() > 1; }
    [[nodiscard]] const std::vector<Vec3>& GetFitPoints() const { return m_fitPoints; }

    /// The parameters between which the curve is one polynomial, ascending.
    [[nodiscard]] const std::vector<double>& GetSpans() const { return m_spans; }

    /// The point at a parameter from the first span's begin to the last one's end.
    [[nodiscard]] Vec3 At(double t) const;

 private:
    void FindSpans();

    int m_degree = 0;
    std::vector<double> m_knots;
    std::vector<Vec3> m_controls;
    std::vector<double> m_weights;
    std::vector<Vec3> m_fitPoints;
    std::vector<double> m_spans;
};

}  // namespace cqsurvey::exchange::dxf
