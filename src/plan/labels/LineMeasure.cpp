#include "plan/labels/LineMeasure.h"

#include <cmath>
#include <cstdint>
#include <numbers>

#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

// A flatter arc counts as straight, as it does in the drawing.
constexpr double kStraight = 1e-8;

/// Two digits.
std::string Pad(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

double MeasureLength(const CVector& from, const CVector& to, double bulge) {
    const double chord = (to - from).UNorm();
    const double size = std::fabs(bulge);
    return size > kStraight ? chord * (1.0 + size * size) / size * std::atan(size) : chord;
}

double MeasureArea(const PlanLine& line) {
    double twice = 0.0;
    // From the first vertex, so that coordinates of any size leave the area its digits.
    const CVector origin = line.vertices.front().at;
    for (std::size_t i = 0; i + 1 < line.vertices.size(); ++i) {
        const CVector p = line.vertices[i].at - origin;
        const CVector q = line.vertices[i + 1].at - origin;
        twice += p.GetX() * q.GetY() - q.GetX() * p.GetY();
        const double bulge = line.vertices[i].bulge;
        if (std::fabs(bulge) > kStraight) {
            // What lies between the chord and its arc, which bends to the right.
            const double angle = 4 * std::atan(bulge);
            const double radius = (q - p).UNorm() * (1.0 + bulge * bulge) / (4 * bulge);
            twice += radius * radius * (angle - std::sin(angle));
        }
    }
    return std::fabs(twice) / 2;
}

std::string FormatBearing(const CVector& from, const CVector& to, CqAngleForm form) {
    constexpr std::int64_t kDegree = 3600;
    constexpr std::int64_t kMinute = 60;
    const CVector d = to - from;
    double turn = std::atan2(d.GetX(), d.GetY()) / (2 * std::numbers::pi);
    turn = turn < 0.0 ? turn + 1.0 : turn;
    // A number that is rounded to a whole turn is none.
    const auto round = [](double value, double whole) {
        constexpr int kDecimals = 4;
        const std::string text = FormatNumber(value, kDecimals);
        return text == FormatNumber(whole, kDecimals) ? FormatNumber(0.0, kDecimals) : text;
    };
    switch (form) {
        case CqAngleForm::Gon:
            return round(turn * 400.0, 400.0) + " gon";
        case CqAngleForm::Degrees:
            return round(turn * 360.0, 360.0) + "\xC2\xB0";
        case CqAngleForm::DegreesMinutesSeconds:
            break;
    }
    const std::int64_t seconds =
        std::llround(turn * 360.0 * static_cast<double>(kDegree)) % (360 * kDegree);
    return std::to_string(seconds / kDegree) + "\xC2\xB0" + Pad(seconds % kDegree / kMinute) + "'" +
           Pad(seconds % kMinute) + "\"";
}

bool IsInside(const PlanLine& line, const CVector& place) {
    bool inside = false;
    for (std::size_t i = 0; i + 1 < line.vertices.size(); ++i) {
        const CVector p = line.vertices[i].at - place;
        const CVector q = line.vertices[i + 1].at - place;
        // Counts the sides that are crossed on the way to the east.
        if ((p.GetY() > 0.0) != (q.GetY() > 0.0) &&
            p.GetX() - p.GetY() * (q.GetX() - p.GetX()) / (q.GetY() - p.GetY()) > 0.0) {
            inside = !inside;
        }
    }
    return inside;
}

}  // namespace cqsurvey::plan
