#include "exchange/dxf/read/CurveConverter.h"

#include <cmath>
#include <cstddef>
#include <numbers>

#include "exchange/dxf/read/PathConverter.h"
#include "exchange/dxf/read/Spline.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr double kPi = std::numbers::pi;

Vec3 OnCircle(const Vec3& centre, double radius, double degrees) {
    return {centre.x + radius * std::cos(Radians(degrees)),
            centre.y + radius * std::sin(Radians(degrees)), centre.z};
}

}  // namespace

DrawingOutcome CurveConverter::WholeCircle(const Record& record, const Context& context,
                                           const Vec3& centre, double radius) {
    const Affine map = ObjectMap(record, context);
    const Style style = StyleOf(record, context, m_scene);
    if (!(radius > 0.0)) {
        return LeftOut("its radius is not positive");
    }
    if (map.KeepsCircles()) {
        return m_scene.drawing.Circle(style, map.Point(centre), radius * map.PlanScale(),
                                      ExtrasOf(record))
                   ? Taken("circle")
                   : LeftOut(kNotFinite);
    }
    std::vector<PathVertex> path;
    for (const double degrees : {0.0, 90.0, 180.0, 270.0}) {
        path.push_back({OnCircle(centre, radius, degrees), std::tan(kPi / 8)});
    }
    return DrawPlanar(path, true, map, style, ExtrasOf(record), m_scene, Taken("polyline"));
}

DrawingOutcome CurveConverter::Circle(const Record& record, const Context& context) {
    return WholeCircle(record, context, PointOf(record, 10), record.Number(40));
}

DrawingOutcome CurveConverter::Arc(const Record& record, const Context& context) {
    const Vec3 centre = PointOf(record, 10);
    const double radius = record.Number(40);
    const double start = record.Number(50);
    double sweep = std::fmod(record.Number(51) - start, 360.0);
    if (!(radius > 0.0) || !std::isfinite(start) || !std::isfinite(sweep)) {
        return LeftOut("its radius is not positive, or its angles are not finite");
    }
    sweep += sweep < 0.0 ? 360.0 : 0.0;
    constexpr double kNothing = 1e-9;
    if (sweep < kNothing || sweep > 360.0 - kNothing) {
        const DrawingOutcome outcome = WholeCircle(record, context, centre, radius);
        return outcome.fate == DrawingFate::Taken ? Taken("circle") : outcome;
    }
    // The bulge of nearly a whole circle would make its radius inexact.
    const int pieces = sweep > 270.0 ? 2 : 1;
    const double bulge = std::tan(Radians(sweep) / pieces / 4);
    std::vector<PathVertex> path;
    path.reserve(static_cast<std::size_t>(pieces) + 1);
    for (int i = 0; i < pieces; ++i) {
        path.push_back({OnCircle(centre, radius, start + sweep * i / pieces), bulge});
    }
    path.push_back({OnCircle(centre, radius, start + sweep), 0.0});
    return DrawPlanar(path, false, ObjectMap(record, context), StyleOf(record, context, m_scene),
                      ExtrasOf(record), m_scene, Taken("polyline with an arc"));
}

DrawingOutcome CurveConverter::Ellipse(const Record& record, const Context& context) {
    const Vec3 centre = PointOf(record, 10);
    const Vec3 major = PointOf(record, 11);
    const double ratio = record.Number(40, 1.0);
    const double from = record.Number(41);
    double to = record.Number(42, 2 * kPi);
    Vec3 normal{record.Number(210), record.Number(220), record.Number(230, 1.0)};
    const double length = std::hypot(normal.x, normal.y, normal.z);
    normal = {normal.x / length, normal.y / length, normal.z / length};
    const Vec3 minor{ratio * (normal.y * major.z - normal.z * major.y),
                     ratio * (normal.z * major.x - normal.x * major.z),
                     ratio * (normal.x * major.y - normal.y * major.x)};
    if (!IsFinite(centre) || !IsFinite(major) || !IsFinite(minor) || !std::isfinite(from) ||
        !std::isfinite(to) || !(std::fabs(to - from) < 100.0)) {
        return LeftOut(kNotFinite);
    }
    if (to <= from) {
        to += 2 * kPi;
    }
    constexpr double kNothing = 1e-9;
    const bool whole = std::fabs(to - from - 2 * kPi) < kNothing;
    const auto curve = [&](double angle) {
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        return context.map.Point({centre.x + c * major.x + s * minor.x,
                                  centre.y + c * major.y + s * minor.y,
                                  centre.z + c * major.z + s * minor.z});
    };
    CurveFitter fitter(m_scene.options.tolerance, true);
    std::vector<PathVertex> path;
    const int pieces = 1 + static_cast<int>((to - from) / (kPi / 4));
    for (int i = 0; i < pieces; ++i) {
        fitter.Fit(curve, from + (to - from) * i / pieces, from + (to - from) * (i + 1) / pieces,
                   path);
    }
    path.push_back({whole ? path.front().at : curve(to), 0.0});
    return m_scene.drawing.Polyline(StyleOf(record, context, m_scene), path, ExtrasOf(record))
               ? Converted("polyline with fitted arcs", fitter.GetDeviation())
               : LeftOut(kNotFinite);
}

DrawingOutcome CurveConverter::Spline(const Record& record, const Context& context) {
    const class Spline spline(record);
    const Style style = StyleOf(record, context, m_scene);
    if (!spline.HasCurve()) {
        std::vector<PathVertex> path;
        for (const Vec3& at : spline.GetFitPoints()) {
            path.push_back({context.map.Point(at), 0.0});
        }
        return m_scene.drawing.Polyline(style, path, ExtrasOf(record))
                   ? Converted("polyline through the points that the spline was fitted to")
                   : LeftOut("it has neither a curve nor two points to fit one to");
    }
    const auto curve = [&](double t) { return context.map.Point(spline.At(t)); };
    CurveFitter fitter(m_scene.options.tolerance, true);
    std::vector<PathVertex> path;
    const std::vector<double>& ends = spline.GetSpans();
    for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
        fitter.Fit(curve, ends[i], ends[i + 1], path);
    }
    path.push_back({curve(ends.back()), 0.0});
    return m_scene.drawing.Polyline(style, path, ExtrasOf(record))
               ? Converted("polyline with fitted arcs", fitter.GetDeviation())
               : LeftOut(kNotFinite);
}

}  // namespace cqsurvey::exchange::dxf
