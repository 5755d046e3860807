#include "plan/Plan.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "plan/Geometry.h"

namespace cqsurvey::plan {

namespace {

/// The corners of a rectangle that was moved to `at` and then rotated about it.
Box Turned(const CVector& at, const Box& box, double degrees) {
    const double angle = degrees * std::numbers::pi / 180.0;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    Box turned;
    for (const double x : {box.minX, box.maxX}) {
        for (const double y : {box.minY, box.maxY}) {
            turned.Add(at + CVector(x * c - y * s, x * s + y * c));
        }
    }
    return turned;
}

Box BoxOf(const PlanPoint& point) {
    Box box;
    box.Add(point.at);
    return box;
}

Box BoxOf(const PlanLine& line) {
    Box box;
    for (std::size_t i = 0; i < line.vertices.size(); ++i) {
        const PlanVertex& vertex = line.vertices[i];
        box.Add(vertex.at);
        if (i + 1 < line.vertices.size()) {
            if (const auto arc = FindArc(vertex.at, line.vertices[i + 1].at, vertex.bulge)) {
                box.Add(arc->GetBox());
            }
        }
    }
    return box;
}

Box BoxOf(const PlanCircle& circle) {
    Box box;
    box.Add(circle.at);
    return box.Grow(circle.radius);
}

/// Estimates letters as three quarters as wide as capitals are high. Where a label will be is not
/// known yet, but it needs no more room than the labels of other points.
Box BoxOf(const PlanText& text) {
    if (text.isLabel) {
        Box box;
        box.Add(text.at);
        return box;
    }
    constexpr double kLetter = 0.75;
    constexpr double kLeading = 1.6;
    glong letters = 0;
    for (const std::string& line : text.lines) {
        letters = std::max(letters, g_utf8_strlen(line.data(), static_cast<gssize>(line.size())));
    }
    const double width = static_cast<double>(letters) * kLetter * text.height;
    const double height =
        text.height * (1.0 + kLeading * static_cast<double>(text.lines.size() - 1));
    const double left = text.horizontal == HorizontalAlign::Left     ? 0.0
                        : text.horizontal == HorizontalAlign::Centre ? -width / 2
                                                                     : -width;
    const double bottom = text.vertical == VerticalAlign::Top      ? -height
                          : text.vertical == VerticalAlign::Middle ? -height / 2
                                                                   : 0.0;
    return Turned(text.at, {left, bottom, left + width, bottom + height}, text.rotation);
}

Box BoxOf(const PlanFrame& frame) {
    Box box;
    box.Add(frame.at);
    box.Add(frame.at + CVector(frame.width, frame.width));
    return box;
}

}  // namespace

std::size_t GetLayer(const PlanItem& item) {
    return std::visit([](const auto& alternative) { return alternative.layer; }, item);
}

Box FindBox(const PlanItem& item) {
    return std::visit([](const auto& alternative) { return BoxOf(alternative); }, item);
}

Box FindBox(const PlanImage& image) {
    const double x = std::fabs(image.size.GetX()) / 2;
    const double y = std::fabs(image.size.GetY()) / 2;
    return Turned(image.centre, {-x, -y, x, y}, image.rotation);
}

Box Plan::FindExtents() const {
    Box box;
    for (const PlanItem& item : items) {
        box.Add(FindBox(item));
    }
    if (items.empty() && image) {
        box.Add(FindBox(*image));
    }
    return box;
}

PlanPart Plan::FindAll() const {
    return {jobExtents, points, items.size()};
}

PlanPart Plan::FindPart(const Box& box) const {
    PlanPart part{box, 0, 0};
    for (const PlanItem& item : items) {
        if (FindBox(item).Meets(box)) {
            ++part.objects;
            part.points += std::holds_alternative<PlanPoint>(item) ? 1U : 0U;
        }
    }
    return part;
}

}  // namespace cqsurvey::plan
