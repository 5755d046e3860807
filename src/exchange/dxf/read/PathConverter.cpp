#include "exchange/dxf/read/PathConverter.h"

#include <fmt/format.h>

#include <cmath>
#include <numbers>

namespace cqsurvey::exchange::dxf {

namespace {

// Flags of a polyline.
constexpr int kClosed = 1;
constexpr int kCurveFitted = 2;
constexpr int kSplineFitted = 4;
constexpr int kSpace = 8;
constexpr int kSurface = 16 | 64;
// Of a vertex.
constexpr int kFrame = 16;

constexpr std::string_view kPolyline = "polyline";
constexpr std::string_view kNoWidth = "polyline, without its width";
constexpr std::string_view kTooFew = "it has fewer than two vertices";

/// Ends the path where it began, unless it does already.
void Close(std::vector<PathVertex>& path) {
    if (path.size() > 1 && path.front().at != path.back().at) {
        path.push_back({path.front().at, 0.0});
    }
}

bool IsSound(const std::vector<PathVertex>& path) {
    for (const PathVertex& vertex : path) {
        if (!IsFinite(vertex.at) || !std::isfinite(vertex.bulge)) {
            return false;
        }
    }
    return true;
}

void FitSegment(const PathVertex& from, const PathVertex& to, const Affine& map,
                CurveFitter& fitter, std::vector<PathVertex>& out) {
    const bool straight = from.bulge == 0.0 || from.at == to.at;
    if (straight) {
        out.push_back({map.Point(from.at), 0.0});
        return;
    }
    const PlanArc arc = ArcOf(from.at, to.at, from.bulge);
    const auto curve = [&](double part) {
        if (part == 0.0 || part == 1.0) {
            return map.Point(part == 0.0 ? from.at : to.at);
        }
        const double angle = arc.start + arc.sweep * part;
        return map.Point({arc.x + arc.radius * std::cos(angle),
                          arc.y + arc.radius * std::sin(angle), from.at.z});
    };
    // A piece of less than a quarter turn has its middle away from its chord.
    const int pieces = 1 + static_cast<int>(std::fabs(arc.sweep) / (std::numbers::pi / 2));
    for (int i = 0; i < pieces; ++i) {
        fitter.Fit(curve, static_cast<double>(i) / pieces,
                   i + 1 == pieces ? 1.0 : static_cast<double>(i + 1) / pieces, out);
    }
}

}  // namespace

DrawingOutcome DrawPlanar(std::vector<PathVertex>& path, bool closed, const Affine& map,
                          const Style& style, const Extras& extras, Scene& scene,
                          DrawingOutcome plain) {
    if (path.size() < 2) {
        return LeftOut(kTooFew);
    }
    if (!IsSound(path)) {
        return LeftOut(kNotFinite);
    }
    if (closed) {
        Close(path);
    }
    bool curved = false;
    for (const PathVertex& vertex : path) {
        curved |= vertex.bulge != 0.0;
    }
    if (!curved || map.KeepsCircles()) {
        const double turn = map.Mirrors() ? -1.0 : 1.0;
        for (PathVertex& vertex : path) {
            vertex = {map.Point(vertex.at), vertex.bulge == 0.0 ? 0.0 : turn * vertex.bulge};
        }
        return scene.drawing.Polyline(style, path, extras) ? plain : LeftOut(kNotFinite);
    }
    CurveFitter fitter(scene.options.tolerance, true);
    std::vector<PathVertex> fitted;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        FitSegment(path[i], path[i + 1], map, fitter, fitted);
    }
    fitted.push_back({map.Point(path.back().at), 0.0});
    if (closed && fitted.size() > 1) {
        fitted.back().at = fitted.front().at;
    }
    return scene.drawing.Polyline(style, fitted, extras)
               ? Converted("polyline, its distorted arcs fitted with arcs", fitter.GetDeviation())
               : LeftOut(kNotFinite);
}

DrawingOutcome PathConverter::Line(const Record& record, const Context& context) {
    m_path.assign({{context.map.Point(PointOf(record, 10)), 0.0},
                   {context.map.Point(PointOf(record, 11)), 0.0}});
    return m_scene.drawing.Polyline(StyleOf(record, context, m_scene), m_path, ExtrasOf(record))
               ? Taken(kPolyline)
               : LeftOut(kNotFinite);
}

DrawingOutcome PathConverter::LightPolyline(const Record& record, const Context& context) {
    m_path.clear();
    const double elevation = record.Number(38);
    bool wide = false;
    for (const Entry& entry : record.GetEntries()) {
        switch (entry.code) {
            case 10:
                m_path.push_back({{record.Number(entry), 0.0, elevation}, 0.0});
                break;
            case 20:
                if (!m_path.empty()) {
                    m_path.back().at.y = record.Number(entry);
                }
                break;
            case 42:
                if (!m_path.empty()) {
                    m_path.back().bulge = record.Number(entry);
                }
                break;
            case 40:
            case 41:
            case 43:
                wide |= record.Number(entry) != 0.0;
                break;
            default:
                break;
        }
    }
    if (const Entry* count = record.Find(90);
        count != nullptr && record.Whole(*count) != static_cast<int>(m_path.size())) {
        record.GetOrigin().Fail(record.place + count->place,
                                fmt::format("the polyline says it has {} vertices, and has {}",
                                            record.Whole(*count), m_path.size()));
    }
    return DrawPlanar(m_path, (record.Whole(70) & kClosed) != 0, ObjectMap(record, context),
                      StyleOf(record, context, m_scene), ExtrasOf(record), m_scene,
                      wide ? Converted(kNoWidth) : Taken(kPolyline));
}

DrawingOutcome PathConverter::Polyline(const Record& record, const Context& context) {
    const int flags = record.Whole(70);
    if ((flags & kSurface) != 0) {
        return LeftOut("it is a surface of faces");
    }
    const bool space = (flags & kSpace) != 0;
    const double elevation = record.Number(30);
    bool wide = record.Number(40) != 0.0 || record.Number(41) != 0.0;
    m_path.clear();
    bool frame = false;
    for (const Entry& entry : record.GetEntries()) {
        if (entry.code == 0) {
            if (frame) {
                m_path.pop_back();
            }
            frame = false;
            m_path.push_back({{0.0, 0.0, space ? 0.0 : elevation}, 0.0});
        } else if (!m_path.empty()) {
            PathVertex& vertex = m_path.back();
            switch (entry.code) {
                case 10:
                    vertex.at.x = record.Number(entry);
                    break;
                case 20:
                    vertex.at.y = record.Number(entry);
                    break;
                case 30:
                    // Some programs write the height of a level polyline only at its vertices.
                    if (space || elevation == 0.0) {
                        vertex.at.z = record.Number(entry);
                    }
                    break;
                case 40:
                case 41:
                    wide |= record.Number(entry) != 0.0;
                    break;
                case 42:
                    vertex.bulge = space ? 0.0 : record.Number(entry);
                    break;
                case 70:
                    frame = (record.Whole(entry) & kFrame) != 0;
                    break;
                default:
                    break;
            }
        }
    }
    if (frame) {
        m_path.pop_back();
    }
    const bool fitted = (flags & (kCurveFitted | kSplineFitted)) != 0;
    return DrawPlanar(m_path, (flags & kClosed) != 0,
                      space ? context.map : ObjectMap(record, context),
                      StyleOf(record, context, m_scene), ExtrasOf(record), m_scene,
                      fitted ? Converted("polyline, through the vertices of its fitted curve")
                      : wide ? Converted(kNoWidth)
                             : Taken(kPolyline));
}

DrawingOutcome PathConverter::Leader(const Record& record, const Context& context) {
    m_path.clear();
    for (const Entry& entry : record.GetEntries()) {
        if (entry.code == 10) {
            m_path.push_back({{record.Number(entry), 0.0, 0.0}, 0.0});
        } else if (!m_path.empty() && entry.code == 20) {
            m_path.back().at.y = record.Number(entry);
        } else if (!m_path.empty() && entry.code == 30) {
            m_path.back().at.z = record.Number(entry);
        }
    }
    return DrawPlanar(m_path, false, context.map, StyleOf(record, context, m_scene),
                      ExtrasOf(record), m_scene, Converted("polyline, without its arrow"));
}

}  // namespace cqsurvey::exchange::dxf
