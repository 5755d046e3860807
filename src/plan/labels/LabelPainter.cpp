#include "plan/labels/LabelPainter.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <variant>

#include "plan/EntityPainter.h"
#include "plan/labels/PointFinder.h"
#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

// Of the height of names.
constexpr double kHeightSize = 0.85;
constexpr double kCodeSize = 0.72;

/// Beside a label. Two numbers that touch would be read as one.
constexpr double kBeside = 0.4 * kMillimetre;

constexpr Rgb kBrown{128, 64, 0};
constexpr Rgb kGrey{96, 96, 96};

/// Puts the height where a code's label has a place for it.
std::string PutHeight(std::string label, const std::string& height) {
    constexpr std::string_view kPlace = "{height}";
    for (std::size_t at = label.find(kPlace); at != std::string::npos;
         at = label.find(kPlace, at + height.size())) {
        label.replace(at, kPlace.size(), height);
    }
    return label;
}

}  // namespace

LabelPainter::LabelPainter(Page& page, LabelRoom& room, const Plan& plan,
                           const PlotOptions& options)
    : m_page(page),
      m_room(room),
      m_plan(plan),
      m_options(options),
      m_search(room, page.GetMap()),
      m_height(options.labelHeight * kMillimetre) {}

bool LabelPainter::WritesOnlyHeights(const PlotOptions& options) {
    return options.labelHeights && !options.labelNames && !options.labelCodes &&
           !options.labelCodeWords && !options.labelsOfCodes;
}

void LabelPainter::Draw() {
    m_page.GetText().SetHalo(m_page.GetBackground());
    DrawTexts();
    for (const PlanItem& item : m_plan.items) {
        const auto* point = std::get_if<PlanPoint>(&item);
        if (point == nullptr) {
            continue;
        }
        const Point place = FindPlace(*point);
        if (!IsInMap(place.at)) {
            continue;
        }
        const bool drawn = point->IsSpot(WritesOnlyHeights(m_options)) && m_options.labelHeights &&
                           DrawSpot(*point, place);
        DrawRows(FindRows(*point, drawn), place);
    }
    m_page.GetText().SetHalo(std::nullopt);
}

bool LabelPainter::IsInMap(const CVector& at) const {
    Box box;
    box.Add(at);
    return m_page.GetMap().Holds(box);
}

LabelPainter::Point LabelPainter::FindPlace(const PlanPoint& point) const {
    const bool spot = point.IsSpot(WritesOnlyHeights(m_options));
    const double half = (spot ? GetUsualSize(Symbol::Spot) * kMillimetre
                              : EntityPainter::GetSize(point, m_plan.symbolSize)) /
                        2;
    return {m_page.ToPage(point.at), half,
            half * (point.symbol == Symbol::None && !spot ? kCrossCore : kSymbolCore)};
}

void LabelPainter::DrawTexts() {
    std::map<std::size_t, std::vector<const PlanText*>> layers;
    for (const PlanItem& item : m_plan.items) {
        const auto* text = std::get_if<PlanText>(&item);
        if (text != nullptr && text->isLabel && IsInMap(m_page.ToPage(text->at))) {
            layers[text->layer].push_back(text);
        }
    }
    if (layers.empty()) {
        return;
    }
    // They stand at their point or, to be off its symbol, less than their height away from it.
    const PointFinder points(m_plan, layers.begin()->second.front()->height);
    for (const auto& [layer, texts] : layers) {
        m_page.GetCanvas().BeginGroup(m_plan.layers[layer].name);
        for (const PlanText* text : texts) {
            std::vector<Row> rows;
            for (const std::string& line : text->lines) {
                rows.push_back({line, m_height, m_page.GetColors().OfLetter(text->color)});
            }
            const PlanPoint* point = points.Find(text->at);
            DrawRows(rows, point != nullptr ? FindPlace(*point)
                                            : Point{m_page.ToPage(text->at), 0.0, 0.0});
        }
        m_page.GetCanvas().EndGroup();
    }
}

std::string LabelPainter::FormatHeight(const PlanPoint& point) const {
    return FormatNumber(point.height, m_options.heightDecimals);
}

Rgb LabelPainter::GetHeightColor(const PlanPoint& point) const {
    return m_plan.monotone ? m_page.GetColors().OfLetter(point.color)
                           : ReadableOn(m_page.GetBackground(), kBrown);
}

Rgb LabelPainter::GetCodeColor(const PlanPoint& point) const {
    return m_plan.monotone ? m_page.GetColors().OfLetter(point.color)
                           : ReadableOn(m_page.GetBackground(), kGrey);
}

std::vector<LabelPainter::Row> LabelPainter::FindRows(const PlanPoint& point, bool spot) const {
    std::vector<Row> rows;
    const Rgb color = m_page.GetColors().OfLetter(point.color);
    if (m_options.labelNames && !point.name.empty()) {
        rows.push_back({point.name, m_height, color});
    }
    if (m_options.labelHeights && !spot && std::isfinite(point.height)) {
        rows.push_back({FormatHeight(point), m_height * kHeightSize, GetHeightColor(point)});
    }
    if (m_options.labelCodes && point.code != 0) {
        rows.push_back({std::to_string(point.code), m_height * kCodeSize, GetCodeColor(point)});
    }
    if (m_options.labelCodeWords && !point.codeWord.empty()) {
        rows.push_back({point.codeWord, m_height * kCodeSize, GetCodeColor(point)});
    }
    if (m_options.labelsOfCodes && !point.label.empty()) {
        const std::string label = PutHeight(point.label, FormatHeight(point));
        const bool said = std::any_of(rows.begin(), rows.end(),
                                      [&](const Row& row) { return row.text == label; });
        if (!label.empty() && !said) {
            rows.push_back({label, m_height * kHeightSize, color});
        }
    }
    return rows;
}

bool LabelPainter::DrawSpot(const PlanPoint& point, const Point& place) {
    if (!std::isfinite(point.height)) {
        return false;
    }
    constexpr double kGap = 0.2 * kMillimetre;
    const double height = m_height * kHeightSize;
    const std::string text = FormatHeight(point);
    const std::size_t mark = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(0, mark);
    const std::string rest = mark < text.size() ? text.substr(mark + 1) : std::string();
    const double left = place.at.GetX() - place.half - kGap;
    const double right = place.at.GetX() + place.half + kGap;
    // The mark stands on the line, as a point does among digits.
    const double base = place.at.GetY() + place.half;
    // Without any room for a digit on the left, there is no need to measure.
    if (!m_search.HasRoom({left - height / 2, base - height, left - kGap, base})) {
        return false;
    }
    // A line that goes up from the point would pass for a digit.
    if (!m_room.IsOffLines({left, base - height, right, place.at.GetY() - place.half})) {
        return false;
    }
    TextPainter& painter = m_page.GetText();
    painter.SetFont(height);
    const double width = painter.GetWidth(whole);
    const Box wholeBox{left - width, base - height, left, base};
    const Box restBox{right, base - height, right + painter.GetWidth(rest), base};
    // The dot itself is taken, but its number may be close to it.
    constexpr double kInside = 0.16 * kMillimetre;
    const auto off = [&](Box box, bool isLeft) {
        (isLeft ? box.maxX : box.minX) += isLeft ? -kInside : kInside;
        return box;
    };
    if (!m_search.HasRoom(off(wholeBox, true)) ||
        (!rest.empty() && !m_search.HasRoom(off(restBox, false)))) {
        return false;
    }
    m_page.SetColor(GetHeightColor(point));
    painter.Write(whole, {wholeBox.minX, base});
    m_room.Take(Box{wholeBox.minX - kBeside, wholeBox.minY, wholeBox.maxX, wholeBox.maxY});
    if (!rest.empty()) {
        painter.Write(rest, {restBox.minX, base});
        m_room.Take(Box{restBox.minX, restBox.minY, restBox.maxX + kBeside, restBox.maxY});
    }
    return true;
}

void LabelPainter::DrawRows(const std::vector<Row>& rows, const Point& place) {
    if (rows.empty()) {
        return;
    }
    TextPainter& painter = m_page.GetText();
    const double least = rows.back().height;
    // Where not even a letter has room, there is no need to measure.
    const bool hasRoom =
        m_search.Find(place.at, place.half, place.core, {least / 2, least}).has_value();
    if (!hasRoom && !m_options.allLabels) {
        ++m_lost;
        return;
    }
    double width = 0.0;
    double block = rows.front().height;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        painter.SetFont(rows[i].height);
        width = std::max(width, painter.GetWidth(rows[i].text));
        block += i == 0 ? 0.0 : rows[i].height * kLeading;
    }
    const CVector size(width, block);
    std::optional<LabelSearch::Place> found =
        hasRoom ? m_search.Find(place.at, place.half, place.core, size) : std::nullopt;
    if (!found) {
        if (!m_options.allLabels) {
            ++m_lost;
            return;
        }
        found = {LabelSearch::FirstCorner(place.at, place.core, size), std::nullopt};
    }
    const CVector& corner = found->corner;
    if (found->leader) {
        const auto& [from, to] = *found->leader;
        m_page.SetColor(ReadableOn(m_page.GetBackground(), kGrey));
        m_page.SetLine(0, kThinWidth);
        cairo_move_to(m_page.GetContext(), from.GetX(), from.GetY());
        cairo_line_to(m_page.GetContext(), to.GetX(), to.GetY());
        m_page.Stroke();
        m_room.TakeLeader(from, to);
    }
    m_room.Take(Box{corner.GetX() - kBeside, corner.GetY(), corner.GetX() + width + kBeside,
                    corner.GetY() + block});
    double y = corner.GetY();
    for (const Row& row : rows) {
        y += y == corner.GetY() ? row.height : row.height * kLeading;
        painter.SetFont(row.height);
        m_page.SetColor(row.color);
        painter.Write(row.text, {corner.GetX(), y});
    }
}

}  // namespace cqsurvey::plan
