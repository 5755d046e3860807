#pragma once

#include <string_view>

#include "exchange/drawing/CurveFitter.h"
#include "exchange/landxml/read/Segment.h"

namespace cqsurvey::exchange::landxml {

/// A transition curve: its curvature changes along its length from that of one radius to that of
/// another, by a law that its kind names. The law, the length and the rotation give its shape; its
/// ends give its place.
class SpiralCurve {
 public:
    /// The Spiral has a start, an end, a length and a rotation.
    explicit SpiralCurve(const Segment& spiral);

    /// False for numbers that make no curve.
    [[nodiscard]] bool IsSound() const { return m_sound; }

    /// False when its kind is not known, and it is taken as a clothoid.
    [[nodiscard]] bool IsKnownKind() const { return m_law != Law::Unknown; }

    /// How far the end of the shape was from where the file has it.
    [[nodiscard]] double GetMisclosure() const { return m_misclosure; }

    /// The place at a part of the length, 0 to 1.
    [[nodiscard]] Vec3 At(double part) const;

 private:
    enum class Law { Clothoid, Bloss, Cosine, Sinusoid, Biquadratic, Unknown };

    [[nodiscard]] static Law LawOf(std::string_view kind);
    [[nodiscard]] double Turned(double part) const;
    [[nodiscard]] Vec3 Shape(double part) const;

    Law m_law;
    double m_length;
    double m_from;  // curvatures, positive to the left
    double m_to;
    Vec3 m_start;
    Vec3 m_end;
    double m_cos = 1.0;  // from the shape to the plan
    double m_sin = 0.0;
    double m_misclosure = 0.0;
    bool m_sound = false;
};

}  // namespace cqsurvey::exchange::landxml
