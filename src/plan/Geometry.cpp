#include "plan/Geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace cqsurvey::plan {

namespace {

constexpr double kPi = std::numbers::pi;

/// How far `angle` is from `start` in the direction of `sweep`: from 0 to a whole turn, negative
/// when `sweep` is.
double Along(double start, double sweep, double angle) {
    const double turn = sweep < 0.0 ? -2 * kPi : 2 * kPi;
    double away = std::fmod(angle - start, 2 * kPi);
    if (away * turn < 0.0) {
        away += turn;
    }
    return away;
}

}  // namespace

CVector Arc::At(double angle) const {
    return centre + CVector(radius * std::cos(angle), radius * std::sin(angle));
}

Box Arc::GetBox() const {
    Box box;
    box.Add(At(start));
    box.Add(At(start + sweep));
    const std::array<CVector, 4> extremes{CVector(radius, 0.0), CVector(0.0, radius),
                                          CVector(-radius, 0.0), CVector(0.0, -radius)};
    for (std::size_t i = 0; i < extremes.size(); ++i) {
        if (std::fabs(Along(start, sweep, static_cast<double>(i) * kPi / 2)) <= std::fabs(sweep)) {
            box.Add(centre + extremes[i]);
        }
    }
    return box;
}

std::optional<Arc> FindArc(const CVector& p, const CVector& q, double bulge, double flat) {
    // A flatter arc counts as straight, as it does in the extents of a polyline.
    constexpr double kStraight = 1e-8;
    constexpr double kTooLarge = 1e12;
    const double chord = (q - p).UNorm();
    if (!(std::fabs(bulge) > kStraight) || !(chord > 0.0) ||
        !(std::fabs(bulge) * chord / 2 > flat)) {
        return std::nullopt;
    }
    Arc arc;
    arc.sweep = 4 * std::atan(bulge);
    arc.centre = CVector::CalcArcCenter(p, q, arc.sweep);
    const CVector a = p - arc.centre;
    arc.radius = a.UNorm();
    arc.start = std::atan2(a.GetY(), a.GetX());
    if (!(arc.radius <= kTooLarge)) {
        return std::nullopt;
    }
    return arc;
}

std::vector<Arc> Clip(const Arc& arc, const Box& window) {
    // Cut the arc where its circle crosses the lines of the window's sides.
    std::vector<double> cuts{0.0, std::fabs(arc.sweep)};
    const auto cut = [&](double angle) {
        const double away = std::fabs(Along(arc.start, arc.sweep, angle));
        if (away < std::fabs(arc.sweep)) {
            cuts.push_back(away);
        }
    };
    for (const double x : {window.minX, window.maxX}) {
        const double cosine = (x - arc.centre.GetX()) / arc.radius;
        if (std::fabs(cosine) <= 1.0) {
            cut(std::acos(cosine));
            cut(-std::acos(cosine));
        }
    }
    for (const double y : {window.minY, window.maxY}) {
        const double sine = (y - arc.centre.GetY()) / arc.radius;
        if (std::fabs(sine) <= 1.0) {
            cut(std::asin(sine));
            cut(kPi - std::asin(sine));
        }
    }
    std::sort(cuts.begin(), cuts.end());
    std::vector<Arc> parts;
    const double sign = arc.sweep < 0.0 ? -1.0 : 1.0;
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
        Box middle;
        middle.Add(arc.At(arc.start + sign * (cuts[i] + cuts[i + 1]) / 2));
        if (cuts[i] < cuts[i + 1] && window.Holds(middle)) {
            parts.push_back({arc.centre, arc.radius, arc.start + sign * cuts[i],
                             sign * (cuts[i + 1] - cuts[i])});
        }
    }
    return parts;
}

bool Clip(CVector& p, CVector& q, const Box& window) {
    const CVector d = q - p;
    double from = 0.0;
    double to = 1.0;
    // Cuts where the line crosses the line of one side. `along` grows towards the outside.
    const auto cut = [&](double along, double room) {
        if (along == 0.0) {
            return room >= 0.0;
        }
        const double at = room / along;
        if (along > 0.0) {
            to = std::min(to, at);
        } else {
            from = std::max(from, at);
        }
        return from <= to;
    };
    if (!cut(-d.GetX(), p.GetX() - window.minX) || !cut(d.GetX(), window.maxX - p.GetX()) ||
        !cut(-d.GetY(), p.GetY() - window.minY) || !cut(d.GetY(), window.maxY - p.GetY())) {
        return false;
    }
    const CVector start = p;
    if (to < 1.0) {
        q = start + CVector(d.GetX() * to, d.GetY() * to);
    }
    if (from > 0.0) {
        p = start + CVector(d.GetX() * from, d.GetY() * from);
    }
    return true;
}

}  // namespace cqsurvey::plan
