#pragma once

#include <cstdint>

#include "cqsurvey/CVector.h"
#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The head of a polyline: its line type, its feature code and the bound of its vertices and arcs.
/// The vertices are entities of their own, which follow it in the drawing.
class CQSURVEY_API CqPlineCadEntity : public CqCadEntity {
 public:
    /// Begins with an empty bound, its minimum above its maximum, which any point widens.
    CqPlineCadEntity();
    CqPlineCadEntity(const CqPlineCadEntity&) = default;
    CqPlineCadEntity& operator=(const CqPlineCadEntity&) = default;
    ~CqPlineCadEntity() override;

    [[nodiscard]] EntType GetType() const override { return EntPline; }
    [[nodiscard]] int GetCode() const override { return m_code; }
    int SetCode(int code) override;
    void GetBound(CVector& min, CVector& max) const override;
    void UpdateBound(const CVector& v) override;
    [[nodiscard]] int GetLine() const override { return m_line; }

 private:
    friend struct Job;

    CVector m_boundMin;
    CVector m_boundMax;
    std::int32_t m_line = 0;
    std::int32_t m_code = 0;
};

}  // namespace cqsurvey
