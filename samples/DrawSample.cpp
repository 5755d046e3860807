// Draws the lines, trees, buildings and texts of the sample survey into a job that holds its
// points, by what their descriptions say (samples/README.md): an example of the public interface.

#include <cqsurvey/cqsurvey.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace cqsurvey;

constexpr int kByLayer = 256;

struct Place {
    CqHandle entity = 0;
    std::array<double, 3> coords{};
    std::string mark;  ///< B, E, BC, C, EC, CLOSE or nothing

    [[nodiscard]] CVector Plan() const { return {coords[0], coords[1]}; }
};

struct Layer {
    const char16_t* name;
    int color;
    int line;
};

constexpr std::array<Layer, 12> kLayers{{{u"Road", 250, 0},
                                         {u"Road axis", 10, 3},
                                         {u"Ditch", 150, 6},
                                         {u"Bank", 34, 1},
                                         {u"Buildings", 7, 0},
                                         {u"Walls", 14, 0},
                                         {u"Fences", 204, 7},
                                         {u"Boundary", 220, 4},
                                         {u"Trees", 94, 0},
                                         {u"Utilities", 170, 0},
                                         {u"Control", 10, 0},
                                         {u"Ground", 252, 0}}};

/// The layer of each line's code.
const std::map<std::string, CString> kLines{
    {"EP1", u"Road"},       {"EP2", u"Road"},       {"RA", u"Road axis"}, {"DT1", u"Ditch"},
    {"DB", u"Ditch"},       {"DT2", u"Ditch"},      {"TOE", u"Bank"},     {"TOP", u"Bank"},
    {"BLD1", u"Buildings"}, {"BLD2", u"Buildings"}, {"WALL", u"Walls"},   {"FNC", u"Fences"},
    {"HDG", u"Fences"},     {"PB", u"Boundary"}};

/// The layer of each single point's code; all others are utilities.
const std::map<std::string, CString> kPoints{
    {"GS", u"Ground"}, {"CP", u"Control"}, {"BM", u"Control"}, {"CHK", u"Control"}};

/// The bulge of the arc from p to q on the circle through r, which lies outside that arc: r sees
/// the chord under half the arc's angle.
double FindBulge(const CVector& p, const CVector& q, const CVector& r) {
    const CVector a = p - r;
    const CVector b = q - r;
    const double cross = a.GetX() * b.GetY() - a.GetY() * b.GetX();
    const double dot = a.GetX() * b.GetX() + a.GetY() * b.GetY();
    return std::tan(std::atan2(cross, dot) / 2);
}

class Drawing {
 public:
    explicit Drawing(CqSurveyDB& db) : m_db(db) {}

    void Draw() {
        for (const Layer& layer : kLayers) {
            m_db.AddLayer(layer.name, layer.color, layer.line);
        }
        ReadPoints();
        for (const auto& [code, places] : m_lines) {
            DrawLine(kLines.at(code), places);
        }
        AddTexts();
    }

 private:
    void ReadPoints() {
        for (const auto& [handle, record] : Points(m_db)) {
            CString description;
            m_db.GetCoordDescription(handle, description);
            std::istringstream words(ToUtf8(description));
            std::string code;
            Place place;
            words >> code >> place.mark;
            place.entity = m_db.GetCadEntityHandleByCoordRecHandle(handle);
            record.GetPoint(place.coords.data());
            if (kLines.contains(code)) {
                m_db.EditCadEntityLayer(place.entity, kLines.at(code));
                m_lines[code].push_back(place);
            } else if (code == "TR") {
                m_db.EditCadEntityLayer(place.entity, u"Trees");
                m_trees.push_back(place);
            } else {
                const auto layer = kPoints.find(code);
                m_db.EditCadEntityLayer(place.entity,
                                        layer == kPoints.end() ? u"Utilities" : layer->second);
            }
        }
        m_db.SetCurrentLayer(u"Trees");
        for (const Place& tree : m_trees) {
            m_db.AddCircle(tree.coords.data(), 2.4, kByLayer, 0);
        }
    }

    /// Where the curve through `places` runs on from its place `i`: 0 where it is straight.
    static double FindBulgeAt(const std::vector<Place>& places, std::size_t i) {
        const auto inCurve = [](const Place& place) { return place.mark.find('C') == 0; };
        const Place& from = places[i];
        const Place& to = places[i + 1];
        const bool starts = from.mark == "BC" && i + 2 < places.size();
        if (starts) {
            return FindBulge(from.Plan(), to.Plan(), places[i + 2].Plan());
        }
        if (inCurve(from) && from.mark == "C" && i > 0) {
            return FindBulge(from.Plan(), to.Plan(), places[i - 1].Plan());
        }
        return 0.0;
    }

    void DrawLine(const CString& layer, const std::vector<Place>& places) {
        m_db.SetCurrentLayer(layer);
        CqCadEntityList* list = m_db.StartPline(kByLayer, 0);
        for (std::size_t i = 0; i < places.size(); ++i) {
            const bool last = i + 1 == places.size();
            m_db.AddVertex(list, places[i].coords.data(), last ? 0.0 : FindBulgeAt(places, i));
        }
        if (places.back().mark == "CLOSE") {
            m_db.AddVertex(list, places.front().coords.data(), 0.0);
        }
        const CqHandle line = m_db.EndPline(list);
        // The vertices of a new polyline have the handles after its own.
        for (std::size_t i = 0; line != 0 && i < places.size(); ++i) {
            m_db.LinkSiPntAndVertex(places[i].entity, line + 1 + static_cast<CqHandle>(i));
        }
    }

    void AddText(const CString& layer, std::array<double, 3> coords, const CString& text,
                 double height, double rotation, const CVector& away, int align1 = 0,
                 int align2 = 0) {
        m_db.SetCurrentLayer(layer);
        coords[0] += away.GetX();
        coords[1] += away.GetY();
        m_db.AddText(coords.data(), text, align1, align2, u"", height, rotation, 0, 0, 0, 0);
    }

    /// The middle of the places of a line.
    [[nodiscard]] std::array<double, 3> MiddleOf(const std::string& code) const {
        const std::vector<Place>& places = m_lines.at(code);
        std::array<double, 3> middle{};
        for (const Place& place : places) {
            for (std::size_t i = 0; i < middle.size(); ++i) {
                middle[i] += place.coords[i] / static_cast<double>(places.size());
            }
        }
        return middle;
    }

    void AddTexts() {
        constexpr int kCentre = 1;
        constexpr int kMiddle = 2;
        AddText(u"Boundary", MiddleOf("PB"), u"Parcel 27/4", 4.0, 0.0, {-6.0, 22.0}, kCentre,
                kMiddle);
        AddText(u"Buildings", MiddleOf("BLD1"), u"12", 3.0, 0.0, {0.0, 0.0}, kCentre, kMiddle);
        AddText(u"Buildings", MiddleOf("BLD2"), u"12a", 2.0, 0.0, {0.0, 0.0}, kCentre, kMiddle);
        // Along the road, between its axis and the edge.
        const std::vector<Place>& axis = m_lines.at("RA");
        const CVector d = axis[2].Plan() - axis[0].Plan();
        AddText(u"Road", axis[1].coords, u"Upper Mill Road", 2.2,
                std::atan2(d.GetY(), d.GetX()) * 180.0 / std::numbers::pi, {0.0, 0.6}, kCentre);
    }

    CqSurveyDB& m_db;
    std::map<std::string, std::vector<Place>> m_lines;
    std::vector<Place> m_trees;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: draw-sample JOB\n", stderr);
        return 2;
    }
    try {
        CqSurveyDB db(FromUtf8(argv[1]));
        CqBatch batch(db);
        Drawing(db).Draw();
        batch.Commit();
        db.Close();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "draw-sample: %s: %s\n", argv[1], error.what());
        return 1;
    }
}
