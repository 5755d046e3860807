#include "exchange/landxml/read/Arc.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace cqsurvey::exchange::landxml {

namespace {

constexpr double kPi = std::numbers::pi;

double Distance(const Vec3& a, const Vec3& b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

/// The angle by which an arc of the radius turns from one end of the chord to the other, at most
/// half a turn.
double SmallSweep(double chord, double radius) {
    return 2 * std::asin(std::min(1.0, chord / (2 * radius)));
}

/// The angle from p to q about the centre: counter-clockwise from 0 to a whole turn, clockwise
/// negative, and the smaller of the two when the way is not known.
double SweepAbout(const Vec3& centre, const Vec3& p, const Vec3& q, std::optional<bool> ccw) {
    const double px = p.x - centre.x;
    const double py = p.y - centre.y;
    const double qx = q.x - centre.x;
    const double qy = q.y - centre.y;
    const double sweep = std::atan2(px * qy - py * qx, px * qx + py * qy);
    if (!ccw) {
        return sweep;
    }
    return *ccw ? (sweep < 0.0 ? sweep + 2 * kPi : sweep) : (sweep > 0.0 ? sweep - 2 * kPi : sweep);
}

/// How far the arc is from a circle about the centre, at its ends and in its middle.
double DistanceFromCircle(const Vec3& centre, double radius, const Vec3& p, const Vec3& q,
                          double bulge) {
    const PlanArc arc = ArcOf(p, q, bulge);
    const double middle = arc.start + arc.sweep / 2;
    const Vec3 m{arc.x + arc.radius * std::cos(middle), arc.y + arc.radius * std::sin(middle), 0.0};
    return std::max({std::fabs(Distance(centre, p) - radius),
                     std::fabs(Distance(centre, q) - radius),
                     std::fabs(Distance(centre, m) - radius)});
}

}  // namespace

Arc MakeArc(const Segment& curve) {
    const Vec3& p = curve.start->at;
    const Vec3& q = curve.end->at;
    const double chord = Distance(p, q);
    const bool hasRadius = curve.radius && std::isfinite(*curve.radius) && *curve.radius != 0.0;
    Arc arc;
    if (chord == 0.0) {
        if (!curve.center || Distance(curve.center->at, p) == 0.0) {
            arc.fault = "its ends are at one place";
            return arc;
        }
        const Vec3& centre = curve.center->at;
        arc.whole = true;
        arc.opposite = {2 * centre.x - p.x, 2 * centre.y - p.y, p.z};
        arc.bulge = curve.counterClockwise.value_or(true) ? 1.0 : -1.0;
        return arc;
    }
    double sweep = 0.0;
    if (curve.center) {
        const Vec3& centre = curve.center->at;
        sweep = SweepAbout(centre, p, q, curve.counterClockwise);
        // A centre far off the ends' bisector means little: the radius tells more then.
        const double radius =
            hasRadius ? std::fabs(*curve.radius) : (Distance(centre, p) + Distance(centre, q)) / 2;
        constexpr double kSound = 1e-3;
        if (hasRadius && std::fabs(Distance(centre, p) - radius) > kSound * radius &&
            chord < 2 * radius) {
            const double small = SmallSweep(chord, radius);
            sweep = std::copysign(std::fabs(sweep) > kPi ? 2 * kPi - small : small, sweep);
        }
        if (sweep == 0.0) {
            arc.fault = "its centre is in line with its ends";
            return arc;
        }
        arc.bulge = std::tan(sweep / 4);
        arc.deviation = DistanceFromCircle(centre, radius, p, q, arc.bulge);
        return arc;
    }
    if (!hasRadius || !curve.counterClockwise) {
        arc.fault = "it has neither a centre nor both a radius and a rotation";
        return arc;
    }
    const double radius = std::fabs(*curve.radius);
    arc.deviation = std::max(0.0, chord / 2 - radius);
    sweep = SmallSweep(chord, radius);
    if (curve.length && *curve.length > kPi * radius) {
        sweep = 2 * kPi - sweep;
    }
    arc.bulge = std::tan(*curve.counterClockwise ? sweep / 4 : -sweep / 4);
    return arc;
}

}  // namespace cqsurvey::exchange::landxml
