#pragma once

#include <cstdint>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A circle; its point is the centre. The radius is in the job's unit of length.
class CQSURVEY_API CqCircleCadEntity : public CqCadEntity {
 public:
    CqCircleCadEntity() = default;
    CqCircleCadEntity(const CqCircleCadEntity&) = default;
    CqCircleCadEntity& operator=(const CqCircleCadEntity&) = default;
    ~CqCircleCadEntity() override;

    [[nodiscard]] EntType GetType() const override { return EntCircle; }
    [[nodiscard]] int GetCode() const override { return m_code; }
    int SetCode(int code) override;
    [[nodiscard]] double GetRadius() const override { return m_radius; }
    int SetRadius(double radius) override;
    [[nodiscard]] int GetLine() const override { return m_line; }

 private:
    friend struct Job;

    double m_radius = 0.0;
    std::int32_t m_line = 0;
    std::int32_t m_code = 0;
};

}  // namespace cqsurvey
