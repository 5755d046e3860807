#include "exchange/landxml/read/SpiralCurve.h"

#include <array>
#include <cmath>
#include <numbers>

#include "exchange/drawing/Names.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr double kPi = std::numbers::pi;

double CurvatureOf(std::optional<double> radius, bool counterClockwise) {
    if (!radius || !std::isfinite(*radius) || *radius == 0.0) {
        return 0.0;
    }
    return (counterClockwise ? 1.0 : -1.0) / std::fabs(*radius);
}

}  // namespace

SpiralCurve::Law SpiralCurve::LawOf(std::string_view kind) {
    const std::string word = Upper(kind);
    return word == "CLOTHOID" || word.empty()           ? Law::Clothoid
           : word == "BLOSS"                            ? Law::Bloss
           : word == "COSINE"                           ? Law::Cosine
           : word == "SINUSOID" || word == "SINE"       ? Law::Sinusoid
           : word == "BIQUADRATIC" || word == "HELMERT" ? Law::Biquadratic
                                                        : Law::Unknown;
}

SpiralCurve::SpiralCurve(const Segment& spiral)
    : m_law(LawOf(spiral.spiral)),
      m_length(*spiral.length),
      m_from(CurvatureOf(spiral.radiusStart, *spiral.counterClockwise)),
      m_to(CurvatureOf(spiral.radiusEnd, *spiral.counterClockwise)),
      m_start(spiral.start->at),
      m_end(spiral.end->at) {
    // More than some turns are no transition between two pieces of a road.
    constexpr double kMostTurned = 20.0;
    const double turned = std::fabs(Turned(1.0));
    if (!(m_length > 0.0) || !std::isfinite(m_length) || !(turned < kMostTurned)) {
        return;
    }
    const Vec3 shape = Shape(1.0);
    const double dx = m_end.x - m_start.x;
    const double dy = m_end.y - m_start.y;
    const double square = shape.x * shape.x + shape.y * shape.y;
    if (!(square > 0.0) || !std::isfinite(dx) || !std::isfinite(dy)) {
        return;
    }
    // A turn and a scale that is hardly any bring the end of the shape to the end in the file.
    m_cos = (shape.x * dx + shape.y * dy) / square;
    m_sin = (shape.x * dy - shape.y * dx) / square;
    m_misclosure = std::fabs(std::hypot(dx, dy) - std::sqrt(square));
    m_sound = m_misclosure < m_length;
}

/// The angle between the directions at the start and at a part of the length.
double SpiralCurve::Turned(double t) const {
    double grown = t * t / 2;
    switch (m_law) {
        case Law::Bloss:
            grown = t * t * t - t * t * t * t / 2;
            break;
        case Law::Cosine:
            grown = t / 2 - std::sin(kPi * t) / (2 * kPi);
            break;
        case Law::Sinusoid:
            grown = t * t / 2 + (std::cos(2 * kPi * t) - 1) / (4 * kPi * kPi);
            break;
        case Law::Biquadratic:
            grown = t <= 0.5 ? 2 * t * t * t / 3 : t - 0.5 + 2 * (1 - t) * (1 - t) * (1 - t) / 3;
            break;
        case Law::Clothoid:
        case Law::Unknown:
            break;
    }
    return m_length * (m_from * t + (m_to - m_from) * grown);
}

/// The place in coordinates that begin at the start and look along the curve there.
Vec3 SpiralCurve::Shape(double part) const {
    // Gauss-Legendre quadrature on pieces over each of which the direction hardly turns.
    constexpr std::array<double, 5> kNodes{0.0, -0.5384693101056831, 0.5384693101056831,
                                           -0.9061798459386640, 0.9061798459386640};
    constexpr std::array<double, 5> kWeights{0.5688888888888889, 0.4786286704993665,
                                             0.4786286704993665, 0.2369268850561891,
                                             0.2369268850561891};
    constexpr int kPieces = 16;
    Vec3 at;
    const double half = part / kPieces / 2;
    for (int i = 0; i < kPieces; ++i) {
        const double middle = (2 * i + 1) * half;
        for (std::size_t k = 0; k < kNodes.size(); ++k) {
            const double angle = Turned(middle + half * kNodes.at(k));
            at.x += kWeights.at(k) * half * m_length * std::cos(angle);
            at.y += kWeights.at(k) * half * m_length * std::sin(angle);
        }
    }
    return at;
}

Vec3 SpiralCurve::At(double part) const {
    if (part == 0.0 || part == 1.0) {
        return part == 0.0 ? m_start : m_end;
    }
    const Vec3 shape = Shape(part);
    return {m_start.x + m_cos * shape.x - m_sin * shape.y,
            m_start.y + m_sin * shape.x + m_cos * shape.y,
            m_start.z + (m_end.z - m_start.z) * part};
}

}  // namespace cqsurvey::exchange::landxml
