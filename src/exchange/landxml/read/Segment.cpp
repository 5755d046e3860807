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

bool IsSamePlace(const Vec3& a, const Vec3& b) {
    return std::hypot(b.x - a.x, b.y - a.y) <= kSame;
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
    // A true spiral takes some dozens of arcs, and each takes long to compute.
    constexpr int kDeepest = 7;
    CurveFitter fitter(tolerance, true, kDeepest);
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

void ReadList(Segment& segment, std::string_view name, std::string_view text, double scale,
              MemoryLimit& limit) {
    const int size = name == "PntList2D" ? 2 : 3;
    const std::optional<std::size_t> count = CountPlaces(text, size);
    segment.fault = count ? std::string_view() : kNotPlaces;
    segment.between.clear();
    const std::size_t bytes = count.value_or(0) * sizeof(TiedVertex);
    limit.Take(bytes);
    segment.bytes += bytes;
    segment.between.reserve(count.value_or(0));
    for (std::size_t i = 0; i < count.value_or(0); ++i) {
        segment.between.push_back(VertexAt(TakePlace(text, size, scale)));
    }
}

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
        !std::all_of(segment.between.begin(), segment.between.end(),
                     [](const TiedVertex& tied) { return IsFinite(tied.vertex.at); })) {
        return LeftOut(kNotFinite);
    }
    if (segment.kind == "Curve") {
        return MakeCurve(segment, out);
    }
    if (segment.kind == "Spiral") {
        return MakeSpiral(segment, tolerance, out);
    }
    out.reserve(segment.between.size() + 2);
    if (segment.start) {
        out.push_back(VertexAt(*segment.start));
    }
    for (std::size_t i = 0; i < segment.between.size(); ++i) {
        // The list of an irregular line may begin and end with its ends, or leave them out.
        const TiedVertex& tied = segment.between[i];
        const Vec3& at = tied.vertex.at;
        const bool again =
            (i == 0 && segment.start && IsSamePlace(at, segment.start->at)) ||
            (i + 1 == segment.between.size() && segment.end && IsSamePlace(at, segment.end->at));
        if (!again) {
            out.push_back(tied);
        }
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
