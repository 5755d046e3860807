#pragma once

#include "cqsurvey/CVector.h"
#include "tables/JobPart.h"

namespace cqsurvey {

/// The plan extents of a drawing: widened by whatever is added or edited, never narrowed until they
/// are made anew, so that no edit has to walk the drawing. x is the easting and y the northing.
class Extents : public JobPart {
 public:
    Extents() { InitBoundData(); }

    [[nodiscard]] const CVector& GetMin() const { return m_vecBoundMin; }
    [[nodiscard]] const CVector& GetMax() const { return m_vecBoundMax; }

    /// To nothing: the minimum above the maximum, so that the first point sets both.
    void InitBoundData();

    /// Widens the extents to hold a point. A coordinate that is not a number changes nothing.
    void UpdateBound(const CVector& p);
    /// The same; the northing comes first.
    void UpdateBoundData(double n, double e);
    /// To hold the square of half-side r around a point: a circle of that radius.
    void UpdateBoundData(double n, double e, double r);

    [[nodiscard]] bool Holds(const CVector& p) const;

    void KeepStep() noexcept override;
    void UndoStep() noexcept override;

 private:
    CVector m_vecBoundMax;
    CVector m_vecBoundMin;
    CVector m_maxAtStep;
    CVector m_minAtStep;
};

}  // namespace cqsurvey
