#include "exchange/codes/ArcFitter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace cqsurvey::exchange {

namespace {

constexpr double kTurn = 2 * std::numbers::pi;
/// Three points are in line when the height of their triangle is less than this part of its base.
constexpr double kFlat = 1e-9;

double Cross(const CVector& a, const CVector& b) {
    return a.GetX() * b.GetY() - a.GetY() * b.GetX();
}

double Dot(const CVector& a, const CVector& b) {
    return a.GetX() * b.GetX() + a.GetY() * b.GetY();
}

/// The angle from a to b, from -pi to pi.
double Between(const CVector& a, const CVector& b) {
    return std::atan2(Cross(a, b), Dot(a, b));
}

CVector Middle(std::span<const CVector> points) {
    CVector sum;
    for (const CVector& point : points) {
        sum = sum + (point - points.front());
    }
    const auto count = static_cast<double>(points.size());
    return points.front() + CVector(sum.GetX() / count, sum.GetY() / count);
}

/// The circle that fits best when each distance counts by its distance from the middle: a linear
/// problem, and a good start. Positions are from the middle.
std::optional<Circle> FitRoughly(const std::vector<CVector>& points) {
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    double xz = 0.0;
    double yz = 0.0;
    double z = 0.0;
    for (const CVector& p : points) {
        const double square = Dot(p, p);
        xx += p.GetX() * p.GetX();
        xy += p.GetX() * p.GetY();
        yy += p.GetY() * p.GetY();
        xz += p.GetX() * square;
        yz += p.GetY() * square;
        z += square;
    }
    const double determinant = xx * yy - xy * xy;
    if (!(determinant > kFlat * kFlat * (xx + yy) * (xx + yy))) {
        return std::nullopt;
    }
    const CVector centre((xz * yy - yz * xy) / (2 * determinant),
                         (yz * xx - xz * xy) / (2 * determinant));
    const double square = Dot(centre, centre) + z / static_cast<double>(points.size());
    return Circle{centre, std::sqrt(square)};
}

/// One step of the method of Gauss and Newton towards the least squares of distances; false when it
/// has arrived or can go no further.
bool Improve(const std::vector<CVector>& points, Circle& circle) {
    // The sums of the normal equations of centre x, y and radius.
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    double x = 0.0;
    double y = 0.0;
    double xd = 0.0;
    double yd = 0.0;
    double d = 0.0;
    const auto count = static_cast<double>(points.size());
    for (const CVector& point : points) {
        const CVector away = point - circle.centre;
        const double distance = away.UNorm();
        if (!(distance > 0.0)) {
            return false;
        }
        const double ux = away.GetX() / distance;
        const double uy = away.GetY() / distance;
        const double off = distance - circle.radius;
        xx += ux * ux;
        xy += ux * uy;
        yy += uy * uy;
        x += ux;
        y += uy;
        xd += ux * off;
        yd += uy * off;
        d += off;
    }
    // With the radius eliminated.
    const double a = xx - x * x / count;
    const double b = xy - x * y / count;
    const double c = yy - y * y / count;
    const double p = xd - x * d / count;
    const double q = yd - y * d / count;
    const double determinant = a * c - b * b;
    if (!(std::abs(determinant) > 0.0)) {
        return false;
    }
    const double dx = (p * c - q * b) / determinant;
    const double dy = (q * a - p * b) / determinant;
    const double dr = (d - x * dx - y * dy) / count;
    if (!std::isfinite(dx + dy + dr)) {
        return false;
    }
    circle.centre = circle.centre + CVector(dx, dy);
    circle.radius += dr;
    constexpr double kEnough = 1e-12;
    return std::abs(dx) + std::abs(dy) + std::abs(dr) > kEnough * circle.radius;
}

/// The angles about the centre from point to point, all in the sense of `sign`; nothing when they
/// make a whole turn or more.
std::optional<std::vector<double>> FindSteps(std::span<const CVector> points, const CVector& centre,
                                             double sign) {
    std::vector<double> steps;
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        double step = sign * Between(points[i] - centre, points[i + 1] - centre);
        step = step < 0.0 ? step + kTurn : step;
        sum += step;
        if (!(step > 0.0) || !(sum < kTurn)) {
            return std::nullopt;
        }
        steps.push_back(sign * step);
    }
    return steps;
}

}  // namespace

std::optional<Circle> FindCircle(const CVector& a, const CVector& b, const CVector& c) {
    const CVector u = b - a;
    const CVector v = c - a;
    const double cross = Cross(u, v);
    const double base = std::max({Dot(u, u), Dot(v, v), Dot(v - u, v - u)});
    if (!(std::abs(cross) > kFlat * base)) {
        return std::nullopt;
    }
    const double uu = Dot(u, u);
    const double vv = Dot(v, v);
    const CVector away((v.GetY() * uu - u.GetY() * vv) / (2 * cross),
                       (u.GetX() * vv - v.GetX() * uu) / (2 * cross));
    return Circle{a + away, away.UNorm()};
}

std::optional<Circle> FitCircle(std::span<const CVector> points) {
    if (points.size() < 3) {
        return std::nullopt;
    }
    const CVector middle = Middle(points);
    std::vector<CVector> centred;
    centred.reserve(points.size());
    for (const CVector& point : points) {
        centred.push_back(point - middle);
    }
    std::optional<Circle> circle = FitRoughly(centred);
    if (!circle) {
        return std::nullopt;
    }
    constexpr int kMostSteps = 50;
    for (int i = 0; i < kMostSteps && Improve(centred, *circle); ++i) {
    }
    if (!std::isfinite(circle->radius) || circle->radius <= 0.0) {
        return std::nullopt;
    }
    circle->centre = circle->centre + middle;
    return circle;
}

ArcResult FitArc(std::span<const CVector> points, double tolerance, bool whole) {
    const std::optional<Circle> circle =
        points.size() == 3 ? FindCircle(points[0], points[1], points[2]) : FitCircle(points);
    if (!circle) {
        return {.arc = std::nullopt, .fault = ArcFault::Straight};
    }
    FittedArc arc;
    if (points.size() > 3) {
        for (const CVector& point : points) {
            arc.deviation = std::max(arc.deviation,
                                     std::abs((point - circle->centre).UNorm() - circle->radius));
        }
        if (!(arc.deviation <= tolerance)) {
            return {.arc = std::nullopt, .fault = ArcFault::TooFar, .deviation = arc.deviation};
        }
    }
    std::optional<std::vector<double>> steps = FindSteps(points, circle->centre, 1.0);
    if (!steps) {
        steps = FindSteps(points, circle->centre, -1.0);
    }
    if (!steps) {
        return {.arc = std::nullopt, .fault = ArcFault::Unsteady};
    }
    for (const double step : *steps) {
        arc.bulges.push_back(std::tan(step / 4));
    }
    if (whole) {
        const double sum = std::accumulate(steps->begin(), steps->end(), 0.0);
        arc.bulges.push_back(std::tan(((sum < 0.0 ? -kTurn : kTurn) - sum) / 4));
    } else if (points.size() == 3) {
        // By the angle in which the third point sees each chord: no centre far away is needed.
        for (std::size_t i = 0; i < 2; ++i) {
            const CVector& seen = points[i == 0 ? 2 : 0];
            arc.bulges[i] = std::tan(Between(points[i] - seen, points[i + 1] - seen) / 2);
        }
    }
    return {.arc = std::move(arc)};
}

std::optional<double> FindTangentBulge(const CVector& p, const CVector& tangent, const CVector& q) {
    const CVector chord = q - p;
    const double away = Between(tangent, chord);
    constexpr double kMost = 0.95 * std::numbers::pi;
    if (!(chord.UNorm() > 0.0) || !(tangent.UNorm() > 0.0) || std::abs(away) > kMost) {
        return std::nullopt;
    }
    return std::tan(away / 2);
}

CVector FindEndTangent(const CVector& p, const CVector& q, double bulge) {
    const CVector chord = q - p;
    const double angle = 2 * std::atan(bulge);
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c * chord.GetX() - s * chord.GetY(), s * chord.GetX() + c * chord.GetY()};
}

}  // namespace cqsurvey::exchange
