#include "gdal/write/PolylineEditor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "gdal/DrawingIndex.h"
#include "gdal/write/EntityEditor.h"
#include "gdal/write/Place.h"

namespace cqsurvey::gdal {

namespace {

bool IsSameNumber(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || a == b ||
           (std::isnan(a) && std::isnan(b));
}

bool IsSamePlace(const CVector& a, const CVector& b) {
    return IsSameNumber(a.GetX(), b.GetX()) && IsSameNumber(a.GetY(), b.GetY());
}

}  // namespace

void PolylineEditor::Match(const std::vector<JobVertex>& before, Course& after) {
    const std::size_t olds = before.size();
    const std::size_t news = after.vertices.size();
    const auto same = [&](std::size_t i, std::size_t j) {
        return IsSamePlace(before[i].shape.at, after.vertices[j].at);
    };
    after.from.assign(news, kNew);
    std::size_t head = 0;
    while (head < std::min(olds, news) && same(head, head)) {
        after.from[head] = head;
        ++head;
    }
    std::size_t tail = 0;
    while (head + tail < std::min(olds, news) && same(olds - 1 - tail, news - 1 - tail)) {
        ++tail;
        after.from[news - tail] = olds - tail;
    }
    // What is left in the middle is mostly short. In a long one the vertices are only counted.
    constexpr std::size_t kLong = 1000;
    std::size_t next = head;
    for (std::size_t j = head; j + tail < news && news - head - tail < kLong; ++j) {
        const std::size_t end = std::min(olds - tail, next + kLong);
        std::size_t i = next;
        while (i < end && !same(i, j)) {
            ++i;
        }
        if (i < end) {
            after.from[j] = i;
            next = i + 1;
        }
    }
    // Old vertices between two that were found move to the new places there.
    std::vector<std::size_t> found(news, olds);
    for (std::size_t j = news; j > 0; --j) {
        found[j - 1] = after.from[j - 1] != kNew ? after.from[j - 1] : j < news ? found[j] : olds;
    }
    next = head;
    for (std::size_t j = head; j + tail < news; ++j) {
        if (after.from[j] == kNew && next < found[j]) {
            after.from[j] = next;
        }
        next = after.from[j] != kNew ? after.from[j] + 1 : next;
    }
}

PolylineEditor::Course PolylineEditor::CourseAfter(const std::vector<JobVertex>& before,
                                                   const FeatureChange& change) {
    const FeatureFields& fields = change.After();
    const SingleGeometries singles = Split(fields);
    if (singles.curves.size() != 1 || !singles.points.empty()) {
        throw RecordFailure(fields.Describe() + " is not one line");
    }
    const OGRCurve& curve = *singles.curves.front();
    Course after{RequireCourse(curve, fields), {}};
    Match(before, after);
    // An arc comes as the point half way along it. The old one said like that has the same bulge
    // when nobody changed it.
    const std::unique_ptr<OGRCompoundCurve> old = MakeCurve(ShapeOf(before));
    const std::vector<ArcVertex> said =
        old != nullptr ? VerticesOf(*old) : std::vector<ArcVertex>();
    for (std::size_t j = 0; j < after.vertices.size(); ++j) {
        const std::size_t i = after.from[j];
        ArcVertex& vertex = after.vertices[j];
        if (i == kNew || !IsSamePlace(before[i].shape.at, vertex.at)) {
            continue;
        }
        const ArcVertex& was = before[i].shape;
        vertex.height = curve.Is3D() != 0 ? change.Height(was.height, vertex.height) : was.height;
        if (said.size() == before.size() && IsSameNumber(said[i].bulge, vertex.bulge)) {
            vertex.bulge = was.bulge;
        }
    }
    return after;
}

void PolylineEditor::Move(const JobVertex& before, const ArcVertex& after) {
    CqSurveyDB& db = m_job.Db();
    const bool moved = !IsSamePlace(before.shape.at, after.at);
    if (moved || !IsSameNumber(before.shape.height, after.height) ||
        !IsSameNumber(before.shape.bulge, after.bulge)) {
        const std::array<double, 3> at{after.at.GetX(), after.at.GetY(), after.height};
        db.MoveVertex(before.handle, at.data(), after.bulge);
    }
    if (!moved || before.symbol == 0) {
        return;
    }
    const CqCadEntityPtr point = ReadEntity(db, before.symbol, EntSiPnt);
    std::array<double, 3> at{};
    if (point) {
        point->GetPoint(at.data());
    }
    if (!point || !IsSamePlace(CVector(at[0], at[1]), after.at)) {
        db.UnlinkSiPntAndVertex(0, before.handle);
    }
}

void PolylineEditor::Follow(CqHandle polyline, const std::vector<JobVertex>& before,
                            const Course& after) {
    CqSurveyDB& db = m_job.Db();
    std::vector<bool> stays(before.size(), false);
    for (std::size_t j = 0; j < after.vertices.size(); ++j) {
        if (after.from[j] != kNew) {
            stays[after.from[j]] = true;
            Move(before[after.from[j]], after.vertices[j]);
        }
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (!stays[i]) {
            db.DeleteVertex(before[i].handle);
        }
    }
    std::vector<CqHandle> behind;
    for (std::size_t j = 0; j < after.vertices.size(); ++j) {
        const CqHandle last = behind.empty() ? polyline : behind.back();
        behind.push_back(after.from[j] != kNew ? before[after.from[j]].handle : last);
    }
    // Those behind one vertex are inserted from the last to the first.
    for (std::size_t j = after.vertices.size(); j > 0; --j) {
        if (after.from[j - 1] == kNew) {
            const ArcVertex& vertex = after.vertices[j - 1];
            const std::array<double, 3> at{vertex.at.GetX(), vertex.at.GetY(), vertex.height};
            db.InsertVertex(behind[j - 1], at.data(), vertex.bulge);
        }
    }
}

void PolylineEditor::NoteBox(CqHandle polyline) {
    const std::unique_ptr<OGRCompoundCurve> curve =
        MakeCurve(ShapeOf(ReadVertices(m_job.Db(), polyline)));
    if (curve != nullptr && curve->IsEmpty() == 0) {
        OGREnvelope box;
        curve->getEnvelope(&box);
        m_job.BoxOfMoved().Merge(box);
    }
}

void PolylineEditor::EditPolyline(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const CqCadEntityPtr polyline = RequireEntity(db, handle, EntPline, change);
    const std::vector<JobVertex> before = ReadVertices(db, handle);
    const Course after = change.IsGeometry() ? CourseAfter(before, change) : Course();
    const int line = change.Int(FieldRole::Line, polyline->GetLine());
    const int code = change.Int(FieldRole::Code, polyline->GetCode());
    const DrawingPen::Look look = m_pen.Read(change, *polyline);

    m_pen.Give(look, handle);
    for (const JobVertex& vertex : before) {
        m_pen.Give(look, vertex.handle);
    }
    db.EditPline(handle, line, code);
    if (change.IsGeometry()) {
        Follow(handle, before, after);
        NoteBox(handle);
    }
}

void PolylineEditor::EditVertex(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const FeatureFields& fields = change.After();
    const CqCadEntityPtr vertex = RequireEntity(db, handle, EntVertex, change);
    std::array<double, 3> was{};
    vertex->GetPoint(was.data());
    const std::array<double, 3> at = change.Place(was);
    const double bulge = change.Real(FieldRole::Bulge, vertex->GetBulge());
    CqHandle symbol = 0;
    if (change.Is(FieldRole::Point)) {
        const std::uint32_t point = fields.Unsigned(FieldRole::Point).value_or(0);
        CqCoordRec record;
        if (point != 0 && db.GetCoordRec(point, record) == 0) {
            throw RecordFailure(fields.Describe() + ": there is no point " + std::to_string(point));
        }
        symbol = point != 0 ? db.GetCadEntityHandleByCoordRecHandle(point) : 0;
    }
    const DrawingPen::Look look = m_pen.Read(change, *vertex);

    m_pen.Give(look, handle);
    Move({handle,
          {CVector(was[0], was[1]), was[2], vertex->GetBulge()},
          vertex->GetMcadSiPointHandle()},
         {CVector(at[0], at[1]), at[2], bulge});
    if (change.Is(FieldRole::Point)) {
        db.UnlinkSiPntAndVertex(0, handle);
        if (symbol != 0) {
            db.LinkSiPntAndVertex(symbol, handle);
        }
    }
    NoteBox(vertex->GetPlineHandle());
}

bool PolylineEditor::DeleteVertex(CqHandle handle) {
    CqSurveyDB& db = m_job.Db();
    const CqCadEntityPtr vertex = ReadEntity(db, handle, EntVertex);
    if (vertex && ReadVertices(db, vertex->GetPlineHandle()).size() <= 2) {
        throw RecordFailure("Vertex " + std::to_string(handle) +
                            " is one of the last two of its polyline, which has to go as a whole");
    }
    return db.DeleteVertex(handle) != 0;
}

}  // namespace cqsurvey::gdal
