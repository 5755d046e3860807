#include "plan/Pen.h"

#include <numbers>

namespace cqsurvey::plan {

namespace {

void AddToPath(cairo_t* context, const Arc& arc) {
    const double end = arc.start + arc.sweep;
    if (arc.sweep < 0.0) {
        cairo_arc_negative(context, arc.centre.GetX(), arc.centre.GetY(), arc.radius, arc.start,
                           end);
    } else {
        cairo_arc(context, arc.centre.GetX(), arc.centre.GetY(), arc.radius, arc.start, end);
    }
}

}  // namespace

Pen::Pen(Page& page, LabelRoom& room)
    : m_page(page), m_room(room), m_reach(page.GetMap().Grow(kReach)) {}

void Pen::MarkLine(CVector from, CVector to) {
    if (Clip(from, to, m_page.GetMap())) {
        m_room.MarkLine(from, to);
    }
}

void Pen::DrawSegment(const CVector& from, const CVector& to) {
    Box box;
    box.Add(from);
    box.Add(to);
    CVector p = from;
    CVector q = to;
    const bool whole = m_reach.Holds(box);
    if (!whole && !Clip(p, q, m_reach)) {
        m_isDown = false;
        return;
    }
    if (!m_isDown || !whole) {
        cairo_move_to(m_page.GetContext(), p.GetX(), p.GetY());
    }
    cairo_line_to(m_page.GetContext(), q.GetX(), q.GetY());
    m_isDown = whole;
    MarkLine(p, q);
}

void Pen::DrawArc(const Arc& arc) {
    if (m_reach.Holds(arc.GetBox())) {
        if (!m_isDown) {
            cairo_new_sub_path(m_page.GetContext());
        }
        AddToPath(m_page.GetContext(), arc);
        m_isDown = true;
    } else {
        for (const Arc& part : Clip(arc, m_reach)) {
            cairo_new_sub_path(m_page.GetContext());
            AddToPath(m_page.GetContext(), part);
        }
        m_isDown = false;
    }
    constexpr int kChords = 24;
    CVector from = arc.At(arc.start);
    for (int i = 1; i <= kChords; ++i) {
        const CVector to = arc.At(arc.start + arc.sweep * i / kChords);
        MarkLine(from, to);
        from = to;
    }
}

void Pen::DrawCircle(const CVector& centre, double radius) {
    Lift();
    DrawArc({centre, radius, 0.0, 2 * std::numbers::pi});
    if (m_isDown) {
        cairo_close_path(m_page.GetContext());
    }
}

void Pen::DrawOutline(std::span<const CVector> corners) {
    Lift();
    for (std::size_t i = 0; i < corners.size(); ++i) {
        DrawSegment(corners[i], corners[(i + 1) % corners.size()]);
    }
}

}  // namespace cqsurvey::plan
