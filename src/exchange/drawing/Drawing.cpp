#include "exchange/drawing/Drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace cqsurvey::exchange {

namespace {

/// A height that the job does not have.
constexpr std::string_view kNoHeight = "NONE";

std::array<double, 3> ToCoords(const Vec3& at, bool noHeight) {
    return {at.x, at.y, noHeight ? std::numeric_limits<double>::quiet_NaN() : at.z};
}

int ToInt(std::int64_t value) {
    return static_cast<int>(static_cast<std::uint32_t>(value & 0xFFFFFFFF));
}

}  // namespace

Drawing::Drawing(CqSurveyDB& db, DrawingReport& report)
    : m_db(db),
      m_report(report),
      m_layer(db.GetCurrentLayer()),
      m_color(db.GetCurrentColor()),
      m_group(db.GetCurrentGroup()) {}

void Drawing::Finish() {
    m_db.SetCurrentLayer(m_layer);
    m_db.SetCurrentColor(m_color);
    m_db.SetCurrentGroup(m_group);
}

bool Drawing::IsUsable(const Vec3& at) {
    constexpr double kFarthest = 1e12;
    return std::fabs(at.x) <= kFarthest && std::fabs(at.y) <= kFarthest &&
           std::fabs(at.z) <= kFarthest;
}

void Drawing::Use(const Style& style) {
    if (m_db.GetCurrentLayer() != style.layer) {
        m_db.SetCurrentLayer(style.layer);
    }
    if (m_db.GetCurrentColor() != style.color) {
        m_db.SetCurrentColor(style.color);
    }
}

void Drawing::Tie(CqHandle polyline, const std::vector<CqHandle>& ties) {
    CqHandle next = polyline;
    CqCadEntity* entity = nullptr;
    static_cast<void>(m_db.GetNextCadEntity(next, entity));
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    for (const CqHandle tie : ties) {
        const CqHandle vertex = next;
        if (vertex == 0 || m_db.GetNextCadEntity(next, entity) == 0) {
            return;
        }
        CqSurveyDB::DeleteCqCadEntityObject(entity);
        if (tie != 0) {
            m_db.LinkSiPntAndVertex(tie, vertex);
        }
    }
}

bool Drawing::Polyline(const Style& style, const std::vector<PathVertex>& path,
                       const Extras& extras, const std::vector<CqHandle>& ties) {
    const bool usable = std::all_of(path.begin(), path.end(), [](const PathVertex& vertex) {
        return IsUsable(vertex.at) && std::isfinite(vertex.bulge);
    });
    if (!usable || path.size() < 2) {
        return false;
    }
    Use(style);
    const bool noHeight = extras.Get("HEIGHT") == kNoHeight;
    CqCadEntityList* list = m_db.StartPline(style.line, ToInt(extras.GetWhole("CODE")));
    for (const PathVertex& vertex : path) {
        m_db.AddVertex(list, ToCoords(vertex.at, noHeight || !vertex.hasHeight).data(),
                       vertex.bulge);
    }
    const CqHandle polyline = m_db.EndPline(list);
    if (std::any_of(ties.begin(), ties.end(), [](CqHandle tie) { return tie != 0; })) {
        Tie(polyline, ties);
    }
    ++m_report.polylines;
    m_report.vertices += path.size();
    return true;
}

bool Drawing::Circle(const Style& style, const Vec3& centre, double radius, const Extras& extras) {
    constexpr double kLargest = 1e12;
    if (!IsUsable(centre) || !(radius > 0.0) || !(radius <= kLargest)) {
        return false;
    }
    Use(style);
    m_db.AddCircle(ToCoords(centre, extras.Get("HEIGHT") == kNoHeight).data(), radius, style.line,
                   ToInt(extras.GetWhole("CODE")));
    ++m_report.circles;
    return true;
}

bool Drawing::Text(const Style& style, const DrawnText& text, const Extras& extras) {
    if (!IsUsable(text.at) || !std::isfinite(text.height) || !std::isfinite(text.rotation)) {
        return false;
    }
    Use(style);
    const std::int64_t align =
        extras.GetWhole("ALIGN", (std::int64_t{text.align2} << 16) | text.align1);
    m_db.AddText(ToCoords(text.at, extras.Get("HEIGHT") == kNoHeight).data(), text.text,
                 static_cast<int>(align & 0xFFFF), static_cast<int>((align >> 16) & 0xFFFF),
                 text.style, text.height, text.rotation, ToInt(extras.GetWhole("CODE")),
                 static_cast<std::uint32_t>(extras.GetWhole("OPTION")),
                 ToInt(extras.GetWhole("INTERVAL")), ToInt(extras.GetWhole("THICKNESS")));
    ++m_report.texts;
    return true;
}

}  // namespace cqsurvey::exchange
