#pragma once

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// One vertex of a polyline, with the bulge of the segment that starts at it. The vertex names its
/// polyline, its neighbours in the drawing and the survey point to which a link ties it.
class CQSURVEY_API CqVertexCadEntity : public CqCadEntity {
 public:
    CqVertexCadEntity() = default;
    CqVertexCadEntity(const CqVertexCadEntity&) = default;
    CqVertexCadEntity& operator=(const CqVertexCadEntity&) = default;
    ~CqVertexCadEntity() override;

    [[nodiscard]] EntType GetType() const override { return EntVertex; }
    [[nodiscard]] double GetBulge() const override { return m_bulge; }
    int SetBulge(double bulge) override;
    [[nodiscard]] CqHandle GetPlineHandle() const override { return m_plineHandle; }
    [[nodiscard]] CqHandle GetPrevVertexHandle() const override { return m_prevVertexHandle; }
    [[nodiscard]] CqHandle GetNextVertexHandle() const override { return m_nextVertexHandle; }
    [[nodiscard]] CqHandle GetMcadSiPointHandle() const override { return m_siPointHandle; }
    void UpdateExtent(CqCadEntity* pline, const CqCadEntity* nextVertex) override;

 private:
    friend struct Job;

    double m_bulge = 0.0;
    CqHandle m_plineHandle = 0;
    CqHandle m_prevVertexHandle = 0;
    CqHandle m_nextVertexHandle = 0;
    CqHandle m_siPointHandle = 0;
};

}  // namespace cqsurvey
