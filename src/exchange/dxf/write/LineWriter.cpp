#include "exchange/dxf/write/LineWriter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "exchange/drawing/Chords.h"
#include "exchange/dxf/LineTypes.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr int kClosed = 1;
constexpr int kSpace = 8;
constexpr int kSpaceVertex = 32;

/// True when the last vertex only says that the polyline is closed. When the one before it lies
/// there too, a reader could not tell that there were two.
bool IsClosed(const std::vector<PathVertex>& path) {
    return path.size() > 2 && path.front().at == path.back().at &&
           path.front().at != path[path.size() - 2].at;
}

bool IsCurved(const PathVertex& from, const PathVertex& to) {
    return from.bulge != 0.0 && (from.at.x != to.at.x || from.at.y != to.at.y);
}

}  // namespace

LineWriter::LineWriter(GroupWriter& out, Contents& contents, const DxfWriteOptions& options)
    : m_out(out), m_options(options), m_frame(out, contents) {}

DrawingOutcome LineWriter::Circle(const CqCadEntity& entity) {
    bool noHeight = false;
    const Vec3 at = EntityFrame::PlaceOf(entity, noHeight);
    const double radius = entity.GetRadius();
    if (!IsFinite(at) || !std::isfinite(radius) || !(radius > 0.0)) {
        return {DrawingFate::LeftOut, "its radius is not positive, or its numbers are not finite"};
    }
    Extras extras;
    extras.Set("HEIGHT", noHeight ? "NONE" : "");
    extras.SetWhole("CODE", entity.GetCode());
    m_frame.Begin("CIRCLE", entity, entity.GetLayer(), entity.GetLine());
    m_out.Subclass("AcDbCircle");
    m_out.Point(10, at);
    m_out.Number(40, radius);
    m_frame.WriteExtras(extras);
    return {DrawingFate::Taken, "CIRCLE"};
}

DrawingOutcome LineWriter::Polyline(const CqCadEntity& entity, std::vector<PathVertex> path) {
    if (path.size() < 2) {
        return {DrawingFate::LeftOut, "it has fewer than two vertices"};
    }
    std::size_t without = 0;
    for (PathVertex& vertex : path) {
        if (std::isnan(vertex.at.z)) {
            vertex.at.z = 0.0;
            ++without;
        }
        if (!IsFinite(vertex.at) || !std::isfinite(vertex.bulge)) {
            return {DrawingFate::LeftOut, "its numbers are not finite"};
        }
    }
    Extras extras;
    extras.SetWhole("CODE", entity.GetCode());
    extras.Set("HEIGHT", without == path.size() ? "NONE" : "");
    const bool level = std::all_of(path.begin(), path.end(), [&](const PathVertex& vertex) {
        return vertex.at.z == path.front().at.z;
    });
    if (level) {
        WriteLevel(entity, path, extras);
        return without != 0 && without != path.size()
                   ? DrawingOutcome{DrawingFate::Converted, "polyline, height 0 where it has none"}
                   : DrawingOutcome{DrawingFate::Taken, m_out.IsR12() ? "POLYLINE" : "LWPOLYLINE"};
    }
    bool curved = false;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        curved |= IsCurved(path[i], path[i + 1]);
    }
    if (!curved) {
        WriteSpace(entity, path, extras);
        return without != 0
                   ? DrawingOutcome{DrawingFate::Converted, "polyline, height 0 where it has none"}
                   : DrawingOutcome{DrawingFate::Taken, "POLYLINE in space"};
    }
    return m_options.arcs == DxfArcs::Break ? BreakArcs(entity, path, extras)
                                            : KeepArcs(entity, path, extras);
}

void LineWriter::WriteLevel(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                            const Extras& extras) {
    const bool closed = IsClosed(path);
    if (m_out.IsR12()) {
        WriteLevelR12(entity, path, closed, extras);
        return;
    }
    const std::size_t count = path.size() - (closed ? 1 : 0);
    m_frame.Begin("LWPOLYLINE", entity, entity.GetLayer(), entity.GetLine());
    m_out.Subclass("AcDbPolyline");
    m_out.Whole(90, static_cast<std::int64_t>(count));
    m_out.Whole(70, closed ? kClosed : 0);
    if (path.front().at.z != 0.0) {
        m_out.Number(38, path.front().at.z);
    }
    for (std::size_t i = 0; i < count; ++i) {
        m_out.PlanPoint(10, path[i].at.x, path[i].at.y);
        if (path[i].bulge != 0.0) {
            m_out.Number(42, path[i].bulge);
        }
    }
    m_frame.WriteExtras(extras);
}

void LineWriter::WriteLevelR12(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                               bool closed, const Extras& extras) {
    m_frame.Begin("POLYLINE", entity, entity.GetLayer(), entity.GetLine());
    m_out.Whole(66, 1);
    m_out.Point(10, {0.0, 0.0, path.front().at.z});
    m_out.Whole(70, closed ? kClosed : 0);
    m_frame.WriteExtras(extras);
    for (std::size_t i = 0; i < path.size() - (closed ? 1 : 0); ++i) {
        m_frame.BeginPart("VERTEX", 0, entity.GetLayer());
        m_out.Point(10, path[i].at);
        if (path[i].bulge != 0.0) {
            m_out.Number(42, path[i].bulge);
        }
    }
    m_frame.BeginPart("SEQEND", 0, entity.GetLayer());
}

void LineWriter::WriteSpace(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                            const Extras& extras) {
    const bool closed = IsClosed(path);
    const std::uint64_t handle =
        m_frame.Begin("POLYLINE", entity, entity.GetLayer(), entity.GetLine());
    m_out.Subclass("AcDb3dPolyline");
    m_out.Whole(66, 1);
    m_out.Point(10, {});
    m_out.Whole(70, kSpace | (closed ? kClosed : 0));
    m_frame.WriteExtras(extras);
    for (std::size_t i = 0; i < path.size() - (closed ? 1 : 0); ++i) {
        m_frame.BeginPart("VERTEX", handle, entity.GetLayer());
        m_out.Subclass("AcDbVertex");
        m_out.Subclass("AcDb3dPolylineVertex");
        m_out.Point(10, path[i].at);
        m_out.Whole(70, kSpaceVertex);
    }
    m_frame.BeginPart("SEQEND", handle, entity.GetLayer());
}

DrawingOutcome LineWriter::BreakArcs(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                                     const Extras& extras) {
    double deviation = 0.0;
    const std::vector<PathVertex> broken =
        exchange::BreakArcs(path, m_options.tolerance, deviation);
    if (!std::all_of(broken.begin(), broken.end(),
                     [](const PathVertex& vertex) { return IsFinite(vertex.at); })) {
        return {DrawingFate::LeftOut, "its numbers are too large to break its arcs"};
    }
    WriteSpace(entity, broken, extras);
    return {DrawingFate::Converted, "POLYLINE in space, its arcs broken into lines", deviation};
}

DrawingOutcome LineWriter::KeepArcs(const CqCadEntity& entity, const std::vector<PathVertex>& path,
                                    const Extras& extras) {
    double deviation = 0.0;
    std::vector<PathVertex> straight;
    const auto flush = [&] {
        if (straight.size() > 1) {
            WriteSpace(entity, straight, extras);
        }
        straight.clear();
    };
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        PathVertex from = path[i];
        PathVertex to = path[i + 1];
        if (!IsCurved(from, to)) {
            if (straight.empty()) {
                straight.push_back({from.at, 0.0});
            }
            straight.push_back({to.at, 0.0});
            continue;
        }
        flush();
        const double height = std::midpoint(from.at.z, to.at.z);
        deviation = std::max(deviation, std::fabs(to.at.z / 2 - from.at.z / 2));
        from.at.z = height;
        to.at.z = height;
        WriteLevel(entity, {from, {to.at, 0.0}}, extras);
    }
    flush();
    return {DrawingFate::Converted,
            "several polylines, each arc level between the heights of its ends", deviation};
}

}  // namespace cqsurvey::exchange::dxf
