#include "plan/labels/LineField.h"

#include <algorithm>
#include <cmath>

#include "plan/Geometry.h"

namespace cqsurvey::plan {

namespace {

constexpr std::int32_t kMostCells = 4096;

std::uint64_t KeyOf(std::int32_t x, std::int32_t y) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(x)) << 32U) |
           static_cast<std::uint32_t>(y);
}

/// Above 0 when the place is on one side of the line from p to q, below 0 on the other.
double Side(const CVector& p, const CVector& q, const CVector& place) {
    const CVector along = q - p;
    const CVector away = place - p;
    return along.GetX() * away.GetY() - along.GetY() * away.GetX();
}

}  // namespace

std::int32_t LineField::CellOf(double value) const {
    constexpr double kLimit = 1e8;
    return static_cast<std::int32_t>(std::clamp(std::floor(value / m_cell), -kLimit, kLimit));
}

void LineField::AddToCell(std::int32_t x, std::int32_t y, const Line& line) {
    std::vector<Line>& lines = m_lines[KeyOf(x, y)];
    if (lines.size() < kCrowd) {
        lines.push_back(line);
    }
}

template <class Visit>
bool LineField::VisitCells(const CVector& from, const CVector& to, const Visit& visit) const {
    const std::int32_t left = CellOf(std::min(from.GetX(), to.GetX()));
    const std::int32_t right = CellOf(std::max(from.GetX(), to.GetX()));
    if (right - left >= kMostCells ||
        std::abs(CellOf(from.GetY()) - CellOf(to.GetY())) >= kMostCells) {
        return false;
    }
    // Column by column, the rows that the line passes there.
    for (std::int32_t x = left; x <= right; ++x) {
        constexpr double kFar = 1e9;
        CVector p = from;
        CVector q = to;
        if (left != right && !Clip(p, q, {x * m_cell, -kFar, (x + 1) * m_cell, kFar})) {
            continue;
        }
        const std::int32_t bottom = CellOf(std::max(p.GetY(), q.GetY()));
        for (std::int32_t y = CellOf(std::min(p.GetY(), q.GetY())); y <= bottom; ++y) {
            if (!visit(x, y)) {
                return false;
            }
        }
    }
    return true;
}

void LineField::Add(const CVector& from, const CVector& to) {
    const Line line{static_cast<float>(from.GetX()), static_cast<float>(from.GetY()),
                    static_cast<float>(to.GetX()), static_cast<float>(to.GetY())};
    VisitCells(from, to, [&](std::int32_t x, std::int32_t y) {
        AddToCell(x, y, line);
        return true;
    });
}

bool LineField::IsFree(const CVector& from, const CVector& to) const {
    const auto crosses = [&](const Line& line) {
        const CVector p(line[0], line[1]);
        const CVector q(line[2], line[3]);
        return Side(from, to, p) * Side(from, to, q) <= 0.0 &&
               Side(p, q, from) * Side(p, q, to) <= 0.0;
    };
    return VisitCells(from, to, [&](std::int32_t x, std::int32_t y) {
        const auto found = m_lines.find(KeyOf(x, y));
        return found == m_lines.end() ||
               (found->second.size() < kCrowd &&
                std::none_of(found->second.begin(), found->second.end(), crosses));
    });
}

bool LineField::IsFree(const Box& box) const {
    const std::int32_t left = CellOf(box.minX);
    const std::int32_t right = CellOf(box.maxX);
    const std::int32_t top = CellOf(box.minY);
    const std::int32_t bottom = CellOf(box.maxY);
    if (right - left >= kMostCells || bottom - top >= kMostCells ||
        (right - left + 1) * (bottom - top + 1) > kMostCells) {
        return false;
    }
    for (std::int32_t x = left; x <= right; ++x) {
        for (std::int32_t y = top; y <= bottom; ++y) {
            const auto found = m_lines.find(KeyOf(x, y));
            if (found == m_lines.end()) {
                continue;
            }
            if (found->second.size() >= kCrowd ||
                std::any_of(found->second.begin(), found->second.end(), [&](const Line& line) {
                    CVector p(line[0], line[1]);
                    CVector q(line[2], line[3]);
                    return Clip(p, q, box);
                })) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace cqsurvey::plan
