#include "exchange/codes/FigurePath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace cqsurvey::exchange {

namespace {

constexpr double kTurn = 2 * std::numbers::pi;
constexpr double kLongestCorner = 10.0;
constexpr double kSame = 1e-9;

double Cross(const CVector& a, const CVector& b) {
    return a.GetX() * b.GetY() - a.GetY() * b.GetX();
}

double Dot(const CVector& a, const CVector& b) {
    return a.GetX() * b.GetX() + a.GetY() * b.GetY();
}

CVector Times(const CVector& a, double factor) {
    return {a.GetX() * factor, a.GetY() * factor};
}

/// A segment beside one of the path: from p to q, about the centre if it is an arc.
struct Side {
    CVector p;
    CVector q;
    CVector direction;  // of the straight segment that it runs beside
    CVector centre;
    double radius = 0.0;  // 0 for a straight segment
    double bulge = 0.0;
};

std::optional<Side> FindSide(const FigureVertex& from, const FigureVertex& to, double across) {
    const CVector chord = to.place - from.place;
    const double length = chord.UNorm();
    Side side;
    side.bulge = from.bulge;
    if (from.bulge == 0.0) {
        side.direction = Times(chord, 1 / length);
        const CVector right(side.direction.GetY() * across, -side.direction.GetX() * across);
        side.p = from.place + right;
        side.q = to.place + right;
        return side;
    }
    side.centre = CVector::CalcArcCenter(from.place, to.place, 4 * std::atan(from.bulge));
    const double radius = (from.place - side.centre).UNorm();
    // An arc that turns counter-clockwise has its centre on the left.
    side.radius = from.bulge > 0 ? radius + across : radius - across;
    if (!(side.radius > 0.0) || !std::isfinite(side.radius)) {
        return std::nullopt;
    }
    side.p = side.centre + Times(from.place - side.centre, side.radius / radius);
    side.q = side.centre + Times(to.place - side.centre, side.radius / radius);
    return side;
}

/// Where the whole line meets the whole circle.
std::vector<CVector> MeetLineAndCircle(const Side& line, const Side& circle) {
    const CVector away = line.p - circle.centre;
    const double along = Dot(away, line.direction);
    const double rest = along * along - Dot(away, away) + circle.radius * circle.radius;
    if (rest < 0.0) {
        return {};
    }
    const double root = std::sqrt(rest);
    return {line.p + Times(line.direction, -along - root),
            line.p + Times(line.direction, -along + root)};
}

std::vector<CVector> MeetCircles(const Side& a, const Side& b) {
    const CVector between = b.centre - a.centre;
    const double distance = between.UNorm();
    if (!(distance > 0.0)) {
        return {};
    }
    const double along =
        (distance * distance + a.radius * a.radius - b.radius * b.radius) / (2 * distance);
    const double rest = a.radius * a.radius - along * along;
    if (rest < 0.0) {
        return {};
    }
    const CVector unit = Times(between, 1 / distance);
    const CVector foot = a.centre + Times(unit, along);
    const CVector up = Times(CVector(-unit.GetY(), unit.GetX()), std::sqrt(rest));
    return {foot + up, foot - up};
}

std::vector<CVector> Meet(const Side& a, const Side& b) {
    if (a.radius > 0.0 && b.radius > 0.0) {
        return MeetCircles(a, b);
    }
    if (a.radius > 0.0 || b.radius > 0.0) {
        return a.radius > 0.0 ? MeetLineAndCircle(b, a) : MeetLineAndCircle(a, b);
    }
    const double cross = Cross(a.direction, b.direction);
    if (std::abs(cross) < kSame) {
        return {};
    }
    return {a.p + Times(a.direction, Cross(b.p - a.p, b.direction) / cross)};
}

/// Joins two sides at the corner between them: both end where they meet.
void Join(Side& before, Side& after, const CVector& corner, double across) {
    if ((after.p - before.q).UNorm() <= kSame * (1.0 + std::abs(across))) {
        after.p = before.q;
        return;
    }
    std::optional<CVector> best;
    for (const CVector& place : Meet(before, after)) {
        if (!best || (place - corner).UNorm() < (*best - corner).UNorm()) {
            best = place;
        }
    }
    if (best && (*best - corner).UNorm() <= kLongestCorner * std::abs(across)) {
        before.q = *best;
        after.p = *best;
    }
}

/// Gives the arc the bulge between its new ends; false when the side folds back.
bool Settle(Side& side) {
    if (side.radius == 0.0) {
        return Dot(side.q - side.p, side.direction) > 0.0;
    }
    const double sign = side.bulge > 0 ? 1.0 : -1.0;
    const CVector a = side.p - side.centre;
    const CVector b = side.q - side.centre;
    double step = sign * std::atan2(Cross(a, b), Dot(a, b));
    step = step < 0.0 ? step + kTurn : step;
    const double before = 4 * std::atan(std::abs(side.bulge));
    side.bulge = sign * std::tan(step / 4);
    // An arc whose ends have passed each other would go around the rest of its circle.
    return step > 0.0 && step - before < std::numbers::pi;
}

}  // namespace

std::optional<FigurePath> FindParallel(const FigurePath& path, const Parallel& parallel) {
    std::vector<FigureVertex> vertices;
    for (const FigureVertex& vertex : path.vertices) {
        // Segments of no length have no side.
        if (!vertices.empty() && (vertices.back().place - vertex.place).UNorm() <= kSame) {
            vertices.back().bulge = vertex.bulge;
        } else {
            vertices.push_back(vertex);
        }
    }
    std::vector<Side> sides;
    for (std::size_t i = 0; i + 1 < vertices.size(); ++i) {
        const std::optional<Side> side = FindSide(vertices[i], vertices[i + 1], parallel.across);
        if (!side) {
            return std::nullopt;
        }
        sides.push_back(*side);
    }
    if (sides.empty()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i + 1 < sides.size(); ++i) {
        Join(sides[i], sides[i + 1], vertices[i + 1].place, parallel.across);
    }
    if (path.closed && sides.size() > 1) {
        Join(sides.back(), sides.front(), vertices.front().place, parallel.across);
    }
    FigurePath beside;
    beside.closed = path.closed;
    const auto add = [&](const CVector& place, double height, double bulge) {
        beside.vertices.push_back({place, height + parallel.up, bulge});
    };
    for (std::size_t i = 0; i < sides.size(); ++i) {
        Side& side = sides[i];
        if (!Settle(side)) {
            return std::nullopt;
        }
        add(side.p, vertices[i].height, side.bulge);
        const bool last = i + 1 == sides.size();
        if (last || (sides[i + 1].p - side.q).UNorm() > 0.0) {
            add(side.q, vertices[i + 1].height, 0.0);
        }
    }
    if (path.closed && (beside.vertices.back().place - beside.vertices.front().place).UNorm() > 0) {
        add(beside.vertices.front().place, vertices.front().height, 0.0);
    }
    return beside;
}

std::optional<std::size_t> FindCrossing(const FigurePath& path) {
    struct Piece {
        CVector p;
        CVector q;
        std::size_t vertex;
        std::size_t order;
    };
    constexpr int kPiecesOfArc = 8;
    constexpr std::size_t kMostLooks = 5'000'000;
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i + 1 < path.vertices.size(); ++i) {
        const FigureVertex& from = path.vertices[i];
        const CVector end = path.vertices[i + 1].place;
        CVector last = from.place;
        if (from.bulge != 0.0) {
            const double angle = 4 * std::atan(from.bulge);
            const CVector centre = CVector::CalcArcCenter(from.place, end, angle);
            const CVector arm = from.place - centre;
            for (int k = 1; k < kPiecesOfArc; ++k) {
                const double c = std::cos(angle * k / kPiecesOfArc);
                const double s = std::sin(angle * k / kPiecesOfArc);
                const CVector next = centre + CVector(c * arm.GetX() - s * arm.GetY(),
                                                      s * arm.GetX() + c * arm.GetY());
                pieces.push_back({last, next, i, pieces.size()});
                last = next;
            }
        }
        pieces.push_back({last, end, i, pieces.size()});
    }
    const std::size_t count = pieces.size();
    const auto left = [](const Piece& piece) { return std::min(piece.p.GetX(), piece.q.GetX()); };
    const auto right = [](const Piece& piece) { return std::max(piece.p.GetX(), piece.q.GetX()); };
    std::sort(pieces.begin(), pieces.end(),
              [&](const Piece& a, const Piece& b) { return left(a) < left(b); });
    const auto crosses = [](const Piece& a, const Piece& b) {
        const CVector u = a.q - a.p;
        const CVector v = b.q - b.p;
        return Cross(u, b.p - a.p) * Cross(u, b.q - a.p) < 0.0 &&
               Cross(v, a.p - b.p) * Cross(v, a.q - b.p) < 0.0;
    };
    std::size_t looks = 0;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = i + 1; k < count && left(pieces[k]) <= right(pieces[i]); ++k) {
            if (++looks > kMostLooks) {
                return std::nullopt;
            }
            const std::size_t apart = pieces[i].order > pieces[k].order
                                          ? pieces[i].order - pieces[k].order
                                          : pieces[k].order - pieces[i].order;
            if (apart > 1 && apart + 1 < count && crosses(pieces[i], pieces[k])) {
                return std::min(pieces[i].vertex, pieces[k].vertex);
            }
        }
    }
    return std::nullopt;
}

}  // namespace cqsurvey::exchange
