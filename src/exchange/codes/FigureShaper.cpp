#include "exchange/codes/FigureShaper.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "exchange/codes/ArcFitter.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

/// Two shots closer than this are in one place: half of the last digit that instruments record.
constexpr double kNoLength = 0.0005;
/// A segment so many times as long as the usual one of its figure looks like a mistake.
constexpr double kFarJump = 10.0;
constexpr std::size_t kFewestForJump = 4;

double Cross(const CVector& a, const CVector& b) {
    return a.GetX() * b.GetY() - a.GetY() * b.GetX();
}

std::string DescribeFault(const ArcResult& result) {
    switch (result.fault) {
        case ArcFault::TooFar:
            return fmt::format(
                "a shot of the curve is {:.3f} from the circle that fits best, so "
                "it is drawn straight",
                result.deviation);
        case ArcFault::Unsteady:
            return "the shots of the curve do not follow each other around a circle, so it is "
                   "drawn straight";
        case ArcFault::Straight:
            break;
    }
    return "the shots of the curve lie in line, so it is drawn straight";
}

}  // namespace

/// The shaping of one figure.
class FigureShaper::Work {
 public:
    Work(const FigureShaper& shaper, const Figure& figure) : m_shaper(shaper), m_figure(figure) {}

    ShapedFigure Shape() {
        switch (m_figure.shape) {
            case FigureShape::Line:
                ShapeLine();
                break;
            case FigureShape::Circle:
                ShapeCircle();
                break;
            case FigureShape::Rectangle:
                ShapeRectangle();
                break;
        }
        if (!m_shaped.paths.empty()) {
            Inspect(m_shaped.paths.front());
        }
        AddParallels();
        AddJoins();
        return std::move(m_shaped);
    }

 private:
    [[nodiscard]] std::size_t Size() const { return m_figure.points.size(); }
    [[nodiscard]] const FieldPoint& Point(std::size_t i) const {
        return m_shaper.m_points[m_figure.points[i].point];
    }
    [[nodiscard]] const FieldControls& Controls(std::size_t i) const {
        return m_figure.points[i].controls;
    }
    [[nodiscard]] FigureVertex Vertex(std::size_t i) const {
        return {Point(i).place, Point(i).height, 0.0, m_figure.points[i].point};
    }

    void Tell(std::size_t i, CodeFate fate, std::string reason) {
        m_shaped.findings.push_back({m_figure.points[i].row, fate, std::move(reason)});
    }
    void Lack(std::size_t i, std::string reason) {
        Tell(i, CodeFate::Incomplete, std::move(reason));
    }
    void LackAll(const std::string& reason) {
        for (std::size_t i = 0; i < Size(); ++i) {
            Lack(i, reason);
        }
    }

    void ShapeLine() {
        m_bulges.assign(Size(), 0.0);
        ShapeCurves();
        FigurePath path;
        for (std::size_t i = 0; i < Size(); ++i) {
            FigureVertex vertex = Vertex(i);
            vertex.bulge = m_bulges[i];
            path.vertices.push_back(vertex);
            AddTurns(i, path);
        }
        if (path.vertices.size() < 2) {
            const bool joined = !Controls(0).joins.empty();
            if (!joined) {
                Lack(0, m_figure.closed ? "a closed figure of one point" : "a figure of one point");
            }
            return;
        }
        if (m_figure.closed && path.vertices.size() == 2) {
            Lack(Size() - 1, "a closed figure of two points, so it is not closed");
        } else if (m_figure.closed) {
            Close(path);
        }
        m_shaped.what = path.closed ? "closed line" : "line";
        m_shaped.paths.push_back(std::move(path));
    }

    static void Close(FigurePath& path) {
        path.closed = true;
        FigureVertex first = path.vertices.front();
        first.bulge = 0.0;
        if ((path.vertices.back().place - first.place).UNorm() == 0.0) {
            // A crew may also shoot the first point again.
            return;
        }
        path.vertices.push_back(first);
    }

    /// True when a segment leads from the last point back to the first, so that a curve may run on
    /// through it.
    [[nodiscard]] bool GoesRound() const {
        const std::size_t last = Size() - 1;
        return m_figure.closed && Size() > 2 && (Controls(last).close || Controls(last).end) &&
               (Point(last).place - Point(0).place).UNorm() > 0.0;
    }

    /// A curve from a point to another one. The points of a closed figure go on with the first
    /// after the last one.
    struct Curve {
        std::size_t from;
        std::size_t to;
    };

    /// Finds where curves begin and end, by their words and by points that are on one.
    void ShapeCurves() {
        const bool goesRound = GoesRound();
        std::vector<Curve> curves = FindCurvesOfPoints(goesRound);
        FindCurvesOfWords(goesRound, curves);
        // A curve of two points goes on from what is before it.
        std::sort(curves.begin(), curves.end(), [this](const Curve& a, const Curve& b) {
            const bool aGoesOn = a.to > Size();
            const bool bGoesOn = b.to > Size();
            return aGoesOn != bGoesOn ? aGoesOn : a.from < b.from;
        });
        for (const Curve& curve : curves) {
            ShapeCurve(curve);
        }
    }

    void FindCurvesOfWords(bool goesRound, std::vector<Curve>& curves) {
        constexpr std::size_t kNone = FigureVertex::kFree;
        std::size_t begin = kNone;
        for (std::size_t i = 0; i < Size(); ++i) {
            const bool endsRound = i == 0 && goesRound;
            if (Controls(i).curveEnd && begin != kNone) {
                curves.push_back({std::exchange(begin, kNone), i});
            } else if (Controls(i).curveEnd && !endsRound) {
                Lack(i, "the end of a curve that did not begin");
            }
            if (Controls(i).curveBegin) {
                if (begin != kNone) {
                    Lack(begin, "the curve has no end, so it is drawn straight");
                }
                begin = i;
            }
        }
        if (begin != kNone && goesRound) {
            curves.push_back({begin, Size()});
        } else if (begin != kNone) {
            Lack(begin, "the curve has no end, so it is drawn straight");
        } else if (Controls(0).curveEnd && goesRound) {
            Lack(0, "the end of a curve that did not begin");
        }
    }

    [[nodiscard]] std::vector<Curve> FindCurvesOfPoints(bool goesRound) const {
        std::vector<Curve> curves;
        const auto onCurve = [&](std::size_t i) { return Controls(i).curvePoint; };
        const auto endOf = [&](std::size_t i) {
            while (i + 1 < Size() && onCurve(i + 1)) {
                ++i;
            }
            return i;
        };
        // A curve that runs on through the first point is that of the last points.
        const bool runsOn = goesRound && onCurve(0) && onCurve(Size() - 1);
        const std::size_t first = runsOn ? endOf(0) : 0;
        if (runsOn && first + 1 == Size()) {
            return {{0, Size()}};
        }
        for (std::size_t i = runsOn ? first + 1 : 0; i < Size(); ++i) {
            if (onCurve(i)) {
                const std::size_t last = endOf(i);
                curves.push_back({i, runsOn && last + 1 == Size() ? Size() + first : last});
                i = last;
            }
        }
        return curves;
    }

    void ShapeCurve(const Curve& curve) {
        const auto [from, to] = curve;
        if (from == to) {
            Lack(from, "a curve of one point");
            return;
        }
        if (to - from == 1) {
            ShapeTangent(from);
            return;
        }
        const bool whole = to - from == Size();
        std::vector<CVector> shots;
        for (std::size_t i = from; i <= to - (whole ? 1 : 0); ++i) {
            shots.push_back(Point(i % Size()).place);
        }
        const ArcResult result = FitArc(shots, m_shaper.m_tolerance, whole);
        if (!result.arc) {
            Tell(from, CodeFate::Suspicious, DescribeFault(result));
            return;
        }
        for (std::size_t i = from; i < to; ++i) {
            m_bulges[i % Size()] = result.arc->bulges[i - from];
        }
    }

    void ShapeTangent(std::size_t from) {
        if (from == 0) {
            Lack(from, "a curve of two points needs a segment before it; it is drawn straight");
            return;
        }
        const CVector tangent =
            FindEndTangent(Point(from - 1).place, Point(from).place, m_bulges[from - 1]);
        const std::optional<double> bulge =
            FindTangentBulge(Point(from).place, tangent, Point((from + 1) % Size()).place);
        if (!bulge) {
            Tell(from, CodeFate::Suspicious, "the curve would turn back, so it is drawn straight");
            return;
        }
        m_bulges[from] = *bulge;
    }

    void AddTurns(std::size_t i, FigurePath& path) {
        const std::vector<double>& turns = Controls(i).turns;
        if (turns.empty()) {
            return;
        }
        if (path.vertices.size() < 2) {
            Lack(i, "a turn needs a segment before it");
            return;
        }
        if (m_bulges[i] != 0.0) {
            Lack(i, "a turn cannot be made where a curve goes on");
            return;
        }
        const FigureVertex& before = path.vertices[path.vertices.size() - 2];
        const FigureVertex here = path.vertices.back();
        CVector direction = FindEndTangent(before.place, here.place, before.bulge);
        const double length = direction.UNorm();
        if (!(length > 0.0)) {
            Lack(i, "a turn needs a segment before it");
            return;
        }
        direction = {direction.GetX() / length, direction.GetY() / length};
        CVector place = here.place;
        for (const double turn : turns) {
            const double side = turn < 0.0 ? -1.0 : 1.0;
            direction = {side * direction.GetY(), -side * direction.GetX()};
            const double distance = std::abs(turn);
            place = place + CVector(direction.GetX() * distance, direction.GetY() * distance);
            path.vertices.push_back({place, here.height, 0.0, FigureVertex::kFree});
        }
    }

    void ShapeCircle() {
        if (m_figure.radius) {
            const double radius = *m_figure.radius;
            if (!(radius > 0.0)) {
                LackAll("a circle needs a radius above 0");
                return;
            }
            const std::size_t last = Size() - 1;
            m_shaped.circle = {Point(last).place, Point(last).height, radius};
        } else if (Size() == 2) {
            const double radius = (Point(1).place - Point(0).place).UNorm();
            if (radius < kNoLength) {
                LackAll("the radius point of the circle is its centre");
                return;
            }
            m_shaped.circle = {Point(0).place, Point(0).height, radius};
        } else if (Size() == 3) {
            const std::optional<Circle> circle =
                FindCircle(Point(0).place, Point(1).place, Point(2).place);
            if (!circle) {
                LackAll("the three points of the circle lie in line");
                return;
            }
            const double height = (Point(0).height + Point(1).height + Point(2).height) / 3;
            m_shaped.circle = {circle->centre, height, circle->radius};
        } else {
            LackAll("a circle of one point without a radius");
            return;
        }
        m_shaped.what = Size() == 3   ? "circle through three points"
                        : Size() == 2 ? "circle by centre and radius point"
                                      : "circle by radius";
    }

    void ShapeRectangle() {
        const bool enough = Size() == (m_figure.width ? 2U : 3U);
        if (!enough) {
            LackAll(m_figure.width ? "a rectangle with a width needs two points"
                                   : "a rectangle without a width needs three points");
            return;
        }
        const CVector side = Point(1).place - Point(0).place;
        const double length = side.UNorm();
        if (length < kNoLength) {
            LackAll("the first side of the rectangle has no length");
            return;
        }
        const double width = m_figure.width
                                 ? *m_figure.width
                                 : -Cross(side, Point(2).place - Point(0).place) / length;
        if (std::abs(width) < kNoLength) {
            LackAll("the rectangle has no width");
            return;
        }
        const CVector across(side.GetY() / length * width, -side.GetX() / length * width);
        FigurePath path;
        path.vertices = {Vertex(0), Vertex(1)};
        path.vertices.push_back(
            {Point(1).place + across, Point(1).height, 0.0, FigureVertex::kFree});
        path.vertices.push_back(
            {Point(0).place + across, Point(0).height, 0.0, FigureVertex::kFree});
        Close(path);
        m_shaped.what =
            m_figure.width ? "rectangle by two points and a width" : "rectangle by three points";
        m_shaped.paths.push_back(std::move(path));
    }

    /// The point of the figure that a vertex lies on or comes after.
    [[nodiscard]] std::size_t FindPoint(const FigurePath& path, std::size_t vertex) const {
        std::size_t i = 0;
        for (std::size_t k = 1; k <= vertex && i + 1 < Size(); ++k) {
            i += path.vertices[k].point != FigureVertex::kFree ? 1U : 0U;
        }
        return i;
    }

    /// Looks for what may be a mistake.
    void Inspect(const FigurePath& path) {
        std::vector<double> lengths;
        for (std::size_t k = 0; k + 1 < path.vertices.size(); ++k) {
            lengths.push_back((path.vertices[k + 1].place - path.vertices[k].place).UNorm());
        }
        double usual = 0.0;
        if (lengths.size() >= kFewestForJump) {
            std::vector<double> sorted = lengths;
            const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
            std::nth_element(sorted.begin(), middle, sorted.end());
            usual = *middle;
        }
        std::size_t i = 0;
        for (std::size_t k = 0; k < lengths.size(); ++k) {
            const bool isPoint = path.vertices[k + 1].point != FigureVertex::kFree;
            i += isPoint && i + 1 < Size() ? 1U : 0U;
            if (lengths[k] < kNoLength) {
                Tell(i, CodeFate::Suspicious, "the segment before it has no length");
            } else if (usual > 0.0 && lengths[k] > kFarJump * usual) {
                Tell(i, CodeFate::Suspicious,
                     fmt::format("the figure jumps here by {:.3f}; its segments are usually {:.3f}",
                                 lengths[k], usual));
            }
        }
        if (path.closed) {
            if (const std::optional<std::size_t> vertex = FindCrossing(path)) {
                Tell(FindPoint(path, *vertex), CodeFate::Suspicious,
                     "the closed figure crosses itself after this point");
            }
        }
    }

    void AddParallels() {
        for (std::size_t i = 0; i < Size(); ++i) {
            for (const Parallel& parallel : Controls(i).parallels) {
                if (m_shaped.paths.empty()) {
                    Lack(i, "there is no line for the parallel");
                    continue;
                }
                std::optional<FigurePath> path = FindParallel(m_shaped.paths.front(), parallel);
                if (!path) {
                    Lack(i, fmt::format("the line bends too sharply for a parallel at {}",
                                        parallel.across));
                    continue;
                }
                m_shaped.paths.push_back(std::move(*path));
            }
        }
    }

    void AddJoins() {
        for (std::size_t i = 0; i < Size(); ++i) {
            for (const std::string& name : Controls(i).joins) {
                const std::optional<std::size_t> other = m_shaper.m_search(name);
                if (!other) {
                    Lack(i, fmt::format("there is no point {} to join", Quoted(name)));
                    continue;
                }
                if (*other == m_figure.points[i].point) {
                    Lack(i, "the point would be joined to itself");
                    continue;
                }
                const FieldPoint& point = m_shaper.m_points[*other];
                if (!std::isfinite(point.place.GetX()) || !std::isfinite(point.place.GetY())) {
                    Lack(i, fmt::format("the point {} has no position", Quoted(name)));
                    continue;
                }
                FigurePath path;
                path.vertices = {Vertex(i), {point.place, point.height, 0.0, *other}};
                m_shaped.paths.push_back(std::move(path));
                if (m_shaped.what.empty()) {
                    m_shaped.what = "line to a point";
                }
            }
        }
    }

    const FigureShaper& m_shaper;
    const Figure& m_figure;
    std::vector<double> m_bulges;
    ShapedFigure m_shaped;
};

ShapedFigure FigureShaper::Shape(const Figure& figure) const {
    return Work(*this, figure).Shape();
}

}  // namespace cqsurvey::exchange
