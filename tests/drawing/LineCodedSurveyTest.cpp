#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/cqsurvey.h"
#include "support/Box.h"
#include "support/SampledArc.h"
#include "support/SurveyData.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using Point = std::array<double, 3>;

/// A surveyed point on a line, and whether the line bends there.
struct Shot {
    CqHandle entity = 0;
    Point at{};
    bool curved = false;
};

/// A line as it was drawn.
struct DrawnLine {
    CqHandle pline = 0;
    std::vector<Shot> shots;
    std::vector<double> bulges;
};

/// The bulge of the arc from p to q whose circle passes through r, which is not on the arc. The
/// angle at r over the chord is half the arc's, wherever r stands.
double BulgeOverChord(const Point& p, const Point& q, const Point& r) {
    const double px = p[0] - r[0];
    const double py = p[1] - r[1];
    const double qx = q[0] - r[0];
    const double qy = q[1] - r[1];
    const double atR = std::atan2(px * qy - py * qx, px * qx + py * qy);
    return std::tan(atR / 2.0);
}

/// Bends every run of curved shots: an arc through each three of them, the next from the last of
/// them on.
std::vector<double> BulgesOf(const std::vector<Shot>& shots) {
    std::vector<double> bulges(shots.size(), 0.0);
    std::size_t i = 0;
    while (i + 2 < shots.size()) {
        if (shots[i].curved && shots[i + 1].curved && shots[i + 2].curved) {
            bulges[i] = BulgeOverChord(shots[i].at, shots[i + 1].at, shots[i + 2].at);
            bulges[i + 1] = BulgeOverChord(shots[i + 1].at, shots[i + 2].at, shots[i].at);
            i += 2;
        } else {
            ++i;
        }
    }
    return bulges;
}

/// Draws the lines of a survey while its points come in.
class FieldDrawing {
 public:
    explicit FieldDrawing(CqSurveyDB& db) : m_db(db) {}

    void Record(std::string_view name, const Point& at) {
        const CqHandle record =
            m_db.AddCoordRec(at.data(), FromUtf8(name), 0, SurveyCoordType{1}, 0);
        m_entity = m_db.GetCadEntityHandleByCoordRecHandle(record);
        m_at = at;
        ++m_points;
    }
    /// Begins a line of a code with the point recorded last; one that is open ends.
    void Begin(const std::string& code, bool curved) {
        End(code);
        m_open[code].push_back({m_entity, m_at, curved});
    }
    void Continue(const std::string& code, bool curved) {
        m_open[code].push_back({m_entity, m_at, curved});
    }
    [[nodiscard]] bool IsOpen(const std::string& code) const { return m_open.count(code) != 0; }
    void End(const std::string& code) {
        const auto line = m_open.find(code);
        if (line == m_open.end()) {
            return;
        }
        const std::vector<Shot> shots = line->second;
        m_open.erase(line);
        const std::vector<double> bulges = BulgesOf(shots);
        CqCadEntityList* list = m_db.StartPline(0, CodeNumber(code));
        for (std::size_t i = 0; i < shots.size(); ++i) {
            m_db.AddVertex(list, shots[i].at.data(), bulges[i]);
        }
        const CqHandle pline = m_db.EndPline(list);
        ASSERT_NE(pline, 0U);
        for (std::size_t i = 0; i < shots.size(); ++i) {
            ASSERT_EQ(
                m_db.LinkSiPntAndVertex(shots[i].entity, pline + 1 + static_cast<CqHandle>(i)), 1);
        }
        m_lines.push_back({pline, shots, bulges});
    }
    void EndAll() {
        while (!m_open.empty()) {
            const std::string code = m_open.begin()->first;
            End(code);
        }
    }

    [[nodiscard]] int Points() const { return m_points; }
    [[nodiscard]] const std::vector<DrawnLine>& Lines() const { return m_lines; }
    int CodeNumber(const std::string& code) {
        return m_codes.emplace(code, static_cast<int>(m_codes.size()) + 1).first->second;
    }

 private:
    CqSurveyDB& m_db;
    std::map<std::string, std::vector<Shot>> m_open;
    std::map<std::string, int> m_codes;
    std::vector<DrawnLine> m_lines;
    CqHandle m_entity = 0;
    Point m_at{};
    int m_points = 0;
};

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::vector<std::string_view> Lines(std::string_view text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (text.substr(0, kMark.size()) == kMark) {
        text.remove_prefix(kMark.size());
    }
    std::vector<std::string_view> lines;
    for (std::string_view line : Split(text, '\n')) {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) {
            line.remove_suffix(1);
        }
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return lines;
}

double Number(std::string_view text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_TRUE(error == std::errc() && end == text.data() + text.size()) << text;
    return value;
}

/// Name, easting, northing, height and a code; after it " I" begins a line of the code, " IC" one
/// that begins with a curve, and " C" bends one. Any other point of a code goes on with its line.
void DrawLettered(std::string_view text, FieldDrawing& drawing) {
    for (const std::string_view row : Lines(text)) {
        const auto fields = Split(row, ',');
        ASSERT_EQ(fields.size(), 5U);
        drawing.Record(fields[0], {Number(fields[1]), Number(fields[2]), Number(fields[3])});
        std::string_view code = fields[4];
        const std::size_t blank = code.rfind(' ');
        const std::string_view mark =
            blank == std::string_view::npos ? std::string_view() : code.substr(blank + 1);
        const bool begins = mark == "I" || mark == "IC";
        const bool curved = mark == "IC" || mark == "C";
        if (begins || curved) {
            code = code.substr(0, blank);
        }
        const std::string key(code);
        if (begins) {
            drawing.Begin(key, curved);
        } else if (drawing.IsOpen(key)) {
            drawing.Continue(key, curved);
        }
    }
    drawing.EndAll();
}

/// Name, x, y, z and codes joined by "+": "-1" begins a line of the code before it, "-2" goes on,
/// "-3" is on an arc, "-9" ends it.
void DrawNumbered(std::string_view text, FieldDrawing& drawing) {
    for (const std::string_view row : Lines(text)) {
        if (row.front() == '#' || row.substr(0, 2) == "id") {
            continue;
        }
        const auto fields = Split(row, ',');
        ASSERT_GE(fields.size(), 5U);
        drawing.Record(fields[0], {Number(fields[1]), Number(fields[2]), Number(fields[3])});
        for (const std::string_view code : Split(fields[4], '+')) {
            const auto parts = Split(code, '-');
            if (parts.size() != 2 || parts[1].size() != 1) {
                continue;
            }
            const std::string key(parts[0]);
            switch (parts[1].front()) {
                case '1':
                    drawing.Begin(key, false);
                    break;
                case '2':
                case '3':
                    drawing.Continue(key, parts[1].front() == '3');
                    break;
                case '9':
                    drawing.Continue(key, false);
                    drawing.End(key);
                    break;
                default:
                    break;
            }
        }
    }
    drawing.EndAll();
}

double Distance(const CVector& a, const Point& b) {
    return (a - CVector(b[0], b[1])).UNorm();
}

class LineCodedSurvey : public ::testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_path); }

    /// Draws the file as one batch, and reopens the job; false when the file is not there.
    template <class Draw>
    bool DrawFile(const std::string& name, Draw&& draw) {
        const std::optional<std::string> text = ReadSurveyData("points/" + name);
        if (!text) {
            return false;
        }
        CqBatch batch(m_db);
        draw(*text, m_drawing);
        batch.Commit();
        m_db.Close();
        m_db.Open(m_path);
        return true;
    }

    [[nodiscard]] std::unique_ptr<CqCadEntity> Read(CqHandle handle) const {
        CqCadEntity* entity = nullptr;
        EXPECT_EQ(m_db.GetNextCadEntity(handle, entity), 1);
        return std::unique_ptr<CqCadEntity>(entity);
    }

    /// Expects each line as it was measured: its vertices on their points and tied to them, and its
    /// bound around its arcs.
    void ExpectLinesThroughTheirPoints() {
        std::map<CqHandle, std::vector<CqHandle>> ties;
        for (const DrawnLine& line : m_drawing.Lines()) {
            SCOPED_TRACE("polyline " + std::to_string(line.pline));
            ASSERT_EQ(Read(line.pline)->GetType(), EntPline);
            constexpr int kDepth = 8;
            Box samples;
            double tolerance = 0.0;
            for (std::size_t i = 0; i < line.shots.size(); ++i) {
                const Shot& shot = line.shots[i];
                const CqHandle handle = line.pline + 1 + static_cast<CqHandle>(i);
                const auto vertex = Read(handle);
                Point at;
                vertex->GetPoint(at.data());
                EXPECT_EQ(at, shot.at);
                EXPECT_EQ(vertex->GetBulge(), line.bulges[i]);
                EXPECT_EQ(vertex->GetPlineHandle(), line.pline);
                EXPECT_EQ(vertex->GetMcadSiPointHandle(), shot.entity);
                ties[shot.entity].push_back(handle);
                samples.Add(at[0], at[1]);
                if (line.bulges[i] != 0.0) {
                    const CVector p(at[0], at[1]);
                    const CVector q(line.shots[i + 1].at[0], line.shots[i + 1].at[1]);
                    SampleArc(p, q, line.bulges[i], kDepth,
                              [&](const CVector& v) { samples.Add(v.GetX(), v.GetY()); });
                    tolerance = std::max(tolerance, ArcTolerance(p, q, line.bulges[i], kDepth));
                }
            }
            CVector min;
            CVector max;
            Read(line.pline)->GetBound(min, max);
            EXPECT_NEAR(min.GetX(), samples.minX, tolerance);
            EXPECT_NEAR(min.GetY(), samples.minY, tolerance);
            EXPECT_NEAR(max.GetX(), samples.maxX, tolerance);
            EXPECT_NEAR(max.GetY(), samples.maxY, tolerance);
        }
        for (const auto& [entity, vertices] : ties) {
            const auto point = Read(entity);
            ASSERT_EQ(point->GetMcadNumVertex(), static_cast<int>(vertices.size()));
        }
    }

    /// Expects that the two segments from a shot on are one arc through three points.
    void ExpectArc(const DrawnLine& line, std::size_t first) {
        const Point& p = line.shots.at(first).at;
        const Point& q = line.shots.at(first + 1).at;
        const Point& r = line.shots.at(first + 2).at;
        const auto centre = [](const Point& a, const Point& b, double bulge) {
            return CVector::CalcArcCenter({a[0], a[1]}, {b[0], b[1]}, 4.0 * std::atan(bulge));
        };
        EXPECT_GT(line.bulges[first] * line.bulges[first + 1], 0.0) << "both bend to one side";
        const CVector c = centre(p, q, line.bulges[first]);
        const CVector d = centre(q, r, line.bulges[first + 1]);
        // The coordinates are millions of metres with a spacing of a nanometre.
        EXPECT_NEAR(c.GetX(), d.GetX(), 1e-4);
        EXPECT_NEAR(c.GetY(), d.GetY(), 1e-4);
        const double radius = Distance(c, p);
        EXPECT_NEAR(Distance(c, q), radius, 1e-4);
        EXPECT_NEAR(Distance(c, r), radius, 1e-4);
    }

    [[nodiscard]] int CurvedSegments() const {
        int count = 0;
        for (const DrawnLine& line : m_drawing.Lines()) {
            for (const double bulge : line.bulges) {
                count += bulge != 0.0 ? 1 : 0;
            }
        }
        return count;
    }

    [[nodiscard]] SVDB_INFORMATION Counts() {
        SVDB_INFORMATION info;
        CqSurveyDB::GetDBInformation(0xFF, u"", info, &m_db);
        return info;
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"survey.job");
    CqSurveyDB m_db;
    FieldDrawing m_drawing{m_db};
};

TEST_F(LineCodedSurvey, WithLettersIsDrawnWithItsCurves) {
    if (!DrawFile("linecoded_penzd_bom.txt", DrawLettered)) {
        GTEST_SKIP() << "no " << SurveyDataPath("points/linecoded_penzd_bom.txt");
    }
    EXPECT_EQ(m_drawing.Points(), 956);
    EXPECT_EQ(Counts().numPoints, 956);
    EXPECT_EQ(Counts().numPlines, 45);
    EXPECT_EQ(Counts().numVertices, 861);
    EXPECT_EQ(Counts().numEntities, 956 + 45 + 861);
    ExpectLinesThroughTheirPoints();

    // A bend of three points in an axis, and a closed outline of twelve: five arcs and a side.
    EXPECT_EQ(CurvedSegments(), 2 + 10);
    int found = 0;
    for (const DrawnLine& line : m_drawing.Lines()) {
        if (line.bulges[0] == 0.0) {
            continue;
        }
        ++found;
        for (std::size_t i = 0; i + 1 < line.bulges.size() && line.bulges[i + 1] != 0.0; i += 2) {
            ExpectArc(line, i);
        }
        if (line.shots.size() == 3) {
            EXPECT_GT(line.bulges[0], 0.0) << "the axis turns to the left";
            EXPECT_LT(line.bulges[0], 1.0);
        } else {
            ASSERT_EQ(line.shots.size(), 12U);
            EXPECT_EQ(line.shots.front().at[0], line.shots.back().at[0]);
            EXPECT_EQ(line.shots.front().at[1], line.shots.back().at[1]);
        }
    }
    EXPECT_EQ(found, 2);
}

TEST_F(LineCodedSurvey, WithNumbersIsDrawnOnSeveralLinesAtOnce) {
    if (!DrawFile("codes_idxyz_att.csv", DrawNumbered)) {
        GTEST_SKIP() << "no " << SurveyDataPath("points/codes_idxyz_att.csv");
    }
    EXPECT_EQ(Counts().numPoints, 35);
    EXPECT_EQ(Counts().numPlines, 7);
    EXPECT_EQ(Counts().numVertices, 35);
    EXPECT_EQ(CurvedSegments(), 0);
    ExpectLinesThroughTheirPoints();
    for (const CString name : {u"20", u"23", u"24", u"27"}) {
        EXPECT_EQ(Read(m_db.GetCadEntityHandleByPtName(name))->GetMcadNumVertex(), 2);
    }
    EXPECT_EQ(Read(m_db.GetCadEntityHandleByPtName(u"28"))->GetMcadNumVertex(), 0);
}

TEST_F(LineCodedSurvey, WithNumberedArcsIsDrawnWithThem) {
    if (!DrawFile("codes_comments.csv", DrawNumbered)) {
        GTEST_SKIP() << "no " << SurveyDataPath("points/codes_comments.csv");
    }
    EXPECT_EQ(Counts().numPoints, 32);
    EXPECT_EQ(Counts().numPlines, 7);
    EXPECT_EQ(Counts().numVertices, 35);
    ExpectLinesThroughTheirPoints();
    int arcs = 0;
    for (const DrawnLine& line : m_drawing.Lines()) {
        for (std::size_t i = 0; i + 1 < line.bulges.size(); ++i) {
            if (line.bulges[i] != 0.0 && line.bulges[i + 1] != 0.0) {
                ExpectArc(line, i);
                ++arcs;
                ++i;
            }
        }
    }
    // One in each of two lines and in the one with straight ends, two in the full example, two in
    // the run of six.
    EXPECT_EQ(arcs, 1 + 1 + 1 + 2 + 2);
}

}  // namespace
}  // namespace cqsurvey
