#include "exchange/codes/FigureBuilder.h"

#include <utility>

namespace cqsurvey::exchange {

namespace {

constexpr std::size_t kMostOfCircle = 3;
constexpr std::size_t kMostOfRectangle = 3;

}  // namespace

/// Whether the line so far can be the beginning of the circle or rectangle that a point calls it.
bool FigureBuilder::MayBecome(const Figure& figure, const FieldControls& controls) {
    const std::size_t most = controls.rectangle && controls.width ? 1 : 2;
    if (figure.shape != FigureShape::Line || figure.points.size() > most || controls.radius) {
        return false;
    }
    for (const FigurePoint& point : figure.points) {
        FieldControls others = point.controls;
        others.begin = false;
        others.proceed = false;
        others.parallels.clear();
        if (others != FieldControls()) {
            return false;
        }
    }
    return true;
}

bool FigureBuilder::IsFull(const Figure& figure) {
    switch (figure.shape) {
        case FigureShape::Circle:
            return figure.radius || figure.points.size() == kMostOfCircle;
        case FigureShape::Rectangle:
            return figure.points.size() == (figure.width ? 2 : kMostOfRectangle);
        case FigureShape::Line:
            break;
    }
    return false;
}

bool FigureBuilder::Add(std::size_t point, std::size_t row, const FieldCode& code) {
    const FieldControls& controls = code.controls;
    Open& open = m_open[code.figure];
    const bool wasOpen = open.isOpen;
    const bool shaped = controls.circle || controls.rectangle;
    const FigureShape shape = controls.circle ? FigureShape::Circle : FigureShape::Rectangle;
    if (open.isOpen && shaped) {
        const Figure& figure = m_figures[open.figure];
        open.isOpen = figure.shape == shape ? open.marked : MayBecome(figure, controls);
    }
    if (!open.isOpen || controls.begin) {
        open = {m_figures.size(), true, false};
        Figure& figure = m_figures.emplace_back();
        figure.row = code.row;
        figure.word = code.word;
        figure.closed = code.row->kind == CqCodeKind::ClosedLine;
    }
    Figure& figure = m_figures[open.figure];
    figure.points.push_back({point, row, controls});
    open.marked = shaped;
    if (shaped) {
        figure.shape = shape;
        figure.radius = controls.radius ? controls.radius : figure.radius;
        figure.width = controls.width ? controls.width : figure.width;
    }
    figure.closed = figure.closed || controls.close;
    open.isOpen = !IsFull(figure) && !controls.end && !controls.close;
    return wasOpen || !controls.proceed;
}

std::optional<std::size_t> FigureBuilder::FindLast(const std::string& figure) const {
    const auto found = m_open.find(figure);
    return found == m_open.end() || !found->second.isOpen
               ? std::nullopt
               : std::optional(m_figures[found->second.figure].points.back().point);
}

std::vector<Figure> FigureBuilder::Finish() {
    m_open.clear();
    return std::exchange(m_figures, {});
}

}  // namespace cqsurvey::exchange
