#include "plan/labels/LabelSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace cqsurvey::plan {

namespace {

Box BoxAt(const CVector& corner, const CVector& size) {
    return {corner.GetX(), corner.GetY(), corner.GetX() + size.GetX(), corner.GetY() + size.GetY()};
}

/// The distance from the point to the corner of a label beside it, along either axis.
double GapOf(double core) {
    return core + 0.2 * kMillimetre;
}

/// How far away a label may stand, and in how many directions.
constexpr std::array kDistances{2.5 * kMillimetre, 4.5 * kMillimetre, 7.0 * kMillimetre,
                                10.0 * kMillimetre};
constexpr std::size_t kDirections = 16;

/// From the right upwards and on, since a reader looks to the upper right first.
std::array<CVector, kDirections> MakeDirections() {
    std::array<CVector, kDirections> directions{};
    for (std::size_t i = 0; i < kDirections; ++i) {
        const double angle = 2 * std::numbers::pi * (static_cast<double>(i) + 0.5) / kDirections;
        directions.at(i) = {std::cos(angle), -std::sin(angle)};
    }
    return directions;
}

}  // namespace

CVector LabelSearch::FirstCorner(const CVector& at, double core, const CVector& size) {
    return at + CVector(GapOf(core), -GapOf(core) - size.GetY());
}

bool LabelSearch::HasRoom(const Box& box) const {
    constexpr double kMargin = 0.15 * kMillimetre;
    const Box room = box.Grow(kMargin);
    return m_map.Holds(room) && m_room.HasRoom(room);
}

std::optional<LabelSearch::Place> LabelSearch::Find(const CVector& at, double half, double core,
                                                    const CVector& size) const {
    // In a crowd, no place needs to be tried.
    Box near;
    near.Add(at);
    if (m_room.IsCrowded(near.Grow(core + kDistances.back()))) {
        return std::nullopt;
    }
    const double gap = GapOf(core);
    const double side = half + gap / 2;
    const double width = size.GetX();
    const double height = size.GetY();
    const std::array<CVector, 8> corners{
        CVector(gap, -gap - height),          CVector(gap, gap),
        CVector(-gap - width, -gap - height), CVector(-gap - width, gap),
        CVector(side, -height / 2),           CVector(-side - width, -height / 2),
        CVector(-width / 2, -side - height),  CVector(-width / 2, side)};
    for (const CVector& corner : corners) {
        if (HasRoom(BoxAt(at + corner, size))) {
            return Place{at + corner, std::nullopt};
        }
    }
    return FindFarPlace(at, core, size);
}

std::optional<LabelSearch::Place> LabelSearch::FindFarPlace(const CVector& at, double core,
                                                            const CVector& size) const {
    constexpr double kOff = 0.4 * kMillimetre;
    // Nearly upright or level leaders end in the middle of the label's side.
    constexpr double kSlight = 0.3;
    static const std::array<CVector, kDirections> directions = MakeDirections();
    const auto begin = [](double direction, double length) {
        return direction > kSlight ? 0.0 : direction < -kSlight ? -length : -length / 2;
    };
    for (const double distance : kDistances) {
        for (const CVector& direction : directions) {
            const double x = direction.GetX();
            const double y = direction.GetY();
            const double edge = (core + kOff) / std::max(std::fabs(x), std::fabs(y));
            const CVector from = at + CVector(x * edge, y * edge);
            const CVector to = at + CVector(x * (core + distance), y * (core + distance));
            const CVector corner = to + CVector(begin(x, size.GetX()), begin(y, size.GetY()));
            const CVector foot =
                at + CVector(x * (core + distance - kOff), y * (core + distance - kOff));
            if (HasRoom(BoxAt(corner, size)) && m_room.IsFreeLeader(from, to)) {
                return Place{corner, std::pair(from, foot)};
            }
        }
    }
    return std::nullopt;
}

}  // namespace cqsurvey::plan
