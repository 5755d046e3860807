#pragma once

#include <cstdint>
#include <vector>

#include "cqsurvey/CqCadEntity.h"
#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The symbol of a surveyed point in the drawing. Its name, code and origin are those of the
/// point's record; the vertices are those that links tie to it.
class CQSURVEY_API CqSiPntCadEntity : public CqCadEntity {
 public:
    CqSiPntCadEntity() = default;
    CqSiPntCadEntity(const CqSiPntCadEntity&) = delete;
    CqSiPntCadEntity& operator=(const CqSiPntCadEntity&) = delete;
    ~CqSiPntCadEntity() override;

    [[nodiscard]] SurveyCoordType GetDataOrigin() const { return m_dataOrigin; }

    [[nodiscard]] EntType GetType() const override { return EntSiPnt; }
    [[nodiscard]] const CString& GetName() const override { return m_name; }
    int SetName(const CString& name) override;
    [[nodiscard]] int GetCode() const override { return m_code; }
    int SetCode(int code) override;
    [[nodiscard]] int GetMcadNumVertex() const override {
        return static_cast<int>(m_vertexHandles.size());
    }
    [[nodiscard]] CqHandle GetMcadVertexHandle(int index) const override;

 private:
    friend struct Job;

    CString m_name;
    std::int32_t m_code = 0;
    SurveyCoordType m_dataOrigin{};
    std::vector<CqHandle> m_vertexHandles;
};

}  // namespace cqsurvey
