#include "exchange/dxf/read/HatchPaths.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

#include "exchange/dxf/Affine.h"
#include "exchange/dxf/read/Spline.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kPolylinePath = 2;

using Path = std::vector<PathVertex>;

/// Reads the outlines group by group: here the meaning of a code depends on what went before.
class HatchReader {
 public:
    HatchReader(const Record& record, CurveFitter& fitter)
        : m_record(record), m_fitter(fitter), m_height(record.Number(30)) {}

    std::vector<Path> Read() {
        const std::vector<Entry>& entries = m_record.GetEntries();
        while (m_at < entries.size() && entries[m_at].code != 91) {
            ++m_at;
        }
        std::vector<Path> paths;
        const int count = m_at < entries.size() ? TakeCount(91) : 0;
        for (int i = 0; i < count; ++i) {
            const int flags = TakeWhole(92);
            Path path;
            if ((flags & kPolylinePath) != 0) {
                ReadPolyline(path);
            } else {
                ReadEdges(path);
            }
            if (Peek(97)) {
                int sources = TakeCount(97);
                while (sources > 0 && Has(330)) {
                    --sources;
                }
            }
            if (path.size() > 1) {
                paths.push_back(std::move(path));
            }
        }
        return paths;
    }

 private:
    [[nodiscard]] bool Peek(int code) const {
        return m_at < m_record.GetEntries().size() && m_record.GetEntries()[m_at].code == code;
    }

    bool Has(int code) {
        const bool has = Peek(code);
        m_at += has ? 1 : 0;
        return has;
    }

    double Take(int code) {
        if (!Peek(code)) {
            const std::vector<Entry>& entries = m_record.GetEntries();
            const std::uint64_t place = m_at < entries.size() ? entries[m_at].place
                                        : entries.empty()     ? 0
                                                              : entries.back().place;
            m_record.GetOrigin().Fail(
                m_record.place + place,
                fmt::format(
                    "the outline of the hatch is not as its counts say: group {} is missing",
                    code));
        }
        return m_record.Number(m_record.GetEntries()[m_at++]);
    }

    int TakeWhole(int code) {
        static_cast<void>(Take(code));
        return m_record.Whole(m_record.GetEntries()[m_at - 1]);
    }

    double TakeIf(int code, double fallback) { return Peek(code) ? Take(code) : fallback; }

    int TakeCount(int code) {
        const double count = Take(code);
        if (!(count >= 0.0) || !(count <= static_cast<double>(m_record.GetEntries().size()))) {
            m_record.GetOrigin().Fail(m_record.place + m_record.GetEntries()[m_at - 1].place,
                                      fmt::format("the hatch says it has {} parts", count));
        }
        return static_cast<int>(count);
    }

    Vec3 TakePoint(int code) {
        const double x = Take(code);
        return {x, Take(code + 10), m_height};
    }

    void ReadPolyline(Path& path) {
        const bool bulges = TakeIf(72, 0.0) != 0.0;
        static_cast<void>(TakeIf(73, 0.0));
        for (int left = TakeCount(93); left > 0; --left) {
            const Vec3 at = TakePoint(10);
            path.push_back({at, bulges || Peek(42) ? TakeIf(42, 0.0) : 0.0});
        }
    }

    void ReadEdges(Path& path) {
        for (int left = TakeCount(93); left > 0; --left) {
            switch (TakeWhole(72)) {
                case 1: {
                    path.push_back({TakePoint(10), 0.0});
                    static_cast<void>(TakePoint(11));
                    break;
                }
                case 2:
                    ReadArc(path);
                    break;
                case 3:
                    ReadEllipse(path);
                    break;
                default:
                    ReadSpline(path);
                    break;
            }
        }
    }

    /// Angles of a clockwise edge are counted clockwise.
    void TakeAngles(double& from, double& to) {
        from = Radians(Take(50));
        to = Radians(Take(51));
        const bool clockwise = TakeIf(73, 1.0) == 0.0;
        if (!(std::fabs(from) < 1e4) || !(std::fabs(to) < 1e4)) {
            from = 0.0;
            to = 2 * kPi;
        }
        while (to <= from) {
            to += 2 * kPi;
        }
        if (clockwise) {
            from = -from;
            to = -to;
        }
    }

    void ReadArc(Path& path) {
        const Vec3 centre = TakePoint(10);
        const double radius = Take(40);
        double from = 0.0;
        double to = 0.0;
        TakeAngles(from, to);
        const int pieces = std::fabs(to - from) > kPi ? 2 : 1;
        for (int i = 0; i < pieces; ++i) {
            const double angle = from + (to - from) * i / pieces;
            path.push_back({{centre.x + radius * std::cos(angle),
                             centre.y + radius * std::sin(angle), m_height},
                            std::tan((to - from) / pieces / 4)});
        }
    }

    void ReadEllipse(Path& path) {
        const Vec3 centre = TakePoint(10);
        const Vec3 major = TakePoint(11);
        const double ratio = Take(40);
        double from = 0.0;
        double to = 0.0;
        TakeAngles(from, to);
        const auto curve = [&](double angle) -> Vec3 {
            const double c = std::cos(angle);
            const double s = std::sin(angle) * ratio;
            return {centre.x + c * major.x - s * major.y, centre.y + c * major.y + s * major.x,
                    m_height};
        };
        constexpr int kPieces = 8;
        for (int i = 0; i < kPieces; ++i) {
            m_fitter.Fit(curve, from + (to - from) * i / kPieces,
                         from + (to - from) * (i + 1) / kPieces, path);
        }
    }

    void ReadSpline(Path& path) {
        const int degree = TakeWhole(94);
        static_cast<void>(TakeIf(73, 0.0));
        static_cast<void>(TakeIf(74, 0.0));
        const int knotCount = TakeCount(95);
        const int controlCount = TakeCount(96);
        std::vector<double> knots;
        knots.reserve(static_cast<std::size_t>(knotCount));
        for (int i = 0; i < knotCount; ++i) {
            knots.push_back(Take(40));
        }
        std::vector<Vec3> controls;
        std::vector<double> weights;
        for (int i = 0; i < controlCount; ++i) {
            controls.push_back(TakePoint(10));
            if (Peek(42)) {
                weights.push_back(Take(42));
            }
        }
        // Since 2010 a 97 counts the points that the spline was fitted to; in any version one after
        // the last edge counts the sources of the path. None of either may be taken for the other.
        const std::vector<Entry>& entries = m_record.GetEntries();
        if (Peek(97) && (m_record.Whole(entries[m_at]) == 0 ||
                         (m_at + 1 < entries.size() && entries[m_at + 1].code == 11))) {
            for (int left = TakeCount(97); left > 0; --left) {
                static_cast<void>(TakePoint(11));
            }
        }
        for (const int code : {12, 13}) {
            if (Peek(code)) {
                static_cast<void>(TakePoint(code));
            }
        }
        const std::vector<Vec3> points = controls;
        const Spline spline(degree, std::move(knots), std::move(controls), std::move(weights));
        const std::vector<double>& ends = spline.GetSpans();
        if (!spline.HasCurve()) {
            for (const Vec3& at : points) {
                path.push_back({at, 0.0});
            }
            return;
        }
        for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
            m_fitter.Fit([&](double t) { return spline.At(t); }, ends[i], ends[i + 1], path);
        }
        path.push_back({spline.At(ends.back()), 0.0});
    }

    const Record& m_record;
    CurveFitter& m_fitter;
    double m_height;
    std::size_t m_at = 0;
};

}  // namespace

std::vector<std::vector<PathVertex>> ReadHatchPaths(const Record& record, CurveFitter& fitter) {
    return HatchReader(record, fitter).Read();
}

}  // namespace cqsurvey::exchange::dxf
