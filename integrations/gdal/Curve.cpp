#include "gdal/Curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace cqsurvey::gdal {

namespace {

bool IsPlace(const CVector& at) {
    return std::isfinite(at.GetX()) && std::isfinite(at.GetY());
}

bool IsSame(const CVector& a, const CVector& b) {
    return a.GetX() == b.GetX() && a.GetY() == b.GetY();
}

/// The middle of the arc from p to q. A positive arc lies to the right of its chord.
CVector MiddleOfArc(const ArcVertex& p, const CVector& q) {
    const CVector half((q.GetX() - p.at.GetX()) / 2, (q.GetY() - p.at.GetY()) / 2);
    return {p.at.GetX() + half.GetX() + p.bulge * half.GetY(),
            p.at.GetY() + half.GetY() - p.bulge * half.GetX()};
}

/// Whether the segment from p to q is an arc that has a middle of its own.
bool IsArc(const ArcVertex& p, const ArcVertex& q) {
    if (p.bulge == 0.0 || !std::isfinite(p.bulge) || IsSame(p.at, q.at)) {
        return false;
    }
    const CVector middle = MiddleOfArc(p, q.at);
    return IsPlace(middle) && !IsSame(middle, p.at) && !IsSame(middle, q.at);
}

void AddPoint(OGRSimpleCurve& curve, const CVector& at, double height) {
    curve.addPoint(at.GetX(), at.GetY(), height);
}

bool Append(OGRCompoundCurve& whole, std::unique_ptr<OGRSimpleCurve> part) {
    if (!part || part->getNumPoints() < 2) {
        return true;
    }
    OGRCurve* raw = part.release();
    if (whole.addCurveDirectly(raw) != OGRERR_NONE) {
        delete raw;
        return false;
    }
    return true;
}

/// The bulge of the arc from p through m to q: the tangent of half of what the angle at m lacks to
/// a straight one.
double BulgeOf(const CVector& p, const CVector& m, const CVector& q) {
    const CVector u = p - m;
    const CVector v = q - m;
    const double cross = u.GetX() * v.GetY() - u.GetY() * v.GetX();
    const double dot = u.GetX() * v.GetX() + u.GetY() * v.GetY();
    const double lengths = u.UNorm() * v.UNorm();
    const double sine = std::abs(cross);
    // Of the two forms the one that does not take the difference of nearly equal numbers.
    const double bulge = dot <= 0 ? sine / (lengths - dot) : (lengths + dot) / sine;
    return std::isfinite(bulge) ? std::copysign(bulge, -cross) : 0.0;
}

CVector PlaceOf(const OGRSimpleCurve& curve, int index) {
    return {curve.getX(index), curve.getY(index)};
}

double HeightOf(const OGRSimpleCurve& curve, int index) {
    return curve.Is3D() != 0 ? curve.getZ(index) : std::numeric_limits<double>::quiet_NaN();
}

/// Appends a vertex, or only sets the bulge when it is the end of what is there.
void AddVertex(std::vector<ArcVertex>& vertices, const ArcVertex& vertex, bool joins) {
    if (joins && !vertices.empty() && IsSame(vertices.back().at, vertex.at)) {
        vertices.back().bulge = vertex.bulge;
        return;
    }
    vertices.push_back(vertex);
}

void AddArcs(const OGRCircularString& arcs, std::vector<ArcVertex>& vertices) {
    const int count = arcs.getNumPoints();
    for (int i = 0; i + 2 < count; i += 2) {
        const CVector p = PlaceOf(arcs, i);
        const CVector m = PlaceOf(arcs, i + 1);
        const CVector q = PlaceOf(arcs, i + 2);
        if (IsSame(p, q)) {
            // A whole circle, whose middle point lies opposite.
            AddVertex(vertices, {p, HeightOf(arcs, i), 1.0}, true);
            vertices.push_back({m, HeightOf(arcs, i + 1), 1.0});
        } else {
            AddVertex(vertices, {p, HeightOf(arcs, i), BulgeOf(p, m, q)}, true);
        }
        vertices.push_back({q, HeightOf(arcs, i + 2), 0.0});
    }
}

/// What the last digits of the coordinates may make out.
double CloseTo(const CVector& centre, double radius) {
    return 1e-13 * (std::abs(centre.GetX()) + std::abs(centre.GetY()) + radius);
}

}  // namespace

std::unique_ptr<OGRCompoundCurve> MakeCurve(std::span<const ArcVertex> vertices) {
    if (vertices.size() < 2 || !std::all_of(vertices.begin(), vertices.end(),
                                            [](const ArcVertex& v) { return IsPlace(v.at); })) {
        return nullptr;
    }
    auto whole = std::make_unique<OGRCompoundCurve>();
    std::unique_ptr<OGRSimpleCurve> part;
    bool partIsArc = false;
    for (std::size_t i = 0; i + 1 < vertices.size(); ++i) {
        const ArcVertex& p = vertices[i];
        const ArcVertex& q = vertices[i + 1];
        const bool arc = IsArc(p, q);
        if (!part || arc != partIsArc) {
            if (!Append(*whole, std::move(part))) {
                return nullptr;
            }
            if (arc) {
                part = std::make_unique<OGRCircularString>();
            } else {
                part = std::make_unique<OGRLineString>();
            }
            partIsArc = arc;
            AddPoint(*part, p.at, p.height);
        }
        if (arc) {
            AddPoint(*part, MiddleOfArc(p, q.at), (p.height + q.height) / 2);
        }
        AddPoint(*part, q.at, q.height);
    }
    return Append(*whole, std::move(part)) ? std::move(whole) : nullptr;
}

std::unique_ptr<OGRCircularString> MakeCircle(const CVector& centre, double height, double radius) {
    const double x = centre.GetX();
    const double y = centre.GetY();
    const double r = std::abs(radius);
    if (!IsPlace(centre) || !std::isfinite(x + r) || !std::isfinite(x - r) ||
        !std::isfinite(y + r) || !std::isfinite(y - r)) {
        return nullptr;
    }
    auto circle = std::make_unique<OGRCircularString>();
    for (const CVector& at : {CVector(x + r, y), CVector(x, y + r), CVector(x - r, y),
                              CVector(x, y - r), CVector(x + r, y)}) {
        AddPoint(*circle, at, height);
    }
    return circle;
}

std::vector<ArcVertex> VerticesOf(const OGRCurve& curve) {
    std::vector<ArcVertex> vertices;
    const auto addSimple = [&](const OGRSimpleCurve& simple, bool joins) {
        if (wkbFlatten(simple.getGeometryType()) == wkbCircularString) {
            AddArcs(static_cast<const OGRCircularString&>(simple), vertices);
            return;
        }
        for (int i = 0; i < simple.getNumPoints(); ++i) {
            AddVertex(vertices, {PlaceOf(simple, i), HeightOf(simple, i), 0.0}, joins && i == 0);
        }
    };
    if (wkbFlatten(curve.getGeometryType()) == wkbCompoundCurve) {
        const auto& compound = static_cast<const OGRCompoundCurve&>(curve);
        for (int i = 0; i < compound.getNumCurves(); ++i) {
            const OGRCurve* part = compound.getCurve(i);
            if (const auto* simple = dynamic_cast<const OGRSimpleCurve*>(part)) {
                addSimple(*simple, true);
            }
        }
    } else if (const auto* simple = dynamic_cast<const OGRSimpleCurve*>(&curve)) {
        addSimple(*simple, false);
    }
    return vertices;
}

bool IsCircle(const OGRCurve& curve, CircleShape& circle) {
    const std::vector<ArcVertex> vertices = VerticesOf(curve);
    if (vertices.size() < 3 || !IsSame(vertices.front().at, vertices.back().at)) {
        return false;
    }
    double turned = 0.0;
    for (std::size_t i = 0; i + 1 < vertices.size(); ++i) {
        const ArcVertex& p = vertices[i];
        if (p.bulge == 0.0 || p.height != vertices.front().height) {
            if (!(p.bulge != 0.0 && std::isnan(p.height) && std::isnan(vertices.front().height))) {
                return false;
            }
        }
        const double angle = 4 * std::atan(p.bulge);
        const CVector centre = CVector::CalcArcCenter(p.at, vertices[i + 1].at, angle);
        const double radius = (p.at - centre).UNorm();
        if (i == 0) {
            circle = {centre, p.height, radius};
        }
        const double close = CloseTo(centre, radius);
        if (!((centre - circle.centre).UNorm() <= close) ||
            !(std::abs(radius - circle.radius) <= close)) {
            return false;
        }
        turned += angle;
    }
    // A small circle far from the origin has few digits.
    const double slack = 1e-9 + 16 * CloseTo(circle.centre, circle.radius) / circle.radius;
    return std::abs(std::abs(turned) - 2 * std::numbers::pi) < slack;
}

}  // namespace cqsurvey::gdal
