#include "exchange/dxf/read/Spline.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kMostDegree = 25;

void Check(const Record& record, int code, std::size_t there, const char* what) {
    const Entry* count = record.Find(code);
    if (count != nullptr && record.Whole(*count) != static_cast<int>(there)) {
        record.GetOrigin().Fail(record.place + count->place,
                                fmt::format("the spline says it has {} {}, and has {}",
                                            record.Whole(*count), what, there));
    }
}

}  // namespace

Spline::Spline(const Record& record) : m_degree(record.Whole(71, 3)) {
    const auto part = [&](std::vector<Vec3>& points, const Entry& entry) {
        const double value = record.Number(entry);
        if (entry.code < 20) {
            points.push_back({value, 0.0, 0.0});
        } else if (!points.empty()) {
            (entry.code < 30 ? points.back().y : points.back().z) = value;
        }
    };
    for (const Entry& entry : record.GetEntries()) {
        switch (entry.code) {
            case 40:
                m_knots.push_back(record.Number(entry));
                break;
            case 41:
                m_weights.push_back(record.Number(entry));
                break;
            case 10:
            case 20:
            case 30:
                part(m_controls, entry);
                break;
            case 11:
            case 21:
            case 31:
                part(m_fitPoints, entry);
                break;
            default:
                break;
        }
    }
    Check(record, 72, m_knots.size(), "knots");
    Check(record, 73, m_controls.size(), "control points");
    Check(record, 74, m_fitPoints.size(), "fit points");
    FindSpans();
}

Spline::Spline(int degree, std::vector<double> knots, std::vector<Vec3> controls,
               std::vector<double> weights)
    : m_degree(degree),
      m_knots(std::move(knots)),
      m_controls(std::move(controls)),
      m_weights(std::move(weights)) {
    FindSpans();
}

void Spline::FindSpans() {
    const auto degree = static_cast<std::size_t>(std::clamp(m_degree, 1, kMostDegree));
    const bool sound = m_degree >= 1 && m_degree <= kMostDegree && m_controls.size() > degree &&
                       m_knots.size() == m_controls.size() + degree + 1 &&
                       (m_weights.empty() || m_weights.size() == m_controls.size()) &&
                       std::is_sorted(m_knots.begin(), m_knots.end()) &&
                       std::all_of(m_knots.begin(), m_knots.end(),
                                   [](double knot) { return std::isfinite(knot); });
    if (!sound) {
        return;
    }
    for (std::size_t i = degree; i <= m_controls.size(); ++i) {
        if (m_spans.empty() || m_knots[i] > m_spans.back()) {
            m_spans.push_back(m_knots[i]);
        }
    }
}

Vec3 Spline::At(double t) const {
    const auto degree = static_cast<std::size_t>(m_degree);
    // The span that holds t; at its very end, the last one that is not empty.
    auto after =
        std::upper_bound(m_knots.begin() + m_degree,
                         m_knots.begin() + static_cast<std::ptrdiff_t>(m_controls.size()), t);
    auto span = static_cast<std::size_t>(after - m_knots.begin()) - 1;
    while (span > degree && m_knots[span] >= m_knots[span + 1]) {
        --span;
    }
    struct Weighted {
        double x, y, z, w;
    };
    std::array<Weighted, kMostDegree + 1> d{};
    for (std::size_t j = 0; j <= degree; ++j) {
        const Vec3& control = m_controls[span - degree + j];
        const double w = m_weights.empty() ? 1.0 : m_weights[span - degree + j];
        d.at(j) = {control.x * w, control.y * w, control.z * w, w};
    }
    for (std::size_t r = 1; r <= degree; ++r) {
        for (std::size_t j = degree; j >= r; --j) {
            const double left = m_knots[span - degree + j];
            const double room = m_knots[span + 1 + j - r] - left;
            const double a = room == 0.0 ? 0.0 : (t - left) / room;
            const Weighted& p = d.at(j - 1);
            Weighted& q = d.at(j);
            q = {p.x + (q.x - p.x) * a, p.y + (q.y - p.y) * a, p.z + (q.z - p.z) * a,
                 p.w + (q.w - p.w) * a};
        }
    }
    const Weighted& at = d.at(degree);
    return {at.x / at.w, at.y / at.w, at.z / at.w};
}

}  // namespace cqsurvey::exchange::dxf
