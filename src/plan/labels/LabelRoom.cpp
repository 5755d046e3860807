#include "plan/labels/LabelRoom.h"

#include <algorithm>
#include <cmath>

namespace cqsurvey::plan {

namespace {

/// Small boxes that a leader passes through.
std::vector<Box> CoverLeader(const CVector& from, const CVector& to) {
    constexpr double kStep = 0.8 * kMillimetre;
    constexpr double kBeside = 0.1 * kMillimetre;
    const CVector d = to - from;
    const int steps = std::max(1, static_cast<int>(std::ceil(d.UNorm() / kStep)));
    const auto at = [&](int i) {
        return from + CVector(d.GetX() * i / steps, d.GetY() * i / steps);
    };
    std::vector<Box> boxes;
    for (int i = 0; i < steps; ++i) {
        Box box;
        box.Add(at(i));
        box.Add(at(i + 1));
        boxes.push_back(box.Grow(kBeside));
    }
    return boxes;
}

}  // namespace

CVector TurnedBox::At(double x, double y) const {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return corner + CVector(x * c + y * s, x * s - y * c);
}

Box TurnedBox::GetBox() const {
    Box box;
    for (const double x : {0.0, width}) {
        box.Add(At(x, 0.0));
        box.Add(At(x, height));
    }
    return box;
}

std::vector<Box> TurnedBox::Cover() const {
    constexpr double kMostParts = 1000.0;
    constexpr double kTurnedRows = 3.0;
    const bool level = std::fabs(std::sin(angle)) < 1e-9 || std::fabs(std::cos(angle)) < 1e-9;
    if (level || !(height > 0.0)) {
        return {GetBox()};
    }
    const double parts = std::clamp(std::ceil(width / height * kTurnedRows), 1.0, kMostParts);
    std::vector<Box> boxes;
    for (double i = 0; i < parts; ++i) {
        for (double k = 0; k < kTurnedRows; ++k) {
            Box box;
            for (const double x : {width * i / parts, width * (i + 1) / parts}) {
                box.Add(At(x, height * k / kTurnedRows));
                box.Add(At(x, height * (k + 1) / kTurnedRows));
            }
            boxes.push_back(box);
        }
    }
    return boxes;
}

void LabelRoom::Take(const TurnedBox& box) {
    for (const Box& part : box.Cover()) {
        m_taken.Take(part);
    }
}

bool LabelRoom::HasRoom(const TurnedBox& box) const {
    const std::vector<Box> parts = box.Cover();
    return std::all_of(parts.begin(), parts.end(),
                       [this](const Box& part) { return HasRoom(part); });
}

void LabelRoom::TakeLeader(const CVector& from, const CVector& to) {
    for (const Box& box : CoverLeader(from, to)) {
        m_taken.Take(box);
    }
}

bool LabelRoom::IsFreeLeader(const CVector& from, const CVector& to) const {
    const std::vector<Box> boxes = CoverLeader(from, to);
    return m_lines.IsFree(from, to) &&
           std::all_of(boxes.begin(), boxes.end(),
                       [this](const Box& box) { return m_taken.IsFree(box); });
}

}  // namespace cqsurvey::plan
