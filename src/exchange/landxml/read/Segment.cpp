#include "exchange/landxml/read/Segment.h"

#include <algorithm>
#include <cmath>

#include "exchange/landxml/read/Arc.h"
#include "exchange/landxml/read/SpiralCurve.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr std::string_view kPart = "part of a polyline";
// Files round what they say; what is nearer than this is the same.
constexpr double kSame = 1e-6;

TiedVertex VertexAt(const Place& place, double bulge = 0.0) {
    return {{place.at, bulge, place.hasHeight}, place.entity};
}

bool IsSamePlace(const Place& a, const Place& b) {
    return std::hypot(b.at.x - a.at.x, b.at.y - a.at.y) <= kSame;
}

DrawingOutcome MakeStraight(const Segment& segment, std::vector<TiedVertex>& out,
                            std::string_view why) {
    out = {VertexAt(*segment.start), VertexAt(*segment.end)};
    return Converted(why);
}

DrawingOutcome MakeCurve(const Segment& segment, std::vector<TiedVertex>& out) {
    const Arc arc = MakeArc(segment);
    if (!arc.fault.empty()) {
        return segment.start->at.x == segment.end->at.x && segment.start->at.y == segment.end->at.y
                   ? LeftOut(arc.fault)
                   : MakeStraight(segment, out,
                                  "a straight part of a polyline, for lack of a centre, or of a "
                                  "radius and a rotation");
    }
    out.push_back(VertexAt(*segment.start, arc.bulge));
    if (arc.whole) {
        out.push_back({{arc.opposite, arc.bulge, segment.start->hasHeight}, 0});
    }
    out.push_back(VertexAt(*segment.end));
    return arc.deviation > kSame
               ? Converted("part of a polyline, with an arc that its file contradicts",
                           arc.deviation)
               : Taken("part of a polyline, with an arc");
}

DrawingOutcome MakeSpiral(const Segment& segment, double tolerance, std::vector<TiedVertex>& out) {
    if (!segment.length || !segment.counterClockwise) {
        return MakeStraight(segment, out,
                            "a straight part of a polyline, for lack of a length or rotation");
    }
    const SpiralCurve curve(segment);
    if (!curve.IsSound()) {
        return MakeStraight(segment, out,
                            "a straight part of a polyline: its length and radii contradict its "
                            "ends");
    }
    CurveFitter fitter(tolerance, true);
    std::vector<PathVertex> path;
    // The middle of a piece tells an arc from a wave only when the piece is no wave.
    constexpr int kPieces = 2;
    const auto at = [&](double part) { return curve.At(part); };
    for (int i = 0; i < kPieces; ++i) {
        fitter.Fit(at, static_cast<double>(i) / kPieces, static_cast<double>(i + 1) / kPieces,
                   path);
    }
    const bool hasHeight = segment.start->hasHeight && segment.end->hasHeight;
    for (const PathVertex& vertex : path) {
        out.push_back({{vertex.at, vertex.bulge, hasHeight}, 0});
    }
    out.front().entity = segment.start->entity;
    out.front().vertex.hasHeight = segment.start->hasHeight;
    out.push_back(VertexAt(*segment.end));
    const double deviation = std::max(fitter.GetDeviation(), curve.GetMisclosure());
    return Converted(curve.IsKnownKind()
                         ? "part of a polyline, with fitted arcs"
                         : "part of a polyline, with arcs fitted as if it were a clothoid",
                     deviation);
}

}  // namespace

DrawingOutcome MakePath(const Segment& segment, double tolerance, std::vector<TiedVertex>& out) {
    out.clear();
    if (!segment.fault.empty()) {
        return LeftOut(segment.fault);
    }
    const bool listed = segment.kind == "IrregularLine" || segment.kind == "Chain";
    if (!listed && (!segment.start || !segment.end)) {
        return LeftOut("it has no start or no end");
    }
    const auto isUsable = [](const Place& place) { return IsFinite(place.at); };
    if ((segment.start && !isUsable(*segment.start)) || (segment.end && !isUsable(*segment.end)) ||
        (segment.center && !isUsable(*segment.center)) ||
        !std::all_of(segment.between.begin(), segment.between.end(), isUsable)) {
        return LeftOut(kNotFinite);
    }
    if (segment.kind == "Curve") {
        return MakeCurve(segment, out);
    }
    if (segment.kind == "Spiral") {
        return MakeSpiral(segment, tolerance, out);
    }
    if (segment.start) {
        out.push_back(VertexAt(*segment.start));
    }
    for (std::size_t i = 0; i < segment.between.size(); ++i) {
        // The list of an irregular line may begin and end with its ends, or leave them out.
        const Place& place = segment.between[i];
        const bool again =
            (i == 0 && segment.start && IsSamePlace(place, *segment.start)) ||
            (i + 1 == segment.between.size() && segment.end && IsSamePlace(place, *segment.end));
        if (again) {
            continue;
        }
        out.push_back(VertexAt(place));
    }
    if (segment.end) {
        out.push_back(VertexAt(*segment.end));
    }
    if (out.size() < 2) {
        out.clear();
        return LeftOut("it has fewer than two places");
    }
    return Taken(kPart);
}

}  // namespace cqsurvey::exchange::landxml
