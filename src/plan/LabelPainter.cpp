#include "plan/LabelPainter.h"

#include <algorithm>
#include <cmath>
#include <variant>

#include "text/NumberText.h"

namespace cqsurvey::plan {

LabelPainter::LabelPainter(Page& page, LabelRoom& room, const PlotOptions& options)
    : m_page(page), m_room(room), m_options(options), m_height(options.labelHeight * kMillimetre) {}

void LabelPainter::Draw(const std::vector<PlanItem>& items, double symbolSize) {
    if (!m_options.labelNames && !m_options.labelHeights && !m_options.labelCodes &&
        !m_options.labelCodeWords) {
        return;
    }
    m_page.GetText().SetFont(m_height);
    for (const PlanItem& item : items) {
        const auto* point = std::get_if<PlanPoint>(&item);
        if (point == nullptr) {
            continue;
        }
        const CVector at = m_page.ToPage(point->at);
        Box place;
        place.Add(at);
        if (m_page.GetMap().Holds(place)) {
            DrawLabel(*point, at, symbolSize);
        }
    }
}

std::vector<std::string> LabelPainter::FindRows(const PlanPoint& point) const {
    std::vector<std::string> rows;
    if (m_options.labelNames && !point.name.empty()) {
        rows.push_back(point.name);
    }
    if (m_options.labelHeights && std::isfinite(point.height)) {
        rows.push_back(FormatNumber(point.height, 2));
    }
    if (m_options.labelCodes && point.code != 0) {
        rows.push_back(std::to_string(point.code));
    }
    if (m_options.labelCodeWords && !point.codeWord.empty()) {
        rows.push_back(point.codeWord);
    }
    return rows;
}

void LabelPainter::DrawLabel(const PlanPoint& point, const CVector& at, double symbolSize) {
    const std::vector<std::string> rows = FindRows(point);
    if (rows.empty()) {
        return;
    }
    double width = 0.0;
    for (const std::string& row : rows) {
        width = std::max(width, m_page.GetText().GetWidth(row));
    }
    const double block = m_height * (1.0 + kLeading * static_cast<double>(rows.size() - 1));
    const double half = symbolSize / 2;
    const double gap = half * 0.7 + 0.2 * kMillimetre;
    const Corners corners{at + CVector(gap, -gap - block),
                          at + CVector(gap, gap),
                          at + CVector(-gap - width, -gap - block),
                          at + CVector(-gap - width, gap),
                          at + CVector(half + gap / 2, -block / 2),
                          at + CVector(-half - gap / 2 - width, -block / 2),
                          at + CVector(-width / 2, -half - gap / 2 - block),
                          at + CVector(-width / 2, half + gap / 2)};
    const CVector* chosen = FindRoom(corners, {width, block});
    if (chosen == nullptr) {
        if (!m_options.allLabels) {
            ++m_lost;
            return;
        }
        chosen = corners.data();
    }
    m_room.Take({chosen->GetX(), chosen->GetY(), chosen->GetX() + width, chosen->GetY() + block});
    m_page.SetColor(point.color);
    double y = chosen->GetY() + m_height;
    for (const std::string& row : rows) {
        m_page.GetText().Write(row, {chosen->GetX(), y});
        y += m_height * kLeading;
    }
}

const CVector* LabelPainter::FindRoom(const Corners& corners, const CVector& size) const {
    constexpr double kMargin = 0.15 * kMillimetre;
    for (const bool offLines : {true, false}) {
        for (const CVector& corner : corners) {
            const Box box{corner.GetX(), corner.GetY(), corner.GetX() + size.GetX(),
                          corner.GetY() + size.GetY()};
            const Box room = box.Grow(kMargin);
            if (m_page.GetMap().Holds(room) && m_room.IsFree(room) &&
                (!offLines || m_room.IsOffLines(box))) {
                return &corner;
            }
        }
    }
    return nullptr;
}

}  // namespace cqsurvey::plan
