#include "plan/symbols/SymbolPainter.h"

#include <cmath>
#include <numbers>

namespace cqsurvey::plan {

namespace {

constexpr double kTurn = 2 * std::numbers::pi;

}  // namespace

void SymbolPainter::MoveTo(double x, double y) {
    cairo_move_to(m_page.GetContext(), m_at.GetX() + x * m_radius, m_at.GetY() - y * m_radius);
}

void SymbolPainter::LineTo(double x, double y) {
    cairo_line_to(m_page.GetContext(), m_at.GetX() + x * m_radius, m_at.GetY() - y * m_radius);
}

void SymbolPainter::AddLine(double x1, double y1, double x2, double y2) {
    MoveTo(x1, y1);
    LineTo(x2, y2);
}

void SymbolPainter::AddCircle(double x, double y, double radius) {
    cairo_new_sub_path(m_page.GetContext());
    cairo_arc(m_page.GetContext(), m_at.GetX() + x * m_radius, m_at.GetY() - y * m_radius,
              radius * m_radius, 0.0, kTurn);
    cairo_close_path(m_page.GetContext());
}

void SymbolPainter::AddRectangle(double x1, double y1, double x2, double y2) {
    MoveTo(x1, y1);
    LineTo(x2, y1);
    LineTo(x2, y2);
    LineTo(x1, y2);
    cairo_close_path(m_page.GetContext());
}

void SymbolPainter::AddStar(int points, double inner) {
    for (int i = 0; i < 2 * points; ++i) {
        const double angle = kTurn * i / (2 * points) + kTurn / 4;
        const double radius = i % 2 == 0 ? 1.0 : inner;
        const double x = radius * std::cos(angle);
        const double y = radius * std::sin(angle);
        i == 0 ? MoveTo(x, y) : LineTo(x, y);
    }
    cairo_close_path(m_page.GetContext());
}

void SymbolPainter::Draw(Ink ink) {
    m_page.SetColor(ink == Ink::Full ? m_color : m_page.GetBackground());
    m_page.Fill();
    m_page.SetColor(m_color);
    m_page.Stroke();
}

void SymbolPainter::Draw(Symbol symbol, const CVector& at, double size, Rgb color) {
    m_at = at;
    m_radius = size / 2;
    m_color = color;
    m_page.SetColor(color);
    m_page.SetLine(0, kSymbolWidth);
    switch (symbol) {
        case Symbol::None:
            break;
        case Symbol::Control:
        case Symbol::Benchmark:
        case Symbol::Borehole:
        case Symbol::Spot:
            DrawMark(symbol);
            break;
        case Symbol::Deciduous:
        case Symbol::Conifer:
        case Symbol::Bush:
            DrawTree(symbol);
            break;
        case Symbol::Manhole:
        case Symbol::Drain:
        case Symbol::Hydrant:
        case Symbol::Valve:
            DrawUtility(symbol);
            break;
        case Symbol::Pole:
        case Symbol::Light:
        case Symbol::Sign:
        case Symbol::Gate:
            DrawPost(symbol);
            break;
    }
}

void SymbolPainter::DrawMark(Symbol symbol) {
    if (symbol == Symbol::Control) {
        // A triangle around the mark.
        MoveTo(0.0, 1.0);
        LineTo(0.866, -0.5);
        LineTo(-0.866, -0.5);
        cairo_close_path(m_page.GetContext());
        Draw(Ink::Hollow);
        AddCircle(0.0, 0.0, 0.13);
        Draw(Ink::Full);
    } else if (symbol == Symbol::Benchmark) {
        // A square in four parts by its diagonals, two of them dark.
        AddRectangle(-0.75, -0.75, 0.75, 0.75);
        Draw(Ink::Hollow);
        for (const double side : {-0.75, 0.75}) {
            MoveTo(0.0, 0.0);
            LineTo(-0.75, side);
            LineTo(0.75, side);
            cairo_close_path(m_page.GetContext());
            Draw(Ink::Full);
        }
    } else if (symbol == Symbol::Borehole) {
        AddCircle(0.0, 0.0, 0.7);
        Draw(Ink::Hollow);
        for (const double start : {0.0, kTurn / 2}) {
            MoveTo(0.0, 0.0);
            cairo_arc(m_page.GetContext(), m_at.GetX(), m_at.GetY(), 0.7 * m_radius, start,
                      start + kTurn / 4);
            cairo_close_path(m_page.GetContext());
            Draw(Ink::Full);
        }
        AddLine(-1.0, 0.0, 1.0, 0.0);
        AddLine(0.0, -1.0, 0.0, 1.0);
        m_page.Stroke();
    } else {
        AddCircle(0.0, 0.0, 1.0);
        m_page.Fill();
        cairo_new_path(m_page.GetContext());
    }
}

void SymbolPainter::DrawTree(Symbol symbol) {
    if (symbol == Symbol::Bush) {
        // Three crowns that grow into each other.
        for (const auto& [x, y] : {std::pair(-0.5, -0.3), {0.5, -0.3}, {0.0, 0.45}}) {
            AddCircle(x, y, 0.5);
            Draw(Ink::Hollow);
        }
        return;
    }
    if (symbol == Symbol::Deciduous) {
        // A crown of round lobes.
        constexpr int kLobes = 9;
        constexpr double kInner = 0.78;
        const double half = std::sin(kTurn / kLobes / 2) * kInner;
        for (int i = 0; i < kLobes; ++i) {
            const double angle = kTurn * i / kLobes;
            const double centre = kInner * std::cos(kTurn / kLobes / 2);
            cairo_arc(m_page.GetContext(), m_at.GetX() + centre * m_radius * std::cos(angle),
                      m_at.GetY() + centre * m_radius * std::sin(angle), half * m_radius,
                      angle - kTurn / 4, angle + kTurn / 4);
        }
        cairo_close_path(m_page.GetContext());
    } else {
        AddStar(12, 0.62);
    }
    Draw(Ink::Hollow);
    AddCircle(0.0, 0.0, 0.1);
    Draw(Ink::Full);
}

void SymbolPainter::DrawUtility(Symbol symbol) {
    if (symbol == Symbol::Manhole) {
        AddCircle(0.0, 0.0, 1.0);
        Draw(Ink::Hollow);
        AddCircle(0.0, 0.0, 0.6);
        Draw(Ink::Hollow);
    } else if (symbol == Symbol::Drain) {
        AddRectangle(-0.85, -0.85, 0.85, 0.85);
        Draw(Ink::Hollow);
        for (const double x : {-0.45, 0.0, 0.45}) {
            AddLine(x, -0.85, x, 0.85);
        }
        m_page.Stroke();
    } else if (symbol == Symbol::Hydrant) {
        AddLine(-1.0, 0.0, 1.0, 0.0);
        AddLine(0.0, 0.0, 0.0, 1.0);
        m_page.Stroke();
        AddCircle(0.0, 0.0, 0.6);
        Draw(Ink::Full);
    } else {
        // The two triangles of a valve meet in its middle.
        for (const double side : {-1.0, 1.0}) {
            MoveTo(0.0, 0.0);
            LineTo(side, 0.6);
            LineTo(side, -0.6);
            cairo_close_path(m_page.GetContext());
            Draw(Ink::Hollow);
        }
    }
}

void SymbolPainter::DrawPost(Symbol symbol) {
    if (symbol == Symbol::Pole) {
        AddCircle(0.0, 0.0, 1.0);
        Draw(Ink::Hollow);
        AddCircle(0.0, 0.0, 0.45);
        Draw(Ink::Full);
    } else if (symbol == Symbol::Light) {
        for (int i = 0; i < 4; ++i) {
            const double angle = kTurn / 8 + kTurn * i / 4;
            AddLine(0.5 * std::cos(angle), 0.5 * std::sin(angle), std::cos(angle), std::sin(angle));
        }
        m_page.Stroke();
        AddCircle(0.0, 0.0, 0.5);
        Draw(Ink::Hollow);
        AddCircle(0.0, 0.0, 0.12);
        Draw(Ink::Full);
    } else if (symbol == Symbol::Sign) {
        AddLine(0.0, 0.0, 0.0, 1.0);
        m_page.Stroke();
        AddCircle(0.0, 0.0, 0.12);
        Draw(Ink::Full);
        AddRectangle(-0.6, 0.4, 0.6, 1.0);
        Draw(Ink::Hollow);
    } else {
        // Two posts and the bars between them.
        for (const double y : {-0.22, 0.22}) {
            AddLine(-0.8, y, 0.8, y);
        }
        AddLine(-0.8, -0.22, 0.8, 0.22);
        m_page.Stroke();
        for (const double x : {-0.85, 0.85}) {
            AddRectangle(x - 0.15, -0.4, x + 0.15, 0.4);
            Draw(Ink::Full);
        }
    }
}

}  // namespace cqsurvey::plan
